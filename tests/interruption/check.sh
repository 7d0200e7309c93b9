#!/bin/bash
# Kills a program at each of its calls that change something, and looks at what that leaves.
#   tests/interruption/check.sh PROGRAM
# Exit status 77: it can't be tried here.
set -euo pipefail
calls='openat open creat write writev pwrite64 rename renameat renameat2 unlink unlinkat rmdir mkdir mkdirat symlink
    symlinkat link linkat fsync fdatasync fchmod fchmodat chmod ftruncate ftruncate64 copy_file_range sendfile sendfile64
    close utimensat'

if [ -n "${QB_TEST_LAUNCHER:-}" ] || ! strace -o /dev/null true 2>/dev/null; then
    echo "Not tried: strace is not installed, or may not trace ${QB_TEST_LAUNCHER:+what ${QB_TEST_LAUNCHER%% *} runs}."
    exit 77
fi

# In memory, where that is to be had: it is the process that dies here, not the disk.
[ ! -w /dev/shm ] || TMPDIR=/dev/shm
# shellcheck source=tests/publish/common.sh
. "${0%/*}/../publish/common.sh"
cd "$work"
mkdir -p kept/tree/deep/empty kept/away
head -c 100000 /dev/urandom >kept/out
seq 1 40000 >kept/new
cp kept/new kept/tree/long
echo a >kept/tree/deep/a
ln -s ../long kept/tree/deep/link

# --- What may be left of each change ---

is_untouched() { # NAMES
    local name
    for name in "$@"; do
        diff -r --no-dereference "now/$name" "kept/$name" >difference || return 1
    done
}

is_right() { # CHANGE
    case $1 in
        remove) is_untouched new out && { [ ! -e now/tree ] || is_untouched tree; } ;;
        *) is_untouched new tree && { cmp -s now/out kept/out || cmp -s now/out kept/new; } ;;
    esac
}

is_done() { # CHANGE
    case $1 in
        remove) [ ! -e now/tree ] ;;
        *) cmp -s now/out kept/new ;;
    esac
}

# --- Killing ---

begin() {
    rm -rf now
    cp -a kept now
}

killed_at() { # CALL NUMBER CHANGE; true when it was
    local status=0
    (cd now && ASAN_OPTIONS=detect_leaks=0 strace -qq -f -o /dev/null -e trace="?$1" \
        -e inject="?$1:signal=KILL:when=$2" "$program" "$3" 2>../messages) 2>/dev/null || status=$?
    [ $status -eq 137 ] || { [ $status -eq 0 ] || fail "$3 ends with $status: $(cat messages)"; return 1; }
}

# Calls that the program makes before it comes to the change.
begin
(cd now && ASAN_OPTIONS=detect_leaks=0 strace -f -o ../first-calls "$program" nothing)

# Calls `JUDGE CHANGE PLACE` after each cut.
at_each_call() { # CHANGE JUDGE
    local call number first
    cuts=0
    for call in $calls; do
        first=$(grep -cE "^([0-9]+ +)?$call\(" first-calls) || true
        for ((number = first + 1; number < first + 200; ++number)); do
            begin
            killed_at "$call" "$number" "$1" || break
            cuts=$((cuts + 1))
            "$2" "$1" "$call $number"
        done
    done
    begin
    if ! (cd now && "$program" "$1") || ! is_done "$1"; then
        fail "$1 is not done without a cut"
    fi
}

judge() {
    is_right "$1" || fail "$1, killed at $2, leaves what it must not"
    (cd now && "$program" "$1") || fail "$1 once more, after it was killed at $2"
    is_done "$1" || fail "$1 is not done by the run after the one that was killed at $2"
}

torn=0
count_torn() { is_right "$1" || torn=$((torn + 1)); }

for change in replace remove; do
    at_each_call $change judge
    [ "$cuts" -ge 5 ] || fail "$change was only cut $cuts times"
    echo "$change: cut $cuts times"
done

# The same look at a change that is not atomic finds its torn files.
at_each_call overwrite count_torn
[ $torn -gt 0 ] || fail "nothing was torn where something must be"

[ $failures -eq 0 ]
