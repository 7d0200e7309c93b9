#!/bin/bash
# Runs a program under valgrind. Fails with 99 when that finds a fault or a leak, also when the program leaves descriptors
# open that it has opened itself; what its children leave is theirs.
#   scripts/lib/valgrind.sh PROGRAM [ARGUMENT ...]
set -u

logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite --track-fds=yes \
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

# The descriptors' part: each has a head, and under it where it was opened or that it is inherited.
left=$(awk '/inherited from parent/ { head = ""; next }
            head { print head; head = "" }
            /Open file descriptor/ { head = $0 }' "$logs/$process" 2>/dev/null)
[ -z "$left" ] || status=99
[ "$status" -ne 99 ] || cat "$logs"/* >&2
exit "$status"
