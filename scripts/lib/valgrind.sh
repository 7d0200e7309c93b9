#!/bin/bash
# Runs a program under valgrind. Fails with 99 when that finds a fault or a leak, also when the program leaves descriptors
# open that it has opened itself; what its children leave is theirs.
#   scripts/lib/valgrind.sh PROGRAM [ARGUMENT ...]
set -u

logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

# What a test sets itself comes after these, and counts.
export VALGRIND_OPTS="--leak-check=full --show-leak-kinds=definite ${VALGRIND_OPTS:-}"
valgrind --quiet --error-exitcode=99 --track-fds=yes --suppressions="${0%/*}/valgrind.supp" \
    --log-file="$logs/%p" "$@" <&0 &
process=$!
for signal in INT TERM USR1 USR2; do
    # shellcheck disable=SC2064 # the signal and the process of now
    trap "kill -$signal $process" "$signal"
done
wait "$process"
status=$?
while kill -0 "$process" 2>/dev/null; do # a signal has ended the waiting
    wait "$process"
    status=$?
done

# Each descriptor has a head, and under it where it was opened. Log files stay open as long as the process.
left=$(awk '/Open file descriptor/ { head = $0; next }
            /inherited from parent|OSLogger::openStream/ { head = "" }
            /^==[0-9]+== *$/ && head { print head; head = "" }' "$logs/$process" 2>/dev/null)
[ -z "$left" ] || status=99
[ "$status" -ne 99 ] || cat "$logs"/* >&2
exit "$status"
