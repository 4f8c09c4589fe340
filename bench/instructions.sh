#!/bin/sh
# Counts the instructions of a load and a conversion of a 10 MB scene, and of the same conversion by the
# program 3ds2mcx, with valgrind's callgrind. Other work on the machine doesn't change the counts; the
# compiler and the C library do (Debian 12, gcc).
#   instructions.sh BUILD            prints the counts beside the recorded ones
#   instructions.sh BUILD --check    also fails if one has grown by more than a tenth
#   instructions.sh BUILD --record   records them, and those of the plain way for comparison
set -eu
here=$(dirname "$0")
folder=${1:?the folder of an optimised build}
mode=${2:-}
recorded=$here/instructions.txt
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

# count_of PROGRAM ARGUMENT...
count_of()
{
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$@" 2>&1 >/dev/null |
        sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}

# Subtracts the cost of starting mc3ds_measure: that of printing its usage message.
count()
{
    case $1 in
    program) count_of "$folder/host/3ds2mcx" -q -o "$work/out" "$work/scene.3DS" ;;
    *) echo $(($(count_of "$folder/bench/mc3ds_measure" 0 "$work/out" "$1" "$work/scene.3DS") - start)) ;;
    esac
}

python3 -B "$here/make_scene.py" "$work/scene.3DS" 340 1000 1000 --nodes
start=$(count_of "$folder/bench/mc3ds_measure")
actions="load convert program"
if [ "$mode" = --record ]; then
    actions="load base-load convert base-convert program"
    : >"$recorded"
fi
status=0
for action in $actions; do
    now=$(count "$action")
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
