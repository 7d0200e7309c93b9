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

publish() { "${launcher[@]}" "$program" "$@"; }

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

# The program fails with that text in its messages, and the old site is as it was.
expect_failure() {
    local what=$1 text=$2 before status=0
    shift 2
    before=$(cd "$out" && find . | sort | xargs -d '\n' ls -ld --time-style=full-iso)
    publish "$@" "$site" "$out" >/dev/null 2>"$work/stderr" || status=$?
    [ $status -eq 1 ] || fail "$what: exit status $status"
    grep -qF -- "$text" "$work/stderr" || fail "$what: '$text' is not in: $(cat "$work/stderr")"
    [ "$before" = "$(cd "$out" && find . | sort | xargs -d '\n' ls -ld --time-style=full-iso)" ] ||
        fail "$what: the old site has changed"
}

page() { printf '%s\n---\n%s\n' "$2" "$3" >"$site/pages/$1"; }

new_site() {
    rm -rf "$site"
    mkdir -p "$site"/{pages/deep,templates,assets}
    echo '{ title = "A & B"; people = ( { name = "<Ada>"; tags = (x, y); }, { name = Bob; tags = (); } ); }' \
        >"$site/site.plist"
    printf '<h1>{{page.title}}</h1>{{> who}}{{{body}}}<a href="{{root}}index.html">' >"$site/templates/page.html"
    printf '{{#each site.people as p}}{{p.name}}:{{#each p.tags as t}}{{t}};{{/each}}{{/each}}' \
        >"$site/templates/who.html"
    page index.html '{ title = "T & T"; }' '<b>{{site.title}}</b>{{#if page.none}}no{{else}}yes{{/if}}'
    page deep/text.txt '{ title = Text; }' $'one <1>\n\ntwo'
    echo data >"$site/assets/data.bin"
    ln -s data.bin "$site/assets/link"
}

new_site
expect 'first run' "$out: 4 written, 0 unchanged, 0 removed [0]" publish "$site" "$out"
[ "$(cat "$out/index.html")" = '<h1>T &amp; T</h1>&lt;Ada&gt;:x;y;Bob:

<b>A &amp; B</b>yes
<a href="index.html">' ] || fail "index.html: $(cat "$out/index.html")"
grep -qF '<p>one &lt;1&gt;</p>' "$out/deep/text.html" || fail "text.html: $(cat "$out/deep/text.html")"
grep -qF '<a href="../index.html">' "$out/deep/text.html" || fail 'the way to the root'
[ "$(readlink "$out/assets/link")" = data.bin ] || fail 'the link was not copied as one'
[ ! -e "$out/.publish" ] || fail 'something is left of the run'

before=$(stat -c '%i %Y' "$out/index.html")
page deep/text.txt '{ title = Text; }' three
expect 'second run' "$out: 1 written, 3 unchanged, 0 removed [0]" publish "$site" "$out"
[ "$before" = "$(stat -c '%i %Y' "$out/index.html")" ] || fail 'an unchanged page was written'
rm "$site/pages/deep/text.txt" "$site/assets/link"
expect 'removal' "$out: 0 written, 2 unchanged, 2 removed [0]" publish "$site" "$out"
[ ! -e "$out/deep" ] || fail 'an empty directory is left'
expect 'quiet' ' [0]' publish --quiet "$site" "$out"

# Whatever is wrong with a site, the old one stays and the message says where it is.
page index.html '{ title = T; }' '{{page.titel}}'
expect_failure 'missing key' "pages/index.html:3: there is no value for 'page.titel'."
page index.html '{ title = T; ' x
expect_failure 'malformed head' 'The property list is malformed in line 1'
expect_failure 'file of a malformed head' "pages/index.html'"
page index.html '{ title = T; template = gone; }' x
expect_failure 'unknown template' "there is no template 'gone'."
page index.html '{ title = T; }' '{{> who'
expect_failure 'open braces' "pages/index.html:3: a '{{' is not closed."
page index.html '{ title = T; }' '{{#each page.title as t}}{{/each}}'
expect_failure 'no list' "pages/index.html:3: 'page.title' is no list."
page index.html '{ title = T; }' $'\xff'
expect_failure 'not UTF-8' 'is not valid UTF-8 at byte 20.'
echo 'no head' >"$site/pages/index.html"
expect_failure 'no head' 'a page begins with a property list'
page index.html '{ title = T; }' x
printf '{{> who}}{{> page}}' >"$site/templates/who.html"
expect_failure 'template loop' "the template 'page' includes itself."
echo '{ broken' >"$site/site.plist"
expect_failure 'malformed settings' 'The property list is malformed in line 1, column 9'

new_site
if [ "$(id -u)" -ne 0 ]; then
    chmod 000 "$site/pages/index.html"
    expect_failure 'unreadable page' 'could not be read: Permission denied'
    chmod 644 "$site/pages/index.html"
fi
page index.html '{ title = "T & T"; }' "$(head -c 300000 /dev/zero | tr '\0' x)"
(
    ulimit -f 100
    trap '' XFSZ
    expect_failure 'full disk' 'could not be written'
    [ $failures -eq 0 ]
) || failures=$((failures + 1))

# A run that is cut off at any of its renames is finished by the next one, whatever the site is by then.
if command -v strace >/dev/null && [ ${#launcher[@]} -eq 0 ] && strace -o /dev/null true 2>/dev/null; then
    new_site
    rm -rf "$out" "$work/whole"
    publish --quiet "$site" "$work/whole"
    for ((nth = 1; nth < 20; ++nth)); do
        rm -rf "$out"
        status=0
        ASAN_OPTIONS=detect_leaks=0 strace -f -o /dev/null -e inject=rename:signal=KILL:when=$nth \
            "$program" --quiet "$site" "$out" 2>/dev/null || status=$?
        [ $status -ne 0 ] || break
        publish --quiet "$site" "$out" || fail "the run after the one that was killed at rename $nth"
        diff -r --no-dereference "$out" "$work/whole" || fail "what is left after rename $nth"
    done
    [ "$nth" -gt 3 ] || fail "only $nth renames were tried"
fi

publish --help | grep -q '^Usage: publish' || fail 'the usage'
publish --debug help | grep -q fileio || fail 'the list of channels'
status=0
publish --no-such-option 2>/dev/null || status=$?
[ $status -eq 2 ] || fail "a wrong option: exit status $status"

[ $failures -eq 0 ] && echo "publish: all is well"
