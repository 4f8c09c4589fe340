#!/bin/sh
# Runs the tests with other compilers, optimisations and architectures, a row each: tools/matrix.sh [ROW...]
# All rows have the same golden documents, so all must write the same bytes. Builds go to build/matrix/.
set -u
cd "$(dirname "$0")/.."
tools/setup.sh build test ci matrix || exit 1

jobs=$(nproc)
failed=0

# row NAME CMAKE-OPTIONS...: builds the tests and runs them.
row()
{
    name=$1
    shift
    case " $wanted " in *" $name "*) ;; *) return ;; esac
    dir=build/matrix/$name
    mkdir -p "$dir"
    status=1
    result="not built, see $dir/log"
    if cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=None "$@" >"$dir/log" 2>&1 &&
        cmake --build "$dir" --parallel "$jobs" >>"$dir/log" 2>&1; then
        run "$dir" >"$dir/results" 2>&1
        status=$?
        result=$(grep -E 'tests passed|  PASSED  |  FAILED  ' "$dir/results" | head -n 1)
    fi
    [ $status -eq 0 ] || failed=1
    printf '%-14s %s %s\n' "$name" "$([ $status -eq 0 ] && echo ok || echo FAILED)" "$result"
}

run()
{
    case $1 in
    */valgrind) # without slow tests and those that start compilers or the program
        valgrind -q --error-exitcode=9 --leak-check=full "$1/tests/mcl3ds20_tests" \
            --gtest_filter='Reader*:*Items*:Golden*:*Memory*:FileFailure*:Output*:*Replay*' ;;
    */windows) # wine sometimes fails to start
        ctest --test-dir "$1" -j "$jobs" --repeat until-pass:3 ;;
    *) ctest --test-dir "$1" -j "$jobs" ;;
    esac
}

wanted=${*:-gcc-O0 gcc-O3 clang-O0 clang-O3 unsigned-char valgrind x86-32 s390x windows}
clang='-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++'
# Other architectures lack the program's dependencies, and build GoogleTest from its sources.
library='-DMC3DS_BUILD_PROGRAM=OFF -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON'
x86='-m32 -idirafter /usr/include/x86_64-linux-gnu'

# shellcheck disable=SC2086
{
    row gcc-O0 -DCMAKE_CXX_FLAGS=-O0
    row gcc-O3 -DCMAKE_CXX_FLAGS=-O3
    row clang-O0 $clang -DCMAKE_CXX_FLAGS=-O0
    row clang-O3 $clang -DCMAKE_CXX_FLAGS=-O3
    row unsigned-char "-DCMAKE_CXX_FLAGS=-O2 -funsigned-char"
    row valgrind -DCMAKE_CXX_FLAGS=-O1 -DMC3DS_BUILD_PROGRAM=OFF
    row x86-32 $library "-DCMAKE_C_FLAGS=$x86" "-DCMAKE_CXX_FLAGS=-O2 $x86"
    row s390x $library -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=s390x \
        -DCMAKE_C_COMPILER=s390x-linux-gnu-gcc -DCMAKE_CXX_COMPILER=s390x-linux-gnu-g++ \
        '-DCMAKE_CROSSCOMPILING_EMULATOR=qemu-s390x;-L;/usr/s390x-linux-gnu' -DCMAKE_CXX_FLAGS=-O2
    row windows --toolchain "$PWD/cmake/mingw-w64.cmake" -DCMAKE_CXX_FLAGS=-O2
}
exit $failed
