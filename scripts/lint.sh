#!/bin/bash
# All style checks. Installs the tools that are missing (Debian).
#   --no-tidy   without clang-tidy, which takes most of the time
#   --changed   clang-tidy only on sources that differ from the last commit
set -uo pipefail
cd "$(dirname "$(readlink -f "$0")")/.." || exit
. scripts/lib/packages.sh

tidy=all
for option in "$@"; do
    case $option in
        --no-tidy) tidy=none ;;
        --changed) tidy=changed ;;
        *) sed -n '2,4p' "$0" >&2; exit 2 ;;
    esac
done

qb_need_packages "${QB_BUILD_PACKAGES[@]}" "${QB_TEST_PACKAGES[@]}" clang-format clang-tidy shellcheck || exit 1

mapfile -t code < <(find include src tests bench examples fuzz -name '*.cpp' -o -name '*.h' | sort)
mapfile -t shells < <(find scripts tests .ci -name '*.sh' -o -path .ci/run | sort)
mapfile -t texts < <(find . -path ./build -prune -o -path ./.git -prune -o -type f -print | grep -Iv '/seeds/' | sort)
failures=0

# check TITLE COMMAND...: the command prints what is wrong and fails.
check() {
    local title=$1 start=$SECONDS
    shift
    if "$@"; then
        echo "ok      $title ($((SECONDS - start)) s)"
    else
        echo "FAILED  $title"
        failures=$((failures + 1))
    fi
}

# Fails when a line of the given files matches the pattern.
no_line_matches() {
    local pattern=$1
    shift
    ! grep -InE "$pattern" "$@"
}

code_is_formatted() {
    printf '%s\0' "${code[@]}" | xargs -0 -P2 -n40 clang-format --dry-run -Werror
}

headers_compile_alone() {
    find include src -name '*.h' -print0 |
        xargs -0 -P2 -I{} g++ -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror \
            -Iinclude -Isrc -x c++ {}
}

# A header's guard is its path, so that two headers never share one.
guards_follow_paths() {
    local header guard status=0
    while read -r header; do
        guard=$(tr 'a-z/.' 'A-Z__' <<<"${header#include/}")
        grep -q "^#ifndef $guard\$" "$header" || { echo "$header: its guard should be $guard"; status=1; }
    done < <(find include -name '*.h')
    return $status
}

no_file_is_long() {
    wc -l "${code[@]}" | awk '$2 != "total" && $1 > 600 {print $2 ": " $1 " lines; split it by theme"; bad = 1} END {exit bad}'
}

tidy_is_clean() {
    cmake --preset default >/dev/null || return 1
    local sources=() source
    for source in "${code[@]}"; do
        [[ $source == src/*.cpp || $source == examples/*.cpp ]] || continue
        [ $tidy = all ] || [ -n "$(git status --porcelain -- "$source")" ] || continue
        sources+=("$source")
    done
    [ ${#sources[@]} -eq 0 ] && return 0
    printf '%s\0' "${sources[@]}" |
        xargs -0 -P2 -n1 clang-tidy --quiet -p build/default 2>&1 |
        { grep -vE '^[0-9]+ warnings? (generated|treated as errors?)|^Suppressed ' || true; }
}

check 'clang-format' code_is_formatted
check 'shellcheck' shellcheck -x "${shells[@]}"
check 'no leftovers' no_line_matches '\b(TO''DO|FIX''ME)\b' "${texts[@]}"
check 'no path of one machine' no_line_matches '/(ho''me|Us''ers)/[a-z]|/ro''ot/' "${texts[@]}"
check 'no trailing blanks' no_line_matches '[[:blank:]]+$' "${code[@]}" "${shells[@]}"
check 'each suppression gives its check and reason' no_line_matches 'NOLINT[A-Z]*($|[^A-Z(]|\([^)]*\)[[:blank:]]*$)' "${code[@]}"
check 'files of at most 600 lines' no_file_is_long
check 'include guards' guards_follow_paths
check 'headers compile alone' headers_compile_alone
[ $tidy = none ] || check 'clang-tidy' tidy_is_clean

[ $failures -eq 0 ]
