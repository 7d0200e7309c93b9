#!/bin/bash
# Serves a small site and asks for it, by curl and by hand.
#   tests/publish/check-serving.sh PUBLISH
set -euo pipefail
# shellcheck source=tests/publish/common.sh
. "${0%/*}/common.sh"
server=0
trap '[ $server = 0 ] || kill $server 2>/dev/null || true; rm -rf "$work"' EXIT

# wait_for TEXT COMMAND...: until the command prints it.
wait_for() {
    for _ in $(seq 100); do
        ! "${@:2}" | grep -q "$1" || return 0
        sleep 0.2
    done
    fail "'$1' never comes: $(cat "$work/stderr")"
}

# start OPTION...: serves in the background, and sets `address`.
start() {
    : >"$work/stdout"
    "${launcher[@]}" "$program" "$@" "$site" "$out" >"$work/stdout" 2>"$work/stderr" &
    server=$!
    for _ in $(seq 600); do
        address=$(sed -n 's/^Serving .* at //p' "$work/stdout")
        [ -z "$address" ] || return 0
        kill -0 $server 2>/dev/null || break
        sleep 0.1
    done
    fail "the server has not begun: $(cat "$work/stderr")"
    exit 1
}

stop() {
    local status=0
    kill -TERM "$server"
    wait "$server" || status=$?
    [ $status -eq 0 ] || fail "exit status $status after SIGTERM: $(cat "$work/stderr")"
    server=0
}

status_of() { curl -s -o /dev/null -m 20 --path-as-is -w '%{http_code}' "$@" || true; }
http_date() { LC_ALL=C TZ=UTC date "$@" '+%a, %d %b %Y %H:%M:%S GMT'; }
answered() { curl -s --no-progress-meter -Z --parallel-max 50 -o /dev/null -w '%{http_code}\n' "$@" | grep -c '^200'; }
header_of() { local name=$1; shift; curl -s -m 20 -D - -o /dev/null "$@" | tr -d '\r' | sed -n "s/^$name: //p"; }

# by_hand TEXT: what comes back for these bytes, until the server ends the connection.
by_hand() {
    local socket
    exec {socket}<>"/dev/tcp/127.0.0.1/${address##*:}"
    printf '%b' "$1" >&"$socket"
    timeout 20 cat <&"$socket" | tr -d '\r'
    exec {socket}>&-
}

mkdir -p "$site"/{pages/deep,templates,assets/d}
echo '{ title = Site; }' >"$site/site.plist"
echo '{{{body}}}' >"$site/templates/page.html"
printf '{ title = T; }\n---\n<p>start</p>\n' >"$site/pages/index.html"
printf '{ title = T; }\n---\n<p>deep</p>\n' >"$site/pages/deep/index.html"
printf '{ title = T; }\n---\n<p>plus</p>\n' >"$site/pages/a+b c.html"
head -c 300000 /dev/urandom >"$site/assets/data.bin"
touch "$site"/assets/{a.css,a.PNG,a.svg,a.txt}
echo secret >"$work/secret"
ln -s data.bin "$site/assets/inside"

start --serve 0
ln -s ../../secret "$out/assets/outside" # planted
ln -s ../.. "$out/assets/way"
mkfifo "$out/assets/pipe"
mkdir "$out/.d"
touch "$out/.secret" "$out/.d/x"
case $address in http://127.0.0.1:*) ;; *) fail "the address is $address" ;; esac
expect 'the start page' '<p>start</p>' sh -c "curl -s $address/ | grep ."
expect 'a page of a directory' '<p>deep</p>' sh -c "curl -s $address/deep/?x=1 | grep ."
expect 'an escaped name' '<p>plus</p>' sh -c "curl -s $address/a+b%20c.html | grep ."
curl -s "$address/assets/inside" | cmp - "$site/assets/data.bin" || fail 'a link inside of the site is not followed'
expect 'a directory without its slash' '/deep/' header_of Location "$address/deep"
expect 'the length for HEAD' 300000 header_of Content-Length -I "$address/assets/data.bin"

while read -r path type; do
    expect "the type of $path" "$type" header_of Content-Type "$address/$path"
done <<'ROWS'
deep/ text/html; charset=utf-8
assets/a.css text/css; charset=utf-8
assets/a.PNG image/png
assets/a.svg image/svg+xml
assets/a.txt text/plain; charset=utf-8
assets/data.bin application/octet-stream
none text/plain; charset=utf-8
ROWS

modified=$(header_of Last-Modified "$address/")
expect 'the date of a page' "$(http_date -r "$out/index.html")" echo "$modified"
expect 'an unchanged page' 304 status_of -H "If-Modified-Since: $modified" "$address/"
expect 'a changed page' 200 status_of -H "If-Modified-Since: $(http_date -d "$modified 1 second ago")" "$address/"
expect 'a date as C writes it' 304 status_of -H "If-Modified-Since: $(LC_ALL=C TZ=UTC date -d "$modified" '+%a %b %e %T %Y')" "$address/"
expect 'a date of another zone' 200 status_of -H "If-Modified-Since: ${modified%GMT}+0500" "$address/"
expect 'two dates' 200 status_of -H "If-Modified-Since: $modified" -H "If-Modified-Since: $modified" "$address/"
expect 'a tag' 200 status_of -H "If-Modified-Since: $modified" -H 'If-None-Match: "x"' "$address/"
expect 'a later version' 'HTTP/1.1 200 OK' sh -c "printf '%s' '$(by_hand '\r\nGET / HTTP/1.2\r\nHost: x\r\nConnection: close\r\n\r\n')' | head -1"
touch -d tomorrow "$out/deep/index.html"
expect 'a page of the future' 1 \
    sh -c "curl -s -I $address/deep/ | sed -n 's/^Date: //p; s/^Last-Modified: //p' | sort -u | wc -l"
touch -d @-99999999999 "$out/assets/a.svg"
expect 'a file from before all dates' 0 sh -c "curl -s -f -I $address/assets/a.svg | sed -n '/^Last-Modified/p' | wc -l"

for path in /none /../secret /%2e%2e/secret /..%2fsecret /assets/outside /assets/way/secret /assets/pipe \
    /.secret /.d/x '/index.html%00'; do
    expect "$path" 404 status_of "$address$path"
done
expect 'a cut escape' 400 status_of "$address/%"
expect 'another method' 405 status_of -d x "$address/"
expect 'the methods' 'GET, HEAD' header_of Allow -d x "$address/"
for path in / /none "/$(printf 'a%.0s' $(seq 9000))"; do
    expect "nothing behind the headers of $path" '' sed '1,/^$/d' <<<"$(by_hand "HEAD $path HTTP/1.0\r\n\r\n")"
done
expect 'a body' 413 status_of -X GET -d x "$address/"
expect 'a long address' 414 status_of "$address/$(printf 'a%.0s' $(seq 3000))"
expect 'a long head' 431 status_of -H "X: $(printf 'a%.0s' $(seq 9000))" "$address/"
expect 'no host' 'HTTP/1.1 400 Bad Request' sh -c "printf '%s' '$(by_hand 'GET / HTTP/1.1\r\n\r\n')' | head -1"
while IFS='|' read -r request status; do
    expect "$request" "$status" sh -c "printf '%s' '$(by_hand "$request\r\n\r\n")' | sed -n '1s/HTTP.1.1 //p'"
done <<'ROWS'
GET http://host/deep/ HTTP/1.0|200 OK
BREW / HTTP/1.1\r\nHost: x|501 Not Implemented
GET / HTTP/2.0\r\nHost: x|505 HTTP Version Not Supported
GET / HTTP/1.1\r\nHost: x\r\nHost: x|400 Bad Request
GET / HTTP/1.1\r\nHost: x\r\nA b: c|400 Bad Request
ROWS
expect 'two requests at once' 2 \
    sh -c "printf '%s' '$(by_hand 'GET / HTTP/1.1\r\nHost: x\r\n\r\nHEAD / HTTP/1.1\nHost: x\nConnection: close\n\n')' | grep -c '^HTTP/1.1 200 OK'"

# A client that sends more than it had to gets its answer whole.
exec {parting}<>"/dev/tcp/127.0.0.1/${address##*:}"
printf 'GET /assets/data.bin HTTP/1.0\r\n\r\n' >&"$parting"
sleep 0.3
printf 'GET' >&"$parting"
tail -c 300000 <&"$parting" | cmp - "$site/assets/data.bin" || fail 'an answer was cut'
exec {parting}>&-

exec {idle}<>"/dev/tcp/127.0.0.1/${address##*:}"
printf 'HEAD / HTTP/1.1\r\nHost: x\r\n\r\n' >&"$idle"

# A kept connection's next request has its time from when it begins.
exec {late}<>"/dev/tcp/127.0.0.1/${address##*:}"
(printf 'HEAD / HTTP/1.1\r\nHost: x\r\n\r\n'; sleep 7; printf 'HEAD / HTTP/1.1\r\n'; sleep 5
    printf 'Connection: close\r\nHost: x\r\n\r\n') >&"$late" &

# A client that sends a byte from time to time has no more time than others.
exec {slow}<>"/dev/tcp/127.0.0.1/${address##*:}"
(while printf 'G' >&"$slow"; do sleep 0.3; done) 2>/dev/null &
SECONDS=0

# Many at once, while some clients say nothing and others half of what they want.
for i in 1 2 3 4; do
    exec {silent}<>"/dev/tcp/127.0.0.1/${address##*:}"
    [ "$i" -gt 2 ] || printf 'GET / HT' >&"$silent"
done
descriptors() { find "/proc/$server/fd" -mindepth 1 | wc -l; }
expect 'while others are silent' 200 status_of "$address/"
sleep 0.5
before=$(descriptors)
requests=${QB_TEST_REQUESTS:-1000}
expect 'many requests' "$requests" answered "$address/index.html?[1-$requests]"
sleep 0.5
[ -n "${QB_TEST_LAUNCHER:-}" ] || [ "$(descriptors)" -le "$before" ] || fail "descriptors: $(descriptors), not $before"
timeout 30 cat <&"$slow" >"$work/slow" || true
grep -q '408 Request Timeout' "$work/slow" || fail "a slow client got $(cat "$work/slow") after $SECONDS s"
exec {slow}>&-
expect 'a request that begins late' 2 bash -c "timeout 15 grep -c '^HTTP/1.1 200' <&$late"
expect 'an idle client, which gets no answer more' 1 \
    bash -c "timeout 5 cat <&$idle >$work/idle && grep -c '^HTTP' $work/idle"
stop
expect 'what is said at the end' '' cat "$work/stderr"

mkdir -p "$work/far/d" "$work/shared"
echo far | tee "$work/far/text" "$work/far/d/file" >/dev/null
mkdir "$work/more"
ln -s "$work/far/d" "$site/assets/far"
ln -s "$work/current"/{pages,templates,assets} "$work/far"
echo one >"$work/far/logo.png"
echo "{ title = Site; basedir = \"$work/far\"; texts = { basedir = \"$work/far\"; text = text; }; }" >"$site/site.plist"
printf '{ title = T; logo = logo.png; }\n---\n{{texts.text}}{{image page.logo}}{{> shared/note}}\n' >"$site/pages/text.html"
echo short >"$work/shared/note.html"
ln -s "$work/shared" "$site/templates/shared"
ln -s "$work/far" "$site/templates/far" # where the site is written, too
out=$work/far/out
ln -s site "$work/current"
site=$work/current
start --serve-socket "$work/socket" --watch --statistics --log "$site/log" --log-level 2
printf '{ title = T; }\n---\n<p>changed</p>\n' >"$site/pages/index.html"
expect 'a socket for this user alone' 700 stat -c %a "$work/socket"
wait_for changed curl -s --unix-socket "$work/socket" http://x/
expect 'many requests at a socket' "$requests" answered --unix-socket "$work/socket" "http://x/?[1-$requests]"
echo other >"$work/far/text"
wait_for other curl -s --unix-socket "$work/socket" http://x/text.html
echo two >"$work/far/logo.png"
wait_for "$(echo two | base64)" curl -s --unix-socket "$work/socket" http://x/text.html
echo longer >"$work/shared/note.html"
wait_for longer curl -s --unix-socket "$work/socket" http://x/text.html
echo new >"$work/far/d/file"
wait_for new curl -s --unix-socket "$work/socket" http://x/assets/far/file
echo more >"$work/more/text"
ln -s "$work/more" "$work/far/d/more"
wait_for more ls "$out/assets/far"
echo later >"$work/more/text"
wait_for later curl -s --unix-socket "$work/socket" http://x/assets/far/more/text
chmod 600 "$site/assets/data.bin"
wait_for 600 stat -c %a "$out/assets/data.bin"
mv "$site/log" "$site/old" && sleep 3
lines=$(wc -l <"$site/old")
sleep 2
expect 'a log in the site, renamed, when nothing has changed' "$lines" sh -c "wc -l <$site/old"
! publish --serve-socket "$work/socket" "$site" "$out" 2>/dev/null || fail 'a served socket was taken'
printf 'no head\n' >"$site/pages/index.html"
wait_for 'a page begins with' cat "$work/stderr"
expect 'the site while its source is wrong' '<p>changed</p>' \
    sh -c "curl -s --unix-socket $work/socket http://x/ | grep ."
cp -a "$work/site" "$work/other"
printf '{ title = T; }\n---\n<p>another</p>\n' >"$work/other/pages/index.html"
flock "$out" sleep 3 &
ln -sfn other "$work/current"
wait_for 'Another run is writing' cat "$work/stderr"
wait_for another curl -s --unix-socket "$work/socket" http://x/
mapfile -t objects < <(sed -n 's/^total global count  *: //p' "$work/stderr") # in the pools, at each publication
[ "${objects[-1]}" -lt $((objects[0] + requests / 2)) ] || fail "objects in the pools: ${objects[*]}"
stop
[ ! -e "$work/socket" ] || fail 'the socket is left'

start --serve-socket "$work/socket"
rm "$work/socket"
echo foreign >"$work/socket"
stop
[ -e "$work/socket" ] || fail 'a file in the place of the socket was removed'

# Where descriptors are few, or few can be waited for, clients wait and are not turned away, unless none can be waited for.
emulator=() # other launchers want descriptors themselves
"$program" --version >/dev/null 2>&1 || emulator=("${launcher[@]}")
while read -r limit inherited answered; do
    launcher=(bash -c "ulimit -n $limit; for ((i = 3; i < $inherited; ++i)); do eval \"exec \$i<&0\"; done; exec \"\$@\"" - "${emulator[@]}")
    start --serve 0
    status_of "$address/" >/dev/null # a sanitizer needs a descriptor when it first meets a class
    expect "requests with $inherited of $limit descriptors in use" "$answered" \
        sh -c "curl -s --no-progress-meter -Z --parallel-immediate --parallel-max 50 -H 'Connection: close' -o /dev/null -w '%{http_code}\n' '$address/?[1-200]' | grep -c '^200'"
    stop
done <<'ROWS'
20 0 200
2048 1000 200
2048 1023 0 [1]
ROWS

[ $failures -eq 0 ]
