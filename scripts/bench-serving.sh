#!/bin/bash
# Counts the requests a second that publish answers beside a small server of Debian's, three times in turn: 10 000
# requests over 50 connections. Installs what is missing (Debian).
#   scripts/bench-serving.sh [REQUESTS]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}" webfs apache2-utils
qb_build release

requests=${1:-10000}
out=build/bench-serving
build/release/bin/publish --quiet --serve 0 examples/publish/handbook $out >$out.log &
trap 'kill $(jobs -p) 2>/dev/null' EXIT
webfsd -F -4 -i 127.0.0.1 -p 18080 -r "$PWD/$out" -c 64 -l /dev/null &
until ours=$(sed -n 's/^Serving .* at //p' $out.log) && [ -n "$ours" ]; do sleep 0.1; done
until exec 3<>/dev/tcp/127.0.0.1/18080; do sleep 0.1; done 2>/dev/null

rate() { ab -q -k -c 50 -n "$requests" "$1/index.html" 2>&1 | awk '/^(Failed|Non-2xx)/ && $3 != 0 {print > "/dev/stderr"} /^Requests per/ {print $4}'; }

for _ in 1 2 3; do
    publish=$(rate "$ours")
    peer=$(rate http://127.0.0.1:18080)
    awk -v a="$publish" -v b="$peer" 'BEGIN {printf "publish %8.0f/s   webfsd %8.0f/s   ratio %.2f\n", a, b, a / b}'
done
