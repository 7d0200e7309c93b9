#!/bin/bash
# Compares the names that a built libQBFoundation.so offers with the checked-in list.
#   scripts/check-exports.sh LIBRARY            fails and prints the difference
#   scripts/check-exports.sh --update LIBRARY   rewrites the list
#
# Names without parameters are the same for each compiler and word size. Weak symbols (templates and inline functions
# of the standard library), tables of virtual functions, type information and thunks follow from the rest.
set -euo pipefail
export LC_ALL=C
list=$(dirname "$(readlink -f "$0")")/../cmake/exported-symbols.txt

exported_names() {
    nm -D --defined-only -C "$1" |
        sed -nE 's/^[0-9a-f]+ [ABDRT] //p' |
        grep -vE '^(vtable|VTT|typeinfo|typeinfo name|construction vtable|guard variable) for |thunk to |^__|^_(init|fini|end|edata)$' |
        sed -E 's/\[abi:[^]]*\]//g; s/operator\(\)/operator@/; s/\(.*//; s/operator@/operator()/' |
        sort -u
}

if [ $# = 0 ]; then
    sed -n '2,4s/^# *//p' "$0" >&2
    exit 2
fi
if [ "$1" = --update ]; then
    exported_names "$2" >"$list"
    exit
fi

if ! diff -u --label "in the list" "$list" --label "in the library" <(exported_names "$1"); then
    echo "The exported names have changed. When that is meant: scripts/check-exports.sh --update $1" >&2
    exit 1
fi
