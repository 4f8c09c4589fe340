#!/bin/sh
# Sets up, builds the program, converts a scene and shows how the result begins: tools/convert.sh [SCENE.3DS]
# Without an argument it takes the bundled sample. Results go to out/.
set -eu

scene=samples/orrery.3DS
[ $# -eq 0 ] || scene=$(realpath -s "$1") # a link stays one: the .vue file is looked for beside it
cd "$(dirname "$0")/.."
if [ ! -f "$scene" ] || [ ! -r "$scene" ]; then
    echo "convert.sh: no readable file $scene" >&2
    exit 1
fi

tools/setup.sh build test # the preset configures the tests too
cmake --preset release
cmake --build --preset release --parallel "$(nproc)" --target 3ds2mcx

mkdir -p out
name=$(basename "$scene")
result=out/${name%.*}.mcx
build/release/host/3ds2mcx "$scene" -o "$result" --header --animation
echo
echo "$result begins:"
head -n 40 "$result"
