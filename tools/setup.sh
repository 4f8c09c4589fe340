#!/bin/sh
# Installs the missing packages of the named groups: tools/setup.sh GROUP...
# If none is missing, it downloads nothing and needs no root rights.
set -eu

wanted=
for group in "$@"; do
    case $group in
    build) wanted="$wanted g++ cmake ninja-build libcli11-dev libpng-dev nlohmann-json3-dev
        file dpkg-dev" ;; # the last two are for cpack
    test) wanted="$wanted libgtest-dev locales pkgconf" ;;
    ci) wanted="$wanted clang clang-format libclang-rt-14-dev libbenchmark-dev valgrind python3 strace" ;;
    matrix) wanted="$wanted g++-12-multilib g++-s390x-linux-gnu qemu-user googletest
        g++-mingw-w64-x86-64-posix wine64" ;;
    coverage) wanted="$wanted gcovr" ;;
    node) wanted="$wanted nodejs npm" ;;
    hosts) wanted="$wanted iproute2 openssh-server openssh-client parallel rsync" ;;
    *)
        echo "setup.sh: no group is called '$group'; there are build, test, ci, matrix, coverage, node and hosts" >&2
        exit 2
        ;;
    esac
done

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "setup.sh: not a Debian system; going on with what is installed. Packages by their Debian names:$wanted" >&2
    exit 0
fi

missing=
for package in $wanted; do
    # A package installed for two architectures has two status words.
    case $(dpkg-query -W -f '${db:Status-Status} ' "$package" 2>/dev/null || true) in
    "installed "*) ;;
    *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

as_root=
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup.sh: to be installed by root, as there is no sudo:$missing" >&2
        exit 1
    fi
    as_root=sudo
fi
echo "Installing$missing"
$as_root apt-get -q -o DPkg::Lock::Timeout=300 update
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get -q -y -o DPkg::Lock::Timeout=300 install --no-install-recommends $missing
