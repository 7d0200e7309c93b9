#!/bin/bash
# Runs the tests with each compiler, word size, language and time zone, and prints a table. Installs what is missing.
set -uo pipefail
cd "$(dirname "$(readlink -f "$0")")/.." || exit
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}" "${QB_TEST_PACKAGES[@]}" clang || exit 1
qb_need_packages "${QB_TEST_TOOLS[@]}" || true
qb_prepare_32_bit || exit 1
launcher_32=$launcher

qb_prepare_locale || exit 1
unset LC_ALL LANGUAGE

row='%-8s %-5s %-12s %-15s %s\n'
table=$(mktemp)
trap 'rm -f "$table"' EXIT
failures=0

# One row: the build's directory, then the four things that vary.
run_tests() {
    local directory=$1 compiler=$2 bits=$3 lang=$4 zone=$5 result
    LANG=$lang TZ=$zone ctest --test-dir "$directory" -j2 --output-on-failure >"$directory/matrix.log" 2>&1 ||
        { failures=$((failures + 1)); tail -n 40 "$directory/matrix.log"; }
    result=$(grep -E '^[0-9]+% tests passed' "$directory/matrix.log")
    # shellcheck disable=SC2059
    printf "$row" "$compiler" "$bits" "$lang" "$zone" "${result:-did not run}" | tee -a "$table"
}

for compiler in g++ clang++; do
    for bits in 64 32; do
        directory=build/matrix-$compiler-$bits
        launcher=
        [ $bits = 32 ] && launcher=$launcher_32
        if ! { cmake --preset default -B "$directory" -DCMAKE_CXX_COMPILER=$compiler -DCMAKE_CXX_FLAGS=-m$bits \
            -DQB_TEST_LAUNCHER="$launcher" >/dev/null && cmake --build "$directory"; }; then
            # shellcheck disable=SC2059
            printf "$row" $compiler $bits - - 'does not build' | tee -a "$table"
            failures=$((failures + 1))
            continue
        fi
        for lang in C de_DE.UTF-8; do
            for zone in UTC Asia/Kathmandu; do
                run_tests "$directory" $compiler $bits $lang $zone
            done
        done
    done
done

echo
# shellcheck disable=SC2059
printf "$row" compiler bits LANG TZ tests
cat "$table"
[ $failures -eq 0 ]
