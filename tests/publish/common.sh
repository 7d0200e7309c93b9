# shellcheck shell=bash disable=SC2034
# What the checks of programs share: how the first argument is run, where, and what is said of failures.
# QB_TEST_LAUNCHER: what is put before the program.
program=$1
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
work=$(mktemp -d "${TMPDIR:-/tmp}/publish-XXXXXX")
trap 'chmod -R u+rwX "$work"; rm -rf "$work"' EXIT
site=$work/site out=$work/out
handbook=$(realpath "${0%/*}/../../examples/publish/handbook")
failures=0

as=() # whoever runs the program, if not we

publish() { "${as[@]}" "${launcher[@]}" "$program" "$@"; }

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# expect WHAT WANTED COMMAND...: what the command prints, and "[5]" behind it for an exit status other than 0.
expect() {
    local what=$1 wanted=$2 got
    shift 2
    got=$("$@" 2>"$work/messages") || got="$got [$?]"
    [ "$got" = "$wanted" ] || fail "$what: '$got' instead of '$wanted'; $(cat "$work/messages")"
}

# rows_fail STATUS: the program ends so, and with that text in its messages, for each row ARGUMENTS|TEXT of standard input.
rows_fail() {
    local arguments message status
    while IFS='|' read -r arguments message; do
        status=0
        eval "publish $arguments" >/dev/null 2>"$work/stderr" || status=$?
        [ $status -eq "$1" ] || fail "$arguments: exit status $status"
        grep -qF -- "$message" "$work/stderr" || fail "$arguments: '$message' is not in: $(cat "$work/stderr")"
    done
}
