#!/bin/sh
# Runs all steps of a new user in a separate Debian system: tools/check-install.sh FOLDER
# Runs README's two commands, installs the package that cpack makes, starts the program, builds and starts the
# guide's hosts in every way, and removes the package. FOLDER is bootstrapped if it has no Debian; a bare one
# shows missing dependencies. Needs root, debootstrap and the network.
# The shell in that system expands texts in single quotes.
# shellcheck disable=SC2016
set -eu

if [ $# -ne 1 ]; then
    echo "usage: check-install.sh FOLDER" >&2
    exit 2
fi
cd "$(dirname "$0")/.."
root=$(realpath -m "$1")
[ -e "$root/etc/debian_version" ] || debootstrap --variant=minbase bookworm "$root"

# The sources as they are now, without build results.
rm -rf "$root/srv/mcl3ds20" "$root/opt/mcl3ds20" "$root/srv/hosts"
mkdir -p "$root/srv/mcl3ds20"
git ls-files -z | tar --null -T - -cf - | tar -C "$root/srv/mcl3ds20" --no-same-owner -xf -

within()
{
    # The namespaces provide /proc for the tests and end with the command.
    unshare --mount --pid --fork --kill-child --root="$root" --mount-proc \
        /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C \
        DEBIAN_FRONTEND=noninteractive sh -euc "$*"
}

step()
{
    echo
    echo "== $1"
    within "cd /srv/mcl3ds20; $2"
}

step "the first command, and what README says to do next" '
    tools/convert.sh
    cmake --install build/release --prefix /opt/mcl3ds20; /opt/mcl3ds20/bin/3ds2mcx --version; rm -r /opt/mcl3ds20
    cd build/release; rm -rf packages; cpack -B packages'
step "the second command" 'tools/test.sh'
package=$(ls "$root"/srv/mcl3ds20/build/release/packages/*.deb)
for need in libc6 libstdc++6 libpng16; do
    dpkg-deb -f "$package" Depends | grep -q "$need" ||
        { echo "check-install.sh: the package doesn't depend on $need" >&2; exit 1; }
done
step "cpack without dpkg-shlibdeps" '
    mv /usr/bin/dpkg-shlibdeps /usr/bin/dpkg-shlibdeps.away
    failed=0
    (cd build/release; cpack -B unwanted) || failed=1
    mv /usr/bin/dpkg-shlibdeps.away /usr/bin/dpkg-shlibdeps
    if [ $failed = 0 ] || ls build/release/unwanted/*.deb; then exit 1; fi'

# For the steps below: start HOST must write a sample's whole script; refused HOST must fail to start.
start='start() { rm -f /tmp/host.mcx; "$@" samples/windmill.3DS /tmp/host.mcx; [ "$(tail -n 1 /tmp/host.mcx)" = ModelEnd ]; }
    refused() { if "$@" samples/windmill.3DS /tmp/host.mcx; then echo "$1 must not start" >&2; exit 1; fi; }
    uses() { ldd "$1" | grep "libMCL3DS20.so.3 => $2"; }
    hosts=samples/hosts; mkdir -p /srv/hosts;'

step "the package in" 'apt-get -q -y install --no-install-recommends python3 ./build/release/packages/*.deb'
step "hosts by CMake" "$start"'
    cmake -S $hosts -B /srv/hosts/cmake; cmake --build /srv/hosts/cmake
    uses /srv/hosts/cmake/convert_c /lib/; start /srv/hosts/cmake/convert_c; start /srv/hosts/cmake/convert_cpp'
step "hosts by pkg-config" "$start"'
    cc -o /srv/hosts/pc_c $hosts/convert.c $(pkg-config --cflags --libs mcl3ds20)
    c++ -std=c++17 -o /srv/hosts/pc_cpp $hosts/convert.cpp $(pkg-config --cflags --libs mcl3ds20)
    uses /srv/hosts/pc_c /lib/; start /srv/hosts/pc_c; start /srv/hosts/pc_cpp'
step "hosts by hand" "$start"'
    cc -o /srv/hosts/hand_c $hosts/convert.c -lMCL3DS20
    c++ -std=c++17 -o /srv/hosts/hand_cpp $hosts/convert.cpp -lMCL3DS20
    start /srv/hosts/hand_c; start /srv/hosts/hand_cpp; start python3 $hosts/convert.py'

dpkg-deb -c "$package" | sed -n '/^d/!s/^.* \.\(\/[^ ]*\).*$/\1/p' >"$root/srv/hosts/files"
step "what the package has" '
    while read -r file; do [ -e "$file" ] || [ -L "$file" ]; done </srv/hosts/files
    ldconfig -p | grep "libMCL3DS20\.so\.3 "
    cd /srv/hosts; scene=/srv/mcl3ds20/samples/windmill.3DS
    3ds2mcx --version; 3ds2mcx --info $scene | grep "^Objects$"
    3ds2mcx $scene -o windmill.mcx --preview windmill.png
    [ "$(head -c 4 windmill.png | tail -c 3)" = PNG ]; [ "$(tail -n 1 windmill.mcx)" = ModelEnd ]'
step "the package out" "apt-get -q -y purge $(dpkg-deb -f "$package" Package)"'
    while read -r file; do [ ! -e "$file" ]; done </srv/hosts/files
    ! ldconfig -p | grep libMCL3DS20'
step "no host without the package" "$start"'refused /srv/hosts/hand_c'

step "an installation outside the system folders" "$start"'
    away=/opt/mcl3ds20
    cmake --install build/release --prefix $away >/dev/null
    PKG_CONFIG_PATH=$away/lib/pkgconfig; export PKG_CONFIG_PATH
    flags="-I$away/include -L$away/lib -lMCL3DS20"
    cc -o /srv/hosts/plain $hosts/convert.c $flags
    refused /srv/hosts/plain
    start env LD_LIBRARY_PATH=$away/lib /srv/hosts/plain
    start env LD_LIBRARY_PATH=$away/lib python3 $hosts/convert.py
    cc -o /srv/hosts/rpath $hosts/convert.c $flags -Wl,-rpath,$away/lib
    uses /srv/hosts/rpath $away/; start /srv/hosts/rpath
    libdir=$(pkg-config --variable=libdir mcl3ds20)
    cc -o /srv/hosts/pc_rpath $hosts/convert.c $(pkg-config --cflags --libs mcl3ds20) -Wl,-rpath,"$libdir"
    start /srv/hosts/pc_rpath
    cc -o $away/bin/host $hosts/convert.c $flags "-Wl,-rpath,\$ORIGIN/../lib"
    mv $away $away-moved; start $away-moved/bin/host; mv $away-moved $away
    cmake -S $hosts -B /srv/hosts/away -DCMAKE_PREFIX_PATH=$away; cmake --build /srv/hosts/away
    uses /srv/hosts/away/convert_c $away/; start /srv/hosts/away/convert_c
    echo $away/lib >/etc/ld.so.conf.d/mcl3ds20.conf; ldconfig
    start /srv/hosts/plain
    rm /etc/ld.so.conf.d/mcl3ds20.conf; ldconfig; rm -r $away
    refused /srv/hosts/plain'
echo
echo "check-install.sh: everything on the road from README to the guide's hosts works"
