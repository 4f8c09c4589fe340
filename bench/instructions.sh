#!/bin/sh
# Counts the instructions that a load and a conversion of a scene of 10 MB take, by valgrind's callgrind. The
# counts don't waver with other work on a machine; they depend on compiler and C library (Debian 12, gcc).
#   instructions.sh BUILD            prints the counts beside the recorded ones
#   instructions.sh BUILD --check    fails when one has grown by more than a tenth
#   instructions.sh BUILD --record   records them, and those of the plain way to compare with
set -eu
here=$(dirname "$0")
program=${1:?the folder of an optimised build}/bench/mc3ds_measure
mode=${2:-}
recorded=$here/instructions.txt
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

# Arguments of the program; its usage message costs what its start costs.
count()
{
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$program" "$@" 2>&1 >/dev/null |
        sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}

python3 -B "$here/make_scene.py" "$work/scene.3DS" 340 1000 1000 --nodes
start=$(count)
actions="load convert"
if [ "$mode" = --record ]; then
    actions="load base-load convert base-convert"
    : >"$recorded"
fi
status=0
for action in $actions; do
    now=$(($(count 0 "$work/out" "$action" "$work/scene.3DS") - start))
    if [ "$mode" = --record ]; then
        echo "$action $now" | tee -a "$recorded"
        continue
    fi
    before=$(sed -n "s/^$action //p" "$recorded")
    echo "$action: $now instructions, recorded $before"
    if [ "$mode" = --check ] && [ "$now" -gt $((before + before / 10)) ]; then
        echo "$action takes more than a tenth above what is recorded" >&2
        status=1
    fi
done
exit $status
