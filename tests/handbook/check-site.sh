#!/bin/bash
# Publishes the handbook and looks at its pages: valid HTML, and no link that leads nowhere.
#   tests/handbook/check-site.sh PUBLISH SITE OUT
set -euo pipefail
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
publish=$1 site=$2 out=$3

rm -rf "$out"
"${launcher[@]}" "$publish" --quiet "$site" "$out"

failures=0
complain() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

anchor_exists() {
    [ -z "$2" ] || grep -q "id=\"$2\"" "$1"
}

if ! command -v tidy >/dev/null; then
    echo "The pages' HTML is not checked: tidy is not installed."
    tidy() { :; }
fi

mapfile -t pages < <(find "$out" -name '*.html')
[ ${#pages[@]} -ge 10 ] || complain "there are only ${#pages[@]} pages"
for page in "${pages[@]}"; do
    complaints=$(tidy -q -e "$page" 2>&1) || complain "$page: $complaints"
    while read -r link; do
        target=$page
        [ -z "${link%%#*}" ] || target=$(dirname "$page")/${link%%#*}
        anchor=
        [[ $link != *'#'* ]] || anchor=${link#*#}
        { [ -f "$target" ] && anchor_exists "$target" "$anchor"; } || complain "$page leads to $link"
    done < <(grep -oE '(href|src)="[^"]*"' "$page" | sed 's/^[a-z]*="//; s/"$//')
done
[ $failures -eq 0 ]
