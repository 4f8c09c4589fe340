#!/bin/sh
# Builds the Debian package, then installs, runs and removes it in a separate Debian system:
#   tools/check-deb.sh FOLDER [PACKAGE.deb]
# FOLDER has that system, which is bootstrapped if missing. Without PACKAGE.deb the package is built in
# build/deb. Needs root, and the network for the package's dependencies.
set -eu

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: check-deb.sh FOLDER [PACKAGE.deb]" >&2
    exit 2
fi
source=$(cd "$(dirname "$0")/.." && pwd)
root=$(realpath -m "$1")

if [ $# -eq 2 ]; then
    package=$(realpath "$2")
else
    cmake -S "$source" -B "$source/build/deb" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
        -DMC3DS_BUILD_TESTS=OFF
    cmake --build "$source/build/deb" --parallel "$(nproc)"
    rm -f "$source"/build/deb/packages/*.deb
    (cd "$source/build/deb" && cpack -G DEB -B packages)
    package=$(ls "$source"/build/deb/packages/*.deb)
fi

[ -e "$root/etc/debian_version" ] || debootstrap --variant=minbase bookworm "$root"
[ -e "$root/dev/null" ] || mknod -m 666 "$root/dev/null" c 1 3
work=$(mktemp -d "$root/tmp/check-deb.XXXXXX")
trap 'rm -rf "$work"' EXIT
cp "$package" "$work/package.deb"
cp "$source/samples/windmill.3DS" "$work/"
inside=/tmp/$(basename "$work")

within()
{
    chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME="$inside" LC_ALL=C \
        DEBIAN_FRONTEND=noninteractive "$@"
}

fail()
{
    echo "check-deb.sh: $*" >&2
    exit 1
}

name=$(dpkg-deb -f "$package" Package)
dpkg-deb -c "$package" | sed -n '/^d/!s/^.* \.\(\/[^ ]*\).*$/\1/p' >"$work/files"
within apt-get -q update
within apt-get -q -y install --no-install-recommends "$inside/package.deb"
while read -r file; do
    [ -e "$root$file" ] || [ -L "$root$file" ] || fail "$file is not there after the installation"
done <"$work/files"
within ldconfig -p | grep -q 'libMCL3DS20\.so\.3 ' || fail "the loader doesn't know the library"
within 3ds2mcx --version
within 3ds2mcx --info "$inside/windmill.3DS" | tee "$work/info"
grep -q '^Objects$' "$work/info" || fail "--info shows no objects"
within 3ds2mcx "$inside/windmill.3DS" -o "$inside/windmill.mcx" --preview "$inside/windmill.png"
[ "$(head -c 4 "$work/windmill.png" | tail -c 3)" = PNG ] || fail "no picture"
[ "$(tail -n 1 "$work/windmill.mcx")" = ModelEnd ] || fail "no whole script"

within apt-get -q -y purge "$name"
while read -r file; do
    [ ! -e "$root$file" ] || fail "$file is still there after the removal"
done <"$work/files"
within ldconfig -p | grep -q libMCL3DS20 && fail "the loader still knows the library"
echo "check-deb.sh: $(basename "$package") installs, runs and goes away"
