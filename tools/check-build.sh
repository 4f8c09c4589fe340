#!/bin/sh
# Says what to do where an earlier build can't be gone on with: tools/check-build.sh PRESET
# A build belongs to the user who made it and to the place where it was made.
set -eu
cd "$(dirname "$0")/.."

build=build/$1
cache=$build/CMakeCache.txt
for place in . build out "$build" "$cache"; do
    if [ -e "$place" ] && [ ! -w "$place" ]; then
        echo "check-build.sh: $place can't be written to by $(id -un): another user made it; remove it, or go on as that user" >&2
        exit 1
    fi
done
if [ -f "$cache" ]; then
    home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$cache")
    if [ "$home" != "$(pwd -P)" ] && [ "$home" != "$PWD" ]; then
        echo "check-build.sh: $build was made when this folder was $home; remove it: rm -r $PWD/$build" >&2
        exit 1
    fi
fi
