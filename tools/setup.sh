#!/bin/sh
# Prepares this machine for a build: tools/setup.sh GROUP... [--for PRESET]
# Installs the missing packages of the named groups; if none is missing, it downloads nothing and needs no root
# rights. --for PRESET first says what to do where an earlier build of that preset can't be gone on with.
set -eu
cd "$(dirname "$0")/.."

fail()
{
    echo "setup.sh: $*" >&2
    exit 1
}

# A build belongs to the user who made it and to the place where it was made.
check_build()
{
    cache=$1/CMakeCache.txt
    for place in . build out "$1" "$cache"; do
        [ ! -e "$place" ] || [ -w "$place" ] ||
            fail "$place can't be written to by $(id -un): another user made it; remove it, or go on as that user"
    done
    [ -f "$cache" ] || return 0
    home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache")
    [ "$home" = "$(pwd -P)" ] || [ "$home" = "$PWD" ] ||
        fail "$1 was made when this folder was $home; remove it: rm -r $PWD/$1"
}

wanted=
validator=
preset=
for group in "$@"; do
    if [ "$preset" = next ]; then
        check_build "build/$group"
        preset=
        continue
    fi
    case $group in
    build) wanted="$wanted g++ cmake ninja-build libcli11-dev libpng-dev nlohmann-json3-dev
        file dpkg-dev" ;; # the last two are for cpack
    test) wanted="$wanted libgtest-dev locales pkgconf" ;;
    ci) wanted="$wanted clang clang-format libclang-rt-14-dev libbenchmark-dev valgrind python3 strace" ;;
    matrix) wanted="$wanted g++-12-multilib g++-s390x-linux-gnu qemu-user googletest
        g++-mingw-w64-x86-64-posix wine64" ;;
    coverage) wanted="$wanted gcovr" ;;
    hosts) wanted="$wanted iproute2 openssh-server openssh-client parallel rsync" ;;
    validator) # Khronos' glTF validator, for the tests
        validator=gltf-validator@2.0.0-dev.3.10
        command -v npm >/dev/null || wanted="$wanted nodejs npm" ;;
    --for) preset=next ;;
    *)
        echo "setup.sh: no group is called '$group'; there are build, test, ci, matrix, coverage, hosts and validator" >&2
        exit 2
        ;;
    esac
done

install_packages()
{
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "setup.sh: not a Debian system; going on with what is installed. Packages by their Debian names:$wanted" >&2
        return 0
    fi
    missing=
    for package in $wanted; do
        # A package installed for two architectures has two status words.
        case $(dpkg-query -W -f '${db:Status-Status} ' "$package" 2>/dev/null || true) in
        "installed "*) ;;
        *) missing="$missing $package" ;;
        esac
    done
    [ -n "$missing" ] || return 0

    as_root=
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "to be installed by root, as there is no sudo:$missing"
        as_root=sudo
    fi
    echo "Installing$missing"
    $as_root apt-get -q -o DPkg::Lock::Timeout=300 update
    # shellcheck disable=SC2086
    $as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -y -o DPkg::Lock::Timeout=300 install --no-install-recommends $missing
}

[ -z "$wanted" ] || install_packages
[ -z "$validator" ] || [ -d build/node/node_modules/gltf-validator ] ||
    npm install --silent --no-audit --no-fund --prefix build/node "$validator"
