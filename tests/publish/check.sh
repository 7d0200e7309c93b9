#!/bin/bash
# Publishes small sites and looks at what comes out.
#   tests/publish/check.sh PUBLISH
set -euo pipefail
# In memory: each run waits until all that is to go to the disk is there, be it others'.
[ ! -w /dev/shm ] || TMPDIR=/dev/shm
# shellcheck source=tests/publish/common.sh
. "${0%/*}/common.sh"
chmod 755 "$work"
cd "$work"

# What can't be looked into is told by its directory's rights alone.
snapshot() { (cd "$out" && { find . -mindepth 1 2>/dev/null || true; } | sort | xargs -d '\n' ls -ld --time-style=full-iso); }

# expect_failure WHAT TEXT [OPTION …]: the program fails with that text in its messages, and the old site is as it was.
expect_failure() {
    local what=$1 text=$2 before status=0
    before=$(snapshot)
    publish "${@:3}" "$site" "$out" >/dev/null 2>"$work/stderr" || status=$?
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
    page deep/text.txt '{ title = Text; }' $'one <1>\n\n{{> who}}'
    echo data >"$site/assets/data.bin"
    ln -s data.bin "$site/assets/link"
    echo own >"$site/assets/own.html"
    echo more >"$site/assets/d/more"
    ln -s d "$site/assets/way"
}

new_site
expect 'first run' "$out: 7 written, 0 unchanged, 0 removed" publish "$site" "$out"
[ "$(cat "$out/index.html")" = '<h1>T &amp; T</h1>&lt;Ada&gt;:x;y;Bob:

<b>A &amp; B</b>yes
<a href="index.html">' ] || fail "index.html: $(cat "$out/index.html")"
[ "$(cat "$out/deep/text.html")" = '<h1>Text</h1>&lt;Ada&gt;:x;y;Bob:

<p>one &lt;1&gt;</p>

<p>&lt;Ada&gt;:x;y;Bob:
</p><a href="../index.html">' ] || fail "text.html: $(cat "$out/deep/text.html")"
cp "$out/deep/text.html" "$work"
sed -i 's/$/\r/' "$site/pages/deep/text.txt"
publish --quiet "$site" "$out"
tr -d '\r' <"$out/deep/text.html" | cmp - "$work/text.html" || fail 'lines that end as elsewhere'
[ "$(readlink "$out/assets/link")" = data.bin ] || fail 'the link was not copied as one'

chmod 6640 "$site/assets/own.html"
expect 'an asset with other rights' "$out: 1 written, 6 unchanged, 0 removed" publish "$site" "$out"
[ "$(stat -c %a "$out/assets/own.html")" = 640 ] || fail 'the rights of an asset'

before=$(snapshot)
expect 'second run' "$out: 0 written, 7 unchanged, 0 removed" publish "$site" "$out"
[ "$before" = "$(snapshot)" ] || fail 'a run without changes changed something'
[ "$(sed -n 's/^ *"*\([^"]*\)"* = \([0-9a-f]\{32\}\)[;,]*$/\2  \1/p; s/^ *"*\([^"]*\)"* = "\([0-9a-f]\{32\}\)"[;,]*$/\2  \1/p' \
    "$out/manifest.plist" | sort)" = "$(cd "$out" && find -- * -type f ! -name manifest.plist -print0 | xargs -0 md5sum | sort)" ] ||
    fail "MD5: $(cat "$out/manifest.plist")"
sed -i '1s/h1/h2/' "$out/index.html"
expect 'a page that somebody changed' "$out: 1 written, 6 unchanged, 0 removed" publish "$site" "$out"
rm "$site/pages/deep/text.txt" "$site"/assets/{data.bin,link,way,own.html}
expect 'removal' "$out: 0 written, 2 unchanged, 5 removed" publish "$site" "$out"
[ "$(cd "$out" && find . -mindepth 1 | sort | xargs)" = \
    './assets ./assets/d ./assets/d/more ./index.html ./manifest.plist' ] || fail "left: $(find "$out")"
rm -r "$site/assets/d"
echo file >"$site/assets/d"
echo foreign >"$out/assets/d/foreign"
expect_failure 'a file where others are' "assets/d/foreign' is in the way of the site."
mv "$out/assets/d"/{more,foreign}
mkdir "$out/assets/d/more"
expect_failure 'a file where a directory of others is' "assets/d/more' is in the way of the site."
rmdir "$out/assets/d/more"
mv "$out/assets/d"/{foreign,more}
expect 'a file for a directory' "$out: 1 written, 1 unchanged, 1 removed" publish "$site" "$out"
echo other >"$work/other"
mv "$site/assets" "$work/assets"
ln -s ../assets "$site"
ln -s "$work/other" "$site/assets/outside"
ln -s "$work/assets/d" "$site/assets/absolute"
expect 'links that lead out' "$out: 2 written, 2 unchanged, 0 removed" publish "$site" "$out"
{ [ "$(readlink "$out/assets/absolute")" = d ] && [ ! -L "$out/assets/outside" ] &&
    [ "$(cat "$out/assets/outside")" = other ]; } || fail "links that lead out: $(ls -l "$out/assets")"

# Pages among the assets, and directories that nothing is left in.
new_site
mkdir "$site/pages/assets"
page assets/notes.html '{ title = T; }' x
publish --quiet "$site" "$out"
{ [ -s "$out/assets/notes.html" ] && [ -s "$out/assets/own.html" ]; } || fail 'a page among the assets'
chmod 2750 "$out/deep"
mkdir "$site/pages/deep/text.html"
mv "$site"/pages/deep/text.{txt,html}
page index.html '{ title = T; }' x
rm "$out/index.html"
mkdir "$out/index.html"
publish --quiet "$site" "$out" || fail 'an empty directory that has the name of a page'
[ "$(stat -c %a "$out/deep")" = 2750 ] || fail 'the rights of a directory that all files have left'

# Settings that the command line replaces.
new_site
page index.html '{ title = T; }' '{{site.title}} {{site.author.name}}[{{site.new}}] {{site.people.0}} {{site.people.2.k}};'
echo '{ title = A; author = { name = B; }; people = (x, { k = v; }); }' >"$site/site.plist"
printf '{{{body}}}' >"$site/templates/page.html"
rm "$site/pages/deep/text.txt"
publish --quiet --set title=C --set 'author.name=<=>' --set new=x --set new= --set people.0=y \
    --set people.2.k=z "$site" "$out"
[ "$(xargs <"$out/index.html")" = 'C &lt;=&gt;[] y z;' ] || fail "settings: $(cat "$out/index.html")"
expect_failure 'a setting in none' "site.plist: the setting 'none.x' can't be replaced." --set none.x=1
expect_failure 'a place of no name' "site.plist: the setting 'people.' can't be replaced." --set people.=1
expect_failure 'pages above the site' "'..' is no path inside of a site." --set pages=..

# Sorted lists, defaults, links and images.
new_site
printf '\x89PNG\0' >"$site/assets/d/dot.PNG"
echo '{ people = ( { name = b; n = 1; }, { name = C; }, { n = 2; }, { name = A; }, { name = B; n = 3; } ); shows = ("a b");
    deep = ({ n = 1; a = { b = x; }; }, { n = 2; }, { n = 5; a = text; }, { n = 3; a = { b = Z; }; }, { n = 4; a = { b = y; }; }); pages = "pages/"; }' \
    >"$site/site.plist"
printf '{{{body}}}' >"$site/templates/page.html"
page index.html '{ title = T; }' x
page deep/text.txt '{ title = T; }' x
page 'deep/?#%41:.TXT' '{ title = T; }' '<x>'
page deep/er.html '{ dot = "assets/d/dot.PNG"; far = "https://example.org/a?b&c"; }' \
    '{{#each site.people by name as p}}{{p.name or "<none>"}}{{p.n or ""}} {{/each}}
{{#each site.people by name.REVERSE as p}}{{{p.name or "<none>"}}}{{p.n or ""}} {{/each}}
{{#each pages by url as p}}{{link p.url}} {{/each}}{{#each site.deep by a.b.REVERSE as p}}{{p.n}}{{/each}}{{link "/deep"}}
{{link "other/a&b.html#c"}} {{link page.far}} {{link page.no or "/index.html"}} {{"a or b"}} {{site.shows.0}}
{{image page.dot}} {{link "deep/b:c?d#e//f"}} {{link "//example.org/x"}} {{link "#top"}} {{link "1:2.html"}} {{link "deep/ü:x"}}'
publish --quiet "$site" "$out"
diff --ignore-trailing-space - "$out/deep/er.html" <<'TEXT' >&2 || fail 'sorted lists, defaults, links and images'


A b1 B3 C &lt;none&gt;2
<none>2 C B3 b1 A
%3F%23%2541%3A.html er.html text.html ../index.html 52341../deep
../other/a&amp;b.html#c https://example.org/a?b&amp;c ../index.html a or b a b
data:image/png;base64,iVBORwA= ./b:c?d#e//f //example.org/x #top ../1:2.html ./ü:x
TEXT
expect 'plain text, whatever its ending looks like' '<p>&lt;x&gt;' grep x "$out/deep/?#%41:.html"
rm -r "$out"

# Directories elsewhere, and where their names are relative to.
new_site
mkdir "$site/content"
mv "$site"/{pages,assets} "$site/content"
mv "$site/templates" "$work/frames"
echo "{ basedir = content; templates = \"$work/frames\"; title = T; people = (); }" >"$site/site.plist"
expect 'directories elsewhere' "$out: 7 written, 0 unchanged, 0 removed" publish "$site" "$out"
expect_failure 'pages around the target' "'$work' and the directory '$out' that it goes to" --set "pages=$work"
rm -r "$out"

# The site map and the feed.
new_site
echo '{ title = "A & B"; address = "https://example.org/a?b=c&d"; people = (); feed = { description = "<news>"; }; }' \
    >"$site/site.plist"
printf '{{{body}}}' >"$site/templates/page.html"
page index.html '{ title = Start; }' x
page old.html '{ title = Old; date = "0099-02"; }' x
page new.html '{ title = "T & T\357\277\276"; date = "2024-02-29 12:30"; description = "a\001b"; }' x
page 'deep/ü b.txt' '{ date = "Sun, 06 Nov 1994 08:49:37 GMT"; }' x
mkdir "$site/pages/old"
for ((i = 10; i < 30; ++i)); do
    page "old/$i.html" "{ date = 19$i; }" x
done
expect 'site map and feed' "$out: 32 written, 0 unchanged, 0 removed" publish "$site" "$out"
while IFS= read -r line; do
    grep -qxF "$line" "$out/sitemap.xml" || fail "'$line' is not in $(cat "$out/sitemap.xml")"
done <<'TEXT'
<url><loc>https://example.org/a?b=c&amp;d/index.html</loc></url>
<url><loc>https://example.org/a?b=c&amp;d/old.html</loc><lastmod>0099-02-01T00:00:00Z</lastmod></url>
<url><loc>https://example.org/a?b=c&amp;d/deep/%C3%BC%20b.html</loc><lastmod>1994-11-06T08:49:37Z</lastmod></url>
TEXT
diff - <(head -n 5 "$out/feed.xml") <<'TEXT' >&2 || fail 'feed'
<?xml version="1.0" encoding="UTF-8"?>
<rss version="2.0"><channel>
<title>A &amp; B</title><link>https://example.org/a?b=c&amp;d/</link><description>&lt;news&gt;</description>
<item><title>T &amp; T</title><link>https://example.org/a?b=c&amp;d/new.html</link><guid>https://example.org/a?b=c&amp;d/new.html</guid><pubDate>Thu, 29 Feb 2024 12:30:00 GMT</pubDate><description>ab</description></item>
<item><title>https://example.org/a?b=c&amp;d/deep/%C3%BC%20b.html</title><link>https://example.org/a?b=c&amp;d/deep/%C3%BC%20b.html</link><guid>https://example.org/a?b=c&amp;d/deep/%C3%BC%20b.html</guid><pubDate>Sun, 06 Nov 1994 08:49:37 GMT</pubDate></item>
TEXT
[ "$(grep -c '<item>' "$out/feed.xml")" -eq 20 ] || fail "the feed has $(grep -c '<item>' "$out/feed.xml") pages"
expect_failure 'a feed that is no UTF-8' "feed.xml:3: " --set title=$'a\xed\xa0\x80'
if command -v xmllint >/dev/null; then
    xmllint --noout "$out/sitemap.xml" "$out/feed.xml" || fail 'no XML'
else
    echo 'publish: the XML is not checked, because xmllint is not installed' >&2
fi
rm -r "$out"

# What somebody else put under our names is taken away or refused; nothing behind a link is touched.
new_site
publish --quiet "$site" "$out"
mkdir "$work/precious"
touch "$work/precious"/{journal.plist,index.html,more}
plant() { # NAME-IN-OUT TARGET: puts a link there
    rm -rf "${out:?}/$1"
    ln -s "$2" "$out/$1"
}
plant .publish "$work/precious"
expect 'a link to stage in' "$out: 0 written, 7 unchanged, 0 removed" publish "$site" "$out"
plant index.html "$work/precious/index.html"
expect 'a link for a page' "$out: 1 written, 6 unchanged, 0 removed" publish "$site" "$out"
[ ! -L "$out/index.html" ] || fail 'the link is still there'
cp "$out/deep/text.html" "$work/precious"
plant deep "$work/precious"
expect_failure 'a link for a directory' "'$out/deep' is in the way of the site."
rm "$site"/pages/deep/text.txt
expect 'a link above an old page' "$out: 0 written, 6 unchanged, 0 removed" publish "$site" "$out"
journal() { # TEXT: as a run leaves it that was cut off
    mkdir -p "$out/.publish/files/deep"
    touch "$out/.publish/files/deep/new"
    echo "$1" >"$out/.publish/journal.plist"
}
journal '{ removed = ( "deep/text.html" ); }'
expect 'a journal of what is behind a link' "$out: 0 written, 6 unchanged, 0 removed" publish "$site" "$out"
journal '{ moved = ( "deep/new" ); }'
expect_failure 'a journal of what goes behind a link' "'$out/deep' is in the way of the site."
rm -r "$out/.publish"
[ "$(cd "$work/precious" && echo *)" = 'index.html journal.plist more text.html' ] || fail 'a link was followed'
while IFS='|' read -r file text message; do
    mkdir -p "$(dirname "$out/$file")"
    echo "$text" >"$out/$file"
    expect_failure "$file: $text" "$message"
    rm -rf "$out/.publish"
done <<ROWS
.publish/journal.plist|{ removed = ( "../precious/more" ); }|'../precious/more' is no path inside of a site.
.publish/journal.plist|{ moved = ( ".publish/journal.plist" ); }|'.publish/journal.plist' is no path inside of a site.
.publish/journal.plist|{ moved = |In '$out/.publish/journal.plist':
manifest.plist|{ files = ( "../precious/more" ); }|manifest.plist: '../precious/more' is no path inside of a site.
ROWS

# Whatever is wrong with a site, the old one stays and the message says where it is.
new_site
rm -r "$out"
publish --quiet "$site" "$out"
while IFS='|' read -r what message head body; do
    page index.html "$head" "$(printf %b "$body")"
    expect_failure "$what" "$message"
done <<'ROWS'
missing key|pages/index.html:3: there is no value for 'page.titel'.|{ title = T; }|{{page.titel}}
malformed head|The property list is malformed in line 1, column|{ title = T; |x
unknown inner template|pages/index.html:3: there is no template 'gone'.|{ title = T; }|{{> gone}}
wrong close|pages/index.html:3: a block is closed that is not open.|{ title = T; }|{{#if page}}{{/each}}
nameless close|pages/index.html:3: a block is closed that is not open.|{ title = T; }|a {{/}} b
value that is not UTF-8|index.html:1: |{ title = "\377"; }|x
not sortable|pages/index.html:3: 'page.list' has elements without keys to sort by.|{ list = (a, b); }|{{#each page.list by name as x}}{{/each}}
place of a missing image|pages/index.html:4: an image can't be put into the page.|{ title = T; }|\n{{image "gone.png"}}
a key in a long tag|pages/index.html:3: there is no value for 'page.x'.|{ title = T; }|{{page.x\n\n}}
a block that stays open|pages/index.html:4: a block is not closed.|{ title = T; }|\n{{#if page}}\n\n
an image above the site|pages/index.html:4: '../x.png' is no path inside of a site.|{ title = T; }|\n{{image "../x.png"}}
unreal day|pages/index.html: '2023-02-29' is no date.|{ date = "2023-02-29"; }|x
another zone|pages/index.html: 'Sun, 06 Nov 1994 08:49:37 +0200' is no date.|{ date = "Sun, 06 Nov 1994 08:49:37 +0200"; }|x
NUL in a value|pages/index.html: '2023\0x' is no date.|{ date = "2023\000x"; }|x
no list|pages/index.html:3: 'page.title' is no list.|{ title = T; }|{{#each page.title as t}}{{/each}}
no image|assets/data.bin' is no image of at most 32768 bytes|{ title = T; }|{{image "assets/data.bin"}}
head that is no dictionary|pages/index.html: the text is no dictionary.|( title )|x
not UTF-8|pages/index.html:4: the text is not valid UTF-8 at byte 21: behind "le = T; }\n---\nx\n" stands "\xffy\x7f\n".|{ title = T; }|x\n\xffy\x7f
ROWS

# The messages that the handbook shows.
ln -s site shop
page index.html '{ title = Start; }' '<p>by {{page.author}}</p>'
publish shop "$out" 2>"$work/said" || true
page prices.html '{ title = Prices; }' $'<p>Tea for two</p>\n<p>Caf\xe9 cr\xc3\xa8me</p>'
publish shop "$out" 2>>"$work/said" || true
diff "$handbook/examples/publish.output" "$work/said" >&2 || fail 'the messages in the handbook'
rm "$site/pages/prices.html"

page index.html '{ title = T; }' x
page_of() { printf '{ title = T; }\\n---\\n%s' "$1"; }
while IFS='|' read -r path what message; do # a file, pipe or link instead of what may be there
    mkdir -p "$(dirname "$site/$path")"
    [ ! -e "$site/$path" ] || mv "$site/$path" "$work/kept"
    case $what in
    pipe) mkfifo "$site/$path" ;;
    /* | .*) ln -s "$what" "$site/$path" ;;
    *) printf %b "$what" >"$site/$path" ;;
    esac
    expect_failure "$path: $what" "$message"
    rm "$site/$path"
    [ ! -e "$work/kept" ] || mv "$work/kept" "$site/$path"
done <<ROWS
pages/x.html|no head|pages/x.html:1: a page begins with a property list
pages/empty.html||pages/empty.html:1: a page begins with a property list
pages/long.txt|$(page_of 'a & {{> who}}\n\n\nb\n\n{{page.none}}')|pages/long.txt:8: there is no value for 'page.none'.
pages/index.txt|$(page_of '')|'index.html' would be written twice.
pages/pipe.txt|pipe|'$site/pages/pipe.txt' is no plain file.
templates/who.html|{{> who}}|templates/who.html:1: the template 'who' includes itself.
site.plist|{ texts = { a = gone; }; }|site/gone' does not exist.
site.plist|{ pages = "a\0b"; }|'a\0b' is no path inside of a site.
site.plist|{ address = "example.org"; people = (); title = T; }|site.plist: 'example.org' is no address that a site can have.
ROWS
find "$site" -type d -empty -delete
for ((i = 0; i < 100; ++i)); do
    echo "{{> t$((i + 1))}}" >"$site/templates/t$i.html"
done
page index.html $'{ title = "a template";\n  template = gone; }' x
expect_failure 'an unknown template' "pages/index.html:2: there is no template 'gone'."
page index.html '{ title = T; template = t0; }' x
expect_failure 'a long way of templates' 't63.html:1: templates include each other too deeply.'
page index.html '{ title = T; }' x
mkdir plug-ins
mkfifo plug-ins/libPipe.so
rows_fail 1 <<'ROWS'
--plugins plug-ins "$site" "$out"|'plug-ins/libPipe.so' is no plain file.
"$work/gone" "$out"|/gone/site.plist' does not exist.
"$site" "$site/site.plist/.."|may not contain one another.
"$site" "$work/other"|/other' can't be read.
ROWS
(cd "$site" && publish --quiet . public 2>"$work/messages") && fail 'a directory inside of the site, by its way from there'
grep -q 'may not contain one another' "$work/messages" || fail "what it says: $(cat "$work/messages")"
as=(flock "$out")
expect_failure 'two runs at a time' "Another run is writing to '$out'."
as=()
publish --quiet "$site" "$out" <&- >&- 2>&- || fail 'closed descriptors'

# Pages that are enciphered, in the site and in what becomes of it.
new_site
rm -r "$out"
printf 'open sesame\r\n' >"$work/key"
echo wrong >"$work/other-key"
printf '\n' >"$work/no-key"
printf '{ title = T; }\n---\n{{page.url}} <' >"$work/secret.txt"
with_key() { publish --key-file "$work/key" "$@"; }
with_key --encipher "$work/secret.txt" >"$site/pages/deep/secret.txt.enc"
printf 'open sesame' >"$work/key"
expect 'there and back' "$(cat "$work/secret.txt")" with_key --decipher "$site/pages/deep/secret.txt.enc"
page index.html '{ title = Inner; enciphered = YES; }' '{{#each pages as p}}{{p.url}} {{/each}}'
page deep/text.txt '{ title = Outer; enciphered = NO; }' plain
expect 'enciphered pages' "$out: 8 written, 0 unchanged, 0 removed" with_key "$site" "$out"
expect 'the same enciphered pages' "$out: 0 written, 8 unchanged, 0 removed" with_key "$site" "$out"
grep -qF 'deep/secret.html &lt;' "$out/deep/secret.html" || fail "secret.html: $(cat "$out/deep/secret.html")"
with_key --decipher "$out/index.html.enc" | grep -qF 'deep/secret.html deep/text.html index.html.enc' ||
    fail 'index.html.enc does not come back'
head -c 23 "$out/index.html.enc" >"$work/cut.enc"
head -c -8 "$site/pages/deep/secret.txt.enc" >"$work/shortened.enc"
printf '{ title = T; }\n---\n\xff' >"$work/latin.txt"
with_key --encipher "$work/latin.txt" >"$site/pages/deep/latin.txt.enc"
rows_fail 1 <<'ROWS'
"$site" "$out"|[910031] There is no key for '
--key-file "$work/other-key" "$site" "$out"|[910032] '
--key-file "$work/key" "$site" "$out"|latin.txt.enc:3: the text is not valid UTF-8 at byte 19
--key-file "$work/key" --decipher "$work/cut.enc"|[100239] The blowfish encrypted data is corrupt.
--key-file "$work/key" --decipher "$work/shortened.enc"|[910032] '
--key-file "$work/key" --encipher "$work/secret.txt" 1</dev/null|'standard output' could not be written: Invalid argument
--key-file "$work/no-key" "$site" "$out"|[910030] The file '
ROWS

new_site
page index.html '{ title = "T & T"; }' "$(head -c 300000 /dev/zero | tr '\0' x)"
(
    ulimit -f 100
    expect_failure 'full disk' 'could not be written'
    [ $failures -eq 0 ]
) || failures=$((failures + 1))

# Rights that are missing are noticed before anything has changed.
if [ "$(id -u)" -eq 0 ]; then
    as=(setpriv --reuid=65534 --regid=65534 --clear-groups)
fi
if "${as[@]}" test -x "$program" && "${as[@]}" test -r "$site/site.plist"; then
    [ ${#as[@]} -eq 0 ] || chown -R 65534 "$out"
    denied() {
        local what=$1 text=$2 path=$3 mode
        mode=$(stat -c %a "$path")
        chmod "$4" "$path"
        expect_failure "$what" "$text"
        chmod "$mode" "$path"
    }
    denied 'unreadable page' "index.html' could not be read: Permission denied" "$site/pages/index.html" 000
    denied 'read-only target' ".publish' could not be made: Permission denied" "$out" 555
    page index.html '{ title = T; }' x
    mkdir "$site/assets/d/d"
    mv "$site/assets/d/more" "$site/assets/d/d"
    publish --quiet "$site" "$out"
    rm "$site/assets/link"
    denied 'read-only directory of old files' "link' could not be removed: Permission denied" "$out/assets" 555
    rm -r "$site/assets/d"
    echo file >"$site/assets/d"
    denied 'read-only directory of one that has to go' "d/d' could not be removed: Permission denied" "$out/assets/d" 555
else
    echo "publish: missing rights are not tried, because the program can't be run as another user" >&2
fi
as=()

# A run that is cut off at any of its changes leaves the old site, or is finished by the next one.
if command -v strace >/dev/null && [ ${#launcher[@]} -eq 0 ] && strace -o /dev/null true 2>/dev/null; then
    injected() { # CALL WHAT NUMBER [OPTION …]
        (
            ASAN_OPTIONS=detect_leaks=0 strace -f -o /dev/null -e inject="$1:$2:when=$3" "${@:4}" \
                "$program" --quiet "$site" "$out"
            exit $?
        ) 2>"$work/stderr"
    }
    new_site
    mkdir -p "$site"/assets/{,d/}e/e
    echo more | tee "$site"/assets/{,d/}e/e/more >/dev/null
    ln -s loop "$site/assets/loop"
    ln -s more "$site/assets/d/l"
    publish --quiet "$site" "$work/old"
    page index.html '{ title = New; }' changed
    rm -r "$site"/pages/deep/text.txt "$site"/assets/{link,data.bin,d,e,loop,way}
    ln -s way "$site/assets/e"
    mkdir -p "$site"/assets/{data.bin,fresh,loop,way/l}
    echo new | tee "$site"/assets/{{data.bin,fresh,loop,way/l}/new,way/{more,e}} >/dev/null # once d's, behind a link
    chmod 600 "$site/assets/own.html"
    ln -s data.bin/new "$site/assets/other"
    publish --quiet "$site" "$work/new"
    restore() { rm -rf "$out" && cp -a "$work/old" "$out"; }
    same() { LC_ALL=C diff -r --no-dereference --exclude=.publish "$out" "$1" >"$work/difference"; }
    is_all() { same "$1" && [ ! -e "$out/.publish" ]; }
    cuts=0
    is_kept() { same "$work/old" || ! grep -qv "^Only in $out" "$work/difference"; } # and new names beside it
    for call in mkdir write sendfile symlink fsync syncfs rename unlink unlinkat rmdir {rename,syncfs,rmdir}' failing'; do
        what=signal=KILL
        [ "$call" = "${call% failing}" ] || what=error=EIO
        for ((nth = 1; nth < 40; ++nth)); do
            restore
            ! injected "${call% failing}" $what $nth || break
            cuts=$((cuts + 1))
            ! [[ "$call" = 'rename failing' && -e "$out/.publish/journal.plist" ]] ||
                grep -qF "The new site in '$out' is not complete yet; the next run completes it." "$work/stderr" ||
                fail "no word of what is left: $(cat "$work/stderr")"
            [ -e "$out/.publish/journal.plist" ] || same "$work/new" || is_kept ||
                fail "cut off at $call $nth: $(cat "$work/difference")"
            if ((nth % 2)); then # a run without a site takes back or finishes, too
                publish "$work/gone" "$out" 2>/dev/null || true
                is_all "$work/old" || is_all "$work/new" || fail "a site between both after $call $nth"
            fi
            publish --quiet "$site" "$out" || fail "the run after $call $nth"
            is_all "$work/new" ||
                fail "the run after the one that was cut off at $call $nth: $(cat "$work/difference")"
        done
    done
    [ "$cuts" -gt 20 ] || fail "only $cuts cuts were tried"
    while read -r call what nth left unasked; do # what needs room comes before it is decided, and is taken back
        restore
        if injected "$call" "$what" "$nth"; then
            [ "$call" = mkdir ] || fail "a run with $what at $call $nth succeeded"
            continue
        fi
        [ -z "$unasked" ] || ! injected %%stat error=EIO 1 -P "$out/.publish/$unasked" || fail "$unasked is not asked for"
        [ "$what" = error=ENOSPC ] || ! publish "$work/gone" "$out" 2>/dev/null
        is_all "$work/$left" || fail "no $left site after $call $nth with $what: $(cat "$work/difference")"
    done < <(printf '%s\n' 'rename signal=KILL 3 old files/assets/fresh' 'rename signal=KILL 5 new' \
        'rename error=ENOSPC 2 old' &&
        printf 'mkdir error=ENOSPC %s old\n' {1..30})
    for path in .publish/files/assets/fresh assets/own.html; do # no answer is none to go on with
        for nth in {1..12}; do
            restore
            if injected %%stat error=EIO "$nth" -P "$out/$path"; then
                is_all "$work/new" && [ "$(stat -c %a "$out/assets/own.html")" = 600 ]
            else
                is_all "$work/old" || same "$work/new"
            fi || fail "$path, asked for the $nth. time: $(cat "$work/difference")"
        done
    done
    restore
    injected mkdir delay_enter=500000 1 -P "$out/assets/fresh" & # as where it has come under another case of its name
    until [ -e "$out/.publish/brought.plist" ] || ! kill -0 $! 2>/dev/null; do sleep 0.01; done
    mkdir "$out/assets/fresh" || true
    { wait $! && is_all "$work/new"; } || fail "a directory that is there already: $(cat "$work/stderr")"
    restore
    for nth in {1..99}; do # sanitizers write something before the program begins
        injected write signal=INT "$nth" && fail 'an interrupted run succeeded'
        ! grep -qF 'The run was interrupted' "$work/stderr" || break
    done
    grep -qF 'The run was interrupted' "$work/stderr" || fail "interruption: $(cat "$work/stderr")"
    is_all "$work/old" || fail 'the interrupted run left something'
    injected rmdir error=EIO 1 && fail 'a directory of the site that could not be removed passed unseen'
    publish --quiet "$site" "$out"
    injected rmdir error=ENOTEMPTY 1 || fail 'what got a file while it was removed is left'
    for before in new old; do # without and with changes
        rm -r "$out" && cp -a "$work/$before" "$out"
        injected rmdir error=EBUSY 1 -P "$out/.publish" && fail 'what is left of a run passed unseen'
        { [[ $(cat "$work/stderr") == 'publish: [100203] '*busy ]] && same "$work/new"; } || fail "left: $(cat "$work/stderr")"
    done
fi

# --- Options ---

has() { [[ $(publish "${@:2}" 2>&1) == *"$1"* ]] || fail "'$1' is not in what $2 says"; }
has 'Usage: publish' --help
[[ $(publish --version) =~ ^publish\ [0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "the version: $(publish --version)"
for option in --debug --profile; do
    [ "$(publish $option help | xargs)" = 'Possible debug channels are: all fileio misc process publish socket utils'\
' Possible profile channels are: netio publish' ] || fail "$option help: $(publish $option help)"
done
has '[fileio(9) OK]' --debug fileio --debug-level 9 "$site" "$out"
has 'total global count' --statistics "$site" "$out"
[ -z "$(publish --log "$work/log" --log-level 2 "$site" "$out" 2>&1 >/dev/null)" ] || fail 'the log went to standard error'
grep -q 'unchanged' "$work/log" || fail 'the log has no report'
rows_fail 2 <<'ROWS'
|The directories SITE and OUT are needed (try --help)
--no-such-option "$site" "$out"|There is no option --no-such-option
--set a "$site" "$out"|--set wants KEY=VALUE
--filter '' "$site" "$out"|--filter wants a value
--key-file "$site/site.plist" --encipher "$site/site.plist" "$site"|There is an argument too many
--log-level 256 "$site" "$out"|'256' is no number that fits
--log "$work/no/log" "$site" "$out"|no/log' could not be written: No such file or directory
ROWS
page index.html '{ title = T; }' '{{page.none}}'
has '[end  :publish] index.html' --profile publish "$site" "$out" # though it can't be made
# What is timed, and a command for each page, which the program's shell reads.
new_site
profile=$(publish --profile publish "$site" "$out" 2>&1 >/dev/null | sed -E 's/^[0-9]+:(.*) \(.*/\1/')
[ "$profile" = '[start:publish] deep/text.html
[end  :publish] deep/text.html
[start:publish] index.html
[end  :publish] index.html' ] || fail "what is timed: $profile"
# shellcheck disable=SC2016
publish --filter 'tr a-z A-Z; echo "($PUBLISH_PAGE)"' "$site" "$out" >/dev/null
[ "$(tail -1 "$out/deep/text.html")" = '</P><A HREF="../INDEX.HTML">(deep/text.html)' ] ||
    fail "a filtered page: $(cat "$out/deep/text.html")"
# shellcheck disable=SC2016
expect_failure 'a command that a signal ends with its shell' 'text.html: the filter was ended before it was done' \
    --filter 'cat; kill -9 $PPID'
expect_failure 'a command that fails' 'exit code 3: far' --filter 'cat >/dev/null; echo far >&2; exit 3'
expect_failure 'a command whose output is no text' "text.html:1: the text is not valid UTF-8" --filter "printf '\\377'"
expect_failure 'staged files that somebody removes' "/deep/text.html' does not exist." --filter "tr a-z A-Z; [ \$PUBLISH_PAGE != index.html ] || rm -r $out/.publish/files"
# What the command leaves running writes when the next page's has begun.
mkfifo go gone
# shellcheck disable=SC2016
publish --quiet --filter 'cat; case $PUBLISH_PAGE in d*) (read -r x <go; echo late; echo >gone) & ;; *) echo >go; read -r x <gone ;; esac' \
    "$site" "$out"
! grep -q late "$out/index.html" || fail "a page that another one's command wrote to"
# The command of a run that was killed ends in the next one.
"${launcher[@]}" "$program" --filter 'echo >gone; read -r x <go' "$site" "$out" &
read -r _ <gone
killed=$!
[ ${#launcher[@]} -eq 0 ] || killed=$(ps -o pid= --ppid $! | tr -d ' ') # not what has launched it
kill -9 "$killed"
wait $! 2>/dev/null || true
rows_fail 1 <<'ROWS'
--filter 'head -c 5; echo >go; rm go; sleep 1; kill -9 $PPID' "$site" "$out"|deep/text.html: the filter was ended before it was done
ROWS

# Two links of one file whose names differ by case alone.
page Twin.txt '{ title = T; }' x
page twin.txt '{ title = T; }' x
publish --quiet "$site" "$out"
ln -f "$out"/{T,t}win.html
rm "$site/pages/twin.txt"
expect 'a link less' "$out: 0 written, 8 unchanged, 1 removed" publish "$site" "$out"
[ "$(cd "$out" && echo [Tt]win.html)" = Twin.html ] || fail 'a page is gone or left with its link'
rm "$site/pages/Twin.txt"
publish --quiet "$site" "$out"

# Files that are marked, and what is mounted in the target, are noticed before anything has changed.
echo changed >"$site/assets/data.bin"
rm "$site/assets/own.html"
if chattr +a "$out/assets" 2>/dev/null; then
    expect_failure 'a directory that keeps its files' "own.html' could not be removed: Operation not permitted"
    chattr -a "$out/assets"
    chattr +i "$out/assets/data.bin"
    expect_failure 'a file that stays as it is' "data.bin' could not be written: Operation not permitted"
    chattr -i "$out/assets/data.bin"
else
    echo "publish: marked files are not tried, because they can't be marked" >&2
fi
if [ ${#launcher[@]} -eq 0 ] && unshare -m mount --bind "$site" "$out" 2>/dev/null; then
    # shellcheck disable=SC2016
    mounted() { as=(unshare -m sh -c 'mount --bind "$0" "$1" && shift && exec "$@"' "$1" "$out$2"); }
    mounted "$site" ''
    expect_failure 'the site mounted as its target' "'$site' and the directory '$out' that it goes to"
    cp -a "$out/assets" "$work/mounted"
    mounted "$work/mounted" /assets
    expect_failure 'a mounted directory' "data.bin' could not be written: Invalid cross-device link"
    mounted "$work/mounted/own.html" /index.html
    expect_failure 'a mounted file' "index.html' could not be written: Device or resource busy"
    as=()
    page deep/linked.txt '{ title = T; }' x
    cp "$site/pages/deep"/{linked,twin}.txt
    publish --quiet "$site" "$out"
    ln -f "$out/deep"/{linked,twin}.html
    rm "$site/pages/deep/twin.txt"
    mv "$site/pages/deep" "$site/pages/Deep"
    mkdir "$out/Deep"
    mounted "$out/deep" /Deep # as if case did not matter
    expect 'another name of the same file' "$out: 0 written, 7 unchanged, 1 removed" publish "$site" "$out"
    [ "$(cd "$out/deep" && echo *)" = 'linked.html text.html' ] || fail 'a file is gone with its old name'
    as=()
else
    echo "publish: mounts are not tried, because nothing can be mounted, or an emulator does not tell of it" >&2
fi
! publish --help >/dev/full 2>&1 || fail 'what could not be said counts as said'

[ $failures -eq 0 ] && echo "publish: all is well"
