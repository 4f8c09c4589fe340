#!/bin/sh
# Checks the export table of a DLL: tools/check-dll.sh MCL3DS20.dll
# It must have the functions of src/mcl3ds20.def with their numbers, and no others.
set -eu

objdump=${OBJDUMP:-x86_64-w64-mingw32-objdump}
def=$(dirname "$0")/../src/mcl3ds20.def
expected=$(tr -d '\r' <"$def" | sed -n 's/^ *\([A-Za-z0-9_]*\) *@\([0-9]*\)$/\2 \1/p' | sort -n)

# The name table counts from 0, export numbers count from the ordinal base. The address table has an entry for
# each number, with or without a name.
table=$("$objdump" -p "$1")
base=$(echo "$table" | sed -n 's/^Ordinal Base[[:space:]]*\([0-9]*\)$/\1/p')
addresses=$(echo "$table" | grep -c '^[[:space:]]*\[ *[0-9]*\] +base\[ *[0-9]*\] [0-9a-f]* Export RVA') || true
found=$(echo "$table" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' |
    sed -n 's/^[[:space:]]*\[ *\([0-9]*\)\] \([^ ]*\).*$/\1 \2/p' |
    while read -r index name; do echo "$((index + base)) $name"; done | sort -n)

echo "$found"
if [ "$found" != "$expected" ] || [ "$addresses" -ne "$(echo "$expected" | wc -l)" ]; then
    echo "check-dll.sh: $1 exports $addresses functions; expected are exactly:" >&2
    echo "$expected" >&2
    exit 1
fi
