#!/bin/bash
# Publishes small sites with page plug-ins and lists in the order of a language.
#   tests/publish/check-additions.sh PUBLISH PLUGINS
# QB_TEST_LAUNCHER: what is put before the program.
set -euo pipefail
program=$1 plugins=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/publish-additions-XXXXXX")
trap 'rm -rf "$work"' EXIT
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
site=$work/site out=$work/out
failures=0

publish() { "${launcher[@]}" "$program" "$@"; }

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# expect_failure WHAT STATUS TEXT OPTION...: the program fails with that text in its messages, and nothing is written.
expect_failure() {
    local what=$1 wanted=$2 text=$3 status=0
    shift 3
    publish "$@" "$site" "$work/none" >/dev/null 2>"$work/stderr" || status=$?
    [ $status -eq "$wanted" ] || fail "$what: exit status $status"
    grep -qF -- "$text" "$work/stderr" || fail "$what: '$text' is not in: $(cat "$work/stderr")"
    [ ! -e "$work/none/index.html" ] || fail "$what: something was written"
}

mkdir -p "$site/pages" "$site/templates"
printf '{{{body}}}' >"$site/templates/page.html"

# Plug-ins.
echo '{ title = T; }' >"$site/site.plist"
printf '{ title = T; }\n---\n<p>{{page.words}} words <b>in {{page.minutes}}</b> min</p>\n' >"$site/pages/index.html"
publish --quiet --plugins "$plugins" "$site" "$out"
[ "$(tail -1 "$out/index.html")" = '<p>5 words <b>in 1</b> min</p>' ] || fail "a page with values: $(cat "$out/index.html")"
expect_failure 'no plug-ins' 1 "there is no value for 'page.words'"
mkdir "$work/plugins"
echo 'not looked at' >"$work/plugins/readme.so"
cp "$plugins/libReadingTime.so" "$work/plugins/libAnother.so"
expect_failure 'a library without the class' 1 \
    "'$work/plugins/libAnother.so' is no page plug-in: it has no class 'Another' that answers valuesForPage:body:." \
    --plugins "$work/plugins"
echo 'no library' >"$work/plugins/libA.so"
expect_failure 'no library' 255 "[100241] The library '$work/plugins/libA.so' could not be loaded" --plugins "$work/plugins"
expect_failure 'no directory' 1 "The directory '$work/no' can't be read." --plugins "$work/no"
! publish --plugins 2>"$work/stderr" || fail '--plugins goes without a value'
grep -qF -- '--plugins wants a value' "$work/stderr" || fail "--plugins: $(cat "$work/stderr")"

# Lists in the order of the site's language. Here is none, here is one that the machine may have.
navigation='navigation = ( { t = zwei; }, { t = Zwei; }, { }, { t = "über"; }, { t = Ufer; }, { t = uhr; } );'
printf '{ title = T; }\n---\n{{#each site.navigation by t as n}}{{n.t or "-"}} {{/each}}|{{#each site.navigation by t.REVERSE as n}} {{n.t or "-"}}{{/each}}\n' \
    >"$site/pages/index.html"
sorted() { # SETTINGS: the list both ways
    echo "{ $1 $navigation }" >"$site/site.plist"
    publish --quiet "$site" "$out"
    tail -1 "$out/index.html"
}
plain='Ufer uhr zwei Zwei über - | - über Zwei zwei uhr Ufer'
[ "$(sorted '')" = "$plain" ] || fail "without a language: $(sorted '')"
[ "$(sorted 'language = xx;')" = "$plain" ] || fail "without a locale: $(sorted 'language = xx;')"
if [ -n "$(LC_ALL=de_DE.utf-8 locale 2>&1 >/dev/null)" ]; then
    echo 'Lists in the order of a language are not checked: there is no locale de_DE.UTF-8.'
else
    german='über Ufer uhr zwei Zwei - | - Zwei zwei uhr Ufer über'
    [ "$(sorted 'language = de_DE;')" = "$german" ] || fail "German: $(sorted 'language = de_DE;')"
    [ "$(sorted 'language = en; locale = de_DE;')" = "$german" ] || fail "German by locale"
fi
echo "{ list = ( a, b ); locale = de_DE; }" >"$site/site.plist"
printf '{ title = T; }\n---\n{{#each site.list by t as n}}{{/each}}\n' >"$site/pages/index.html"
expect_failure 'no keys' 1 "'site.list' has elements without keys to sort by."

[ $failures -eq 0 ] && echo 'publish: plug-ins and languages are well'
