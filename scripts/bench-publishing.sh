#!/bin/bash
# Publishes sites of many generated pages and prints the time that a page takes, the median of eleven runs into new
# directories. They lie in memory: on a disk the time is that of its two syncs.
#   scripts/bench-publishing.sh [PAGES ...]     (1000 and 10000 when none are named)
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}"
qb_build release

work=$(mktemp -d -p /dev/shm)
trap 'rm -rf "$work"' EXIT

# A template with a condition, a loop of four links and two texts; pages of 1 KiB in directories of a hundred.
generate() { # PAGES
    rm -rf "${work:?}"/*
    mkdir -p "$work"/site/templates
    cat >"$work/site/site.plist" <<'SITE'
{
  title = "Generated";
  navigation = (
    { title = "One"; url = "0/0.html"; }, { title = "Two"; url = "0/1.html"; },
    { title = "Three"; url = "0/2.html"; }, { title = "Four"; url = "0/3.html"; }
  );
}
SITE
    cat >"$work/site/templates/page.html" <<'TEMPLATE'
<!DOCTYPE html>
<html lang="en">
<head><meta charset="utf-8"><title>{{page.title}} – {{site.title}}</title></head>
<body>
<nav>{{#each site.navigation as chapter}}<a href="{{link chapter.url}}">{{chapter.title}}</a>{{/each}}</nav>
<h1>{{page.title}}</h1>
{{#if page.minutes}}<p>{{page.minutes}} min</p>{{/if}}
{{{body}}}
</body>
</html>
TEMPLATE
    awk -v pages="$1" -v directory="$work/site/pages" 'BEGIN {
        for (i = 0; i < 12; ++i)
            body = body "<p>Paragraph " i " of a page that was made to be published, like all of them.</p>\n"
        for (page = 0; page < pages; ++page) {
            if (page % 100 == 0)
                system("mkdir -p " directory "/" int(page / 100))
            file = directory "/" int(page / 100) "/" page % 100 ".html"
            printf "{\n  title = \"Page %d\";\n  minutes = %d;\n}\n---\n%s", page, page % 7, body >file
            close(file)
        }
    }'
}

[ $# -gt 0 ] || set -- 1000 10000
for pages in "$@"; do
    generate "$pages"
    for _ in {1..11}; do
        rm -rf "$work/out"
        before=${EPOCHREALTIME/[.,]/}
        build/release/bin/publish --quiet "$work/site" "$work/out"
        echo $((${EPOCHREALTIME/[.,]/} - before))
    done | sort -n | awk -v pages="$pages" 'NR == 6 {
        printf "%6d pages %8.1f ms %8.1f us a page\n", pages, $1 / 1000, $1 / pages}'
done
