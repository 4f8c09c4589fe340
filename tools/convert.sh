#!/bin/sh
# Sets up, builds the program, converts a scene and shows what came of it: tools/convert.sh [SCENE.3DS]
# Without an argument it takes the bundled sample. Results go to out/.
set -eu

scene=samples/orrery.3DS
case ${1:-} in
-h | --help)
    echo "usage: tools/convert.sh [SCENE.3DS]"
    echo "Sets up, builds the program, and converts the scene, or the bundled sample, to out/."
    exit 0
    ;;
esac
[ $# -eq 0 ] || scene=$(realpath -s -- "$1") # a link stays one: the .vue file is looked for beside it
cd "$(dirname "$0")/.."
if [ ! -f "$scene" ] || [ ! -r "$scene" ]; then
    echo "convert.sh: no readable file $scene" >&2
    exit 1
fi

tools/setup.sh build test --for release # the preset configures the tests too
cmake --preset release
cmake --build --preset release --parallel "$(nproc)" --target 3ds2mcx MCL3DS20 # all that is installed

mkdir -p out
program=build/release/host/3ds2mcx
name=$(basename -- "$scene")
result=out/${name%.*}
animation=
[ ! -e "${scene%???}vue" ] || animation=--animation
$program "$scene" -o "$result.mcx" --header $animation --preview "$result.png"
echo
$program --info "$scene" | head -n 10
echo "..."
echo
echo "The picture: $PWD/$result.png"
echo "The script, $result.mcx, begins:"
head -n 15 "$result.mcx"
