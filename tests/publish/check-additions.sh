#!/bin/bash
# Publishes small sites with page plug-ins and lists in the order of a language.
#   tests/publish/check-additions.sh PUBLISH PLUGINS DATING
set -euo pipefail
plugins=$2 dating=$3
# shellcheck source=tests/publish/common.sh
. "${0%/*}/common.sh"

mkdir -p "$site/pages" "$site/templates"
printf '{{{body}}}' >"$site/templates/page.html"

# Plug-ins.
echo '{ title = T; }' >"$site/site.plist"
printf '{ title = T; }\n---\n<p>{{page.words}} words <b>in {{page.minutes}}</b> min</p>\n' >"$site/pages/index.html"
publish --quiet --plugins "$plugins" "$site" "$out"
[ "$(tail -1 "$out/index.html")" = '<p>5 words <b>in 1</b> min</p>' ] || fail "a page with values: $(cat "$out/index.html")"
mkdir "$work/plugins" "$work/twice" "$work/dating"
cp "$dating" "$plugins"/*.so "$work/dating"
echo secret >"$work/key"
printf '{ title = T; template = none; }\n---\n{{page.httpDate}} {{page.url}}' >"$site/pages/dated.html"
publish --quiet --key-file "$work/key" --plugins "$work/dating" "$site" "$out"
[ "$(publish --key-file "$work/key" --decipher "$out/dated.html.enc" | tail -1)" = 'Fri, 02 Jan 1970 00:00:00 GMT dated.html.enc' ] ||
    fail "a page with a plug-in's date: $(ls "$out")"
rm "$site/pages/dated.html"
echo 'not looked at' >"$work/plugins/readme.so"
cp "$plugins/libReadingTime.so" "$work/twice"
cp "$plugins/libReadingTime.so" "$work/twice/libTwin.so"
cp "$plugins/libReadingTime.so" "$work/plugins/libAnother.so"
rows_fail 1 <<ROWS
"$site" "$out"|there is no value for 'page.words'
--plugins "$work/plugins" "$site" "$out"|'$work/plugins/libAnother.so' is no page plug-in: it has no class 'Another' that answers valuesForPage:body:.
--plugins "$work/twice" "$site" "$out"|[910026] The run was ended by an exception: Class ReadingTime must
--plugins "$work/no" "$site" "$out"|The directory '$work/no' can't be read.
ROWS
echo 'no library' >"$work/plugins/libA.so"
rows_fail 255 <<ROWS
--plugins "$work/plugins" "$site" "$out"|[100241] The library '$work/plugins/libA.so' could not be loaded
ROWS

# Lists in the order of the site's language. Here is none, here is one that the machine may have.
navigation='navigation = ( { t = zwei; }, { t = zwei; i = 2; }, { t = Zwei; }, { }, { t = "über"; }, { t = Ufer; }, { t = uhr; } );'
printf '{ title = T; }\n---\n{{#each site.navigation by t as n}}{{n.t or "-"}}{{n.i or ""}} {{/each}}|{{#each site.navigation by t.REVERSE as n}} {{n.t or "-"}}{{n.i or ""}}{{/each}}\n' \
    >"$site/pages/index.html"
sorted() { # SETTINGS: the list both ways
    echo "{ $1 $navigation }" >"$site/site.plist"
    publish --quiet "$site" "$out"
    tail -1 "$out/index.html"
}
plain='Ufer uhr zwei zwei2 Zwei über - | - über Zwei zwei2 zwei uhr Ufer'
[ "$(sorted 'language = xx;')" = "$plain" ] || fail "without a locale: $(sorted 'language = xx;')"
if [ -n "$(LC_ALL=de_DE.utf-8 locale 2>&1 >/dev/null)" ]; then
    echo 'Lists in the order of a language are not checked: there is no locale de_DE.UTF-8.'
else
    german='über Ufer uhr zwei zwei2 Zwei - | - Zwei zwei2 zwei uhr Ufer über'
    [ "$(sorted 'language = de_DE;')" = "$german" ] || fail "German: $(sorted 'language = de_DE;')"
    [ "$(sorted 'language = en; locale = de_DE;')" = "$german" ] || fail "German by locale"
fi

[ $failures -eq 0 ] && echo 'publish: plug-ins and languages are well'
