#!/bin/bash
# Publishes small sites and looks at what comes out.
#   tests/publish/check.sh PUBLISH WORK-DIRECTORY
# QB_TEST_LAUNCHER: what is put before the program.
set -euo pipefail
program=$1 work=$2
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
rm -rf "$work"
mkdir -p "$work"
cd "$work"
site=$work/site out=$work/out
failures=0

as=() # whoever runs the program, if not we

publish() { "${as[@]}" "${launcher[@]}" "$program" "$@"; }

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# What the program prints on standard output, and then its exit status.
expect() {
    local what=$1 wanted=$2 got status=0
    shift 2
    got=$("$@" 2>"$work/stderr") || status=$?
    [ "$got [$status]" = "$wanted" ] || fail "$what: '$got [$status]' instead of '$wanted'; $(cat "$work/stderr")"
}

snapshot() { (cd "$out" && find . -mindepth 1 | sort | xargs -d '\n' ls -ld --time-style=full-iso); }

# The program fails with that text in its messages, and the old site is as it was.
expect_failure() {
    local what=$1 text=$2 before status=0
    shift 2
    before=$(snapshot)
    publish "$@" "$site" "$out" >/dev/null 2>"$work/stderr" || status=$?
    [ $status -eq 1 ] || fail "$what: exit status $status"
    grep -qF -- "$text" "$work/stderr" || fail "$what: '$text' is not in: $(cat "$work/stderr")"
    [ "$before" = "$(snapshot)" ] || fail "$what: the old site has changed"
}

page() { printf '%s\n---\n%s\n' "$2" "$3" >"$site/pages/$1"; }

new_site() {
    rm -rf "$site"
    mkdir -p "$site"/{pages/deep,templates,assets/d}
    echo '{ title = "A & B"; people = ( { name = "<Ada>"; tags = (x, y); }, { name = Bob; tags = (); } ); }' \
        >"$site/site.plist"
    printf '<h1>{{page.title}}</h1>{{> who}}{{{body}}}<a href="{{root}}index.html">' >"$site/templates/page.html"
    printf '{{#each site.people as p}}{{p.name}}:{{#each p.tags as t}}{{t}};{{/each}}{{/each}}' \
        >"$site/templates/who.html"
    page index.html '{ title = "T & T"; }' '<b>{{site.title}}</b>{{#if page.none}}no{{else}}yes{{/if}}'
    page deep/text.txt '{ title = Text; }' $'one <1>\n\ntwo'
    echo data >"$site/assets/data.bin"
    ln -s data.bin "$site/assets/link"
    echo more >"$site/assets/d/more"
    ln -s d "$site/assets/way"
}

new_site
expect 'first run' "$out: 6 written, 0 unchanged, 0 removed [0]" publish "$site" "$out"
[ "$(cat "$out/index.html")" = '<h1>T &amp; T</h1>&lt;Ada&gt;:x;y;Bob:

<b>A &amp; B</b>yes
<a href="index.html">' ] || fail "index.html: $(cat "$out/index.html")"
grep -qF '<p>one &lt;1&gt;</p>' "$out/deep/text.html" || fail "text.html: $(cat "$out/deep/text.html")"
grep -qF '<a href="../index.html">' "$out/deep/text.html" || fail 'the way to the root'
[ "$(readlink "$out/assets/link")" = data.bin ] || fail 'the link was not copied as one'
[ ! -e "$out/.publish" ] || fail 'something is left of the run'

before=$(stat -c '%i %Y' "$out/index.html")
page deep/text.txt '{ title = Text; }' three
expect 'second run' "$out: 1 written, 5 unchanged, 0 removed [0]" publish "$site" "$out"
[ "$before" = "$(stat -c '%i %Y' "$out/index.html")" ] || fail 'an unchanged page was written'
rm "$site/pages/deep/text.txt" "$site"/assets/{data.bin,link,way}
expect 'removal' "$out: 0 written, 2 unchanged, 4 removed [0]" publish "$site" "$out"
[ "$(cd "$out" && find . -mindepth 1 | sort | xargs)" = \
    './assets ./assets/d ./assets/d/more ./index.html ./manifest.plist' ] || fail "left: $(find "$out")"
expect 'quiet' ' [0]' publish --quiet "$site" "$out"
rm -r "$site/assets/d"
echo file >"$site/assets/d"
echo foreign >"$out/assets/d/foreign"
expect_failure 'a file where others are' "assets/d/foreign' is in the way of the site."
rm "$out/assets/d/foreign"
expect 'a file for a directory' "$out: 1 written, 1 unchanged, 1 removed [0]" publish "$site" "$out"

# What somebody else put under our name is taken away, but nothing behind it.
mkdir "$work/precious"
touch "$work/precious/journal.plist"
ln -s "$work/precious" "$out/.publish"
expect 'a planted link' "$out: 0 written, 2 unchanged, 0 removed [0]" publish "$site" "$out"
[ -e "$work/precious/journal.plist" ] || fail 'the planted link was followed'

# Whatever is wrong with a site, the old one stays and the message says where it is.
bad_page() {
    page index.html "$3" "$4"
    expect_failure "$1" "$2"
}
bad_page 'missing key' "pages/index.html:3: there is no value for 'page.titel'." '{ title = T; }' '{{page.titel}}'
bad_page 'malformed head' 'The property list is malformed in line 1' '{ title = T; ' x
bad_page 'file of a malformed head' "pages/index.html'" '{ title = T; ' x
bad_page 'unknown template' "there is no template 'gone'." '{ title = T; template = gone; }' x
bad_page 'open braces' "pages/index.html:3: a '{{' is not closed." '{ title = T; }' '{{> who'
bad_page 'no list' "pages/index.html:3: 'page.title' is no list." '{ title = T; }' '{{#each page.title as t}}{{/each}}'
bad_page 'not UTF-8' "index.html: the text is not valid UTF-8 at byte 19." '{ title = T; }' $'\xff'
echo 'no head' >"$site/pages/index.html"
expect_failure 'no head' 'a page begins with a property list'
page index.html '{ title = T; }' x
page index.txt '{ title = T; }' x
expect_failure 'two pages of one name' "'index.html' would be written twice."
rm "$site/pages/index.txt"
ln -s ../nowhere "$site/assets/dangling"
expect_failure 'an asset that leads nowhere' "site/nowhere'"
rm "$site/assets/dangling"
printf '{{> who}}{{> page}}' >"$site/templates/who.html"
expect_failure 'template loop' "templates/who.html:1: the template 'who' includes itself."
printf '{ broken\n' >"$site/site.plist"
expect_failure 'malformed settings' 'The property list is malformed in line 2, column 1'
expect_failure 'file of malformed settings' "site/site.plist'"

new_site
page index.html '{ title = "T & T"; }' "$(head -c 300000 /dev/zero | tr '\0' x)"
(
    ulimit -f 100
    trap '' XFSZ
    expect_failure 'full disk' 'could not be written'
    [ $failures -eq 0 ]
) || failures=$((failures + 1))

# Rights that are missing are noticed before anything has changed.
if [ "$(id -u)" -eq 0 ]; then
    as=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
if publish --version >"$work/version" 2>&1 && "${as[@]}" test -r "$site/site.plist"; then
    [ ${#as[@]} -eq 0 ] || chown -R 65534 "$out"
    denied() {
        local what=$1 text=$2 path=$3 mode
        mode=$(stat -c %a "$path")
        chmod "$4" "$path"
        expect_failure "$what" "$text"
        chmod "$mode" "$path"
    }
    denied 'unreadable page' "index.html' could not be read: Permission denied" "$site/pages/index.html" 000
    denied 'unreadable directory' "The directory '$site/pages/deep' can't be read." "$site/pages/deep" 000
    denied 'unreadable template' "who.html' could not be read: Permission denied" "$site/templates/who.html" 000
    denied 'unreadable asset' "data.bin' could not be read: Permission denied" "$site/assets/data.bin" 000
    denied 'read-only target' ".publish' could not be made: Permission denied" "$out" 555
    page index.html '{ title = T; }' x
    publish --quiet "$site" "$out"
    echo changed >"$site/assets/data.bin"
    denied 'read-only directory of new files' "data.bin' could not be written: Permission denied" "$out/assets" 555
    rm "$site/assets/link"
    denied 'read-only directory of old files' "link' could not be removed: Permission denied" "$out/assets" 555
else
    echo "publish: missing rights are not tried, because the program can't be run as another user" >&2
fi
as=()

# A run that is cut off at any of its changes leaves the old site, or is finished by the next one.
if command -v strace >/dev/null && [ ${#launcher[@]} -eq 0 ] && strace -o /dev/null true 2>/dev/null; then
    injected() { # CALL:SIGNAL:NUMBER
        local call=${1%%:*} rest=${1#*:}
        (
            ASAN_OPTIONS=detect_leaks=0 strace -f -o /dev/null \
                -e inject="$call:signal=${rest%:*}:when=${rest#*:}" "$program" --quiet "$site" "$out"
            exit $?
        ) 2>"$work/stderr"
    }
    new_site
    rm -rf "$out"
    publish --quiet "$site" "$work/old"
    page index.html '{ title = New; }' changed
    rm "$site"/pages/deep/text.txt "$site"/assets/{link,data.bin}
    mkdir "$site/assets/data.bin"
    echo new >"$site/assets/data.bin/new"
    ln -s data.bin/new "$site/assets/other"
    publish --quiet "$site" "$work/new"
    same() { diff -r --no-dereference --exclude=.publish "$out" "$1" >"$work/difference"; }
    is_all() { same "$1" && [ ! -e "$out/.publish" ]; }
    cuts=0
    for call in mkdir write symlink fsync rename unlink rmdir; do
        for ((nth = 1; nth < 40; ++nth)); do
            rm -rf "$out"
            cp -a "$work/old" "$out"
            ! injected "$call:KILL:$nth" || break
            cuts=$((cuts + 1))
            [ -e "$out/.publish/journal.plist" ] || same "$work/old" || same "$work/new" ||
                fail "killed at $call $nth: $(cat "$work/difference")"
            publish --quiet "$site" "$out" || fail "the run after $call $nth"
            is_all "$work/new" ||
                fail "the run after the one that was killed at $call $nth: $(cat "$work/difference")"
        done
    done
    [ "$cuts" -gt 20 ] || fail "only $cuts cuts were tried"
    rm -rf "$out"
    cp -a "$work/old" "$out"
    injected write:INT:1 && fail 'an interrupted run succeeded'
    grep -qF 'The run was interrupted' "$work/stderr" || fail "interruption: $(cat "$work/stderr")"
    is_all "$work/old" || fail 'the interrupted run left something'
fi

# --- Options ---

has() { [[ $(publish "${@:2}" 2>&1) == *"$1"* ]] || fail "'$1' is not in what $2 says"; }
has 'Usage: publish' --help
has 'publish ' --version
has fileio --debug help
has '[fileio(9) OK]' --debug fileio --debug-level 9 "$site" "$out"
has '[start:publish] index.html' --profile publish "$site" "$out"
has 'total global count' --statistics "$site" "$out"
publish --quiet --log "$work/log" --log-level 2 "$site" "$out"
grep -q 'unchanged' "$work/log" || fail 'the log has no report'
for wrong in --no-such-option --log-level '--log-level 256' '--debug nothing' "--log $work/no/log" 'a b c' ''; do
    status=0
    # shellcheck disable=SC2086
    publish $wrong "$site" 2>/dev/null || status=$?
    [ $status -eq 2 ] || fail "$wrong: exit status $status"
done
! publish --help >/dev/full 2>&1 || fail 'what could not be said counts as said'

[ $failures -eq 0 ] && echo "publish: all is well"
