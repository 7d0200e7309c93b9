#!/bin/bash
# Runs programs on a terminal, types answers, and reads from its screen what they show.
#   tests/terminal/check.sh PUBLISH QUESTIONS
set -euo pipefail
if ! command -v tmux >/dev/null; then
    echo 'Nothing is checked on a terminal: tmux is not installed.'
    exit 77
fi
questions=$2
# shellcheck source=tests/publish/common.sh
. "${0%/*}/../publish/common.sh"

session=0 # each has a terminal server of its own

terminal() { tmux -f /dev/null -S "$work/tmux-$session" "$@"; }

stop() { terminal kill-server 2>/dev/null || true; }
trap 'stop; rm -rf "$work"' EXIT

# start COMMAND: runs it on a terminal of 30 lines, each of 100 columns.
start() {
    stop
    session=$((session + 1))
    LC_ALL=C.UTF-8 terminal new-session -d -x 100 -y 30 "$1; sleep 600"
}

# The lines with something in them.
screen() { terminal capture-pane -p | sed -e 's/ *$//' -e '/./!d'; }

# shows WHAT TEXT: that becomes all that is on the screen.
shows() {
    local what=$1 text=$2
    for _ in $(seq 600); do
        [ "$(screen)" != "$text" ] || return 0
        sleep 0.1
    done
    fail "$what: the screen shows '$(screen)' and not '$text'"
}

bar() { # DOTS POSITION
    printf '[%-50s] %s' "$(printf '%*s' "$1" '' | tr ' ' '#')" "$2"
}

# answer TEXT NEXT: answers the last question, and waits for what comes then.
answer() {
    terminal send-keys "$1" Enter
    dialogue="$dialogue $1
$2"
    shows "what follows the answer $1" "$dialogue"
}

# Questions and answers, at the screen's end.
choices='How shall I count, Ada?
u - Up to ten
w - Without an end
>'
start "yes '' | head -40; ${launcher[*]} $questions"
dialogue='What is your name?
>'
shows 'a question' "$dialogue"
answer Ada "$choices"
answer x "$choices" # which is none of them
answer u "$(bar 50 10/10)
Counted to ten.
Anything else?
>"
terminal send-keys C-d
shows 'the end of input' "$dialogue
[900040] No answer could be read from standard input: end of input"

# A site whose pages are held up until they may go on.
mkdir -p "$site/pages" "$site/templates"
echo '{ title = T; }' >"$site/site.plist"
printf '{{{body}}}' >"$site/templates/page.html"
for page in {0..9}; do
    printf '{ title = T; }\n---\n' >"$site/pages/$page.html"
done
# shellcheck disable=SC2016
filter='until [ -e "$WORK/$PUBLISH_PAGE" ]; do sleep 0.02; done; cat'
start "export WORK='$work'; ${launcher[*]} $program --filter '$filter' '$site' '$out'"
for page in {0..9}; do
    shows "before page $page" "$(bar $((page * 5)) "$page/10")"
    [ "$page" -ne 6 ] || shows 'the bar in the handbook' "$(cat "$handbook/examples/progress.output")"
    touch "$work/$page.html"
done
shows 'the report' "$(bar 50 10/10)
$out: 10 written, 0 unchanged, 0 removed"
start "${launcher[*]} $program --quiet '$site' '$out'; echo finished"
shows 'no bar' finished

[ $failures -eq 0 ] && echo 'terminal: all is well'
