#!/bin/bash
# Compares the dates of two centuries in all zones of the system's database with the command date; one preset may be named.
#   scripts/dates.sh [PRESET]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

preset=${1:-default}
qb_need_packages "${QB_BUILD_PACKAGES[@]}" "${QB_TEST_PACKAGES[@]}"
launcher=
options=()
if [ "$preset" = i386 ]; then
    qb_prepare_32_bit
    options=("-DQB_TEST_LAUNCHER=$launcher")
fi
qb_build "$preset" "${options[@]}"
IFS=';' read -ra command <<<"${launcher:+$launcher;}build/$preset/bin/qb_dates"
(cd /usr/share/zoneinfo && grep -rl --binary-files=text --exclude-dir=posix --exclude-dir=right '^TZif' . | cut -c 3- |
    grep -vx 'localtime\|posixrules\|leapseconds' | sort) |
    xargs "${command[@]}"
