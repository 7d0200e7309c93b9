#!/bin/bash
# Publishes the handbook and looks at its pages: valid HTML, no link that leads nowhere, and the classes' operations as
# `inspect` lists them.
#   tests/handbook/check-site.sh PUBLISH INSPECT SITE OUT
set -euo pipefail
# shellcheck source=tests/publish/common.sh
. "${0%/*}/../publish/common.sh"
inspect=$2 site=$3 out=$4

rm -rf "$out"
publish --quiet "$site" "$out"

if ! command -v tidy >/dev/null; then
    echo "The pages' HTML is not checked: tidy is not installed."
    tidy() { :; }
fi

mapfile -t pages < <(find "$out" -name '*.html')
[ ${#pages[@]} -ge 10 ] || fail "there are only ${#pages[@]} pages"
for page in "${pages[@]}"; do
    complaints=$(tidy -q -e "$page" 2>&1) || fail "$page: $complaints"
    while read -r link; do
        target=$page
        [ -z "${link%%#*}" ] || target=$(dirname "$page")/${link%%#*}
        anchor=
        [[ $link != *'#'* ]] || anchor=${link#*#}
        { [ -f "$target" ] && { [ -z "$anchor" ] || grep -q "id=\"$anchor\"" "$target"; }; } || fail "$page leads to $link"
    done < <(grep -oE '(href|src)="[^"]*"' "$page" | sed 's/^[a-z]*="//; s/"$//')
done

from_pages() {
    sed -nE 's#^<details id="(.*)">#class \1#p
             s#^<tr><td>([+-])</td><td><code>(.*)</code></td><td><code>(.*)</code></td></tr>#\1\t\2\t\3#p' \
        "$out/reference/classes.html" |
        sed 's/&lt;/</g; s/&gt;/>/g; s/&quot;/"/g; s/&amp;/\&/g' |
        awk '/^class /{name = $2; next} {print name "\t" $0}'
}
"${launcher[@]}" "$inspect" | diff <(from_pages) - >&2 || fail "inspect and the reference differ"
answers() { # CLASS SUPERCLASS...: its operations and those that it inherits, the first of each selector
    for class; do
        from_pages | grep -P "^$class\t" || true
    done | awk -F '\t' -v OFS='\t' -v class="$1" '{ $1 = class } !seen[$2 $3]++'
}
while read -ra classes; do
    "${launcher[@]}" "$inspect" "${classes[0]}" | diff <(answers "${classes[@]}") - >&2 || fail "inspect ${classes[0]}"
done <<'ROWS'
NSMutableArray NSArray NSObject
QBErrorCatalogue QBErrorHandler NSObject
NSKeyedArchiver NSArchiver NSCoder NSObject
ROWS
errors_of() { { "$@" >/dev/null; } 2>&1; }
expect 'a class that is none' "inspect: there is no class 'NoSuchClass'. [1]" errors_of "${launcher[@]}" "$inspect" NoSuchClass
! "${launcher[@]}" "$inspect" >/dev/full || fail "inspect: what could not be said counts as said"
[ $failures -eq 0 ]
