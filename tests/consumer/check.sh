#!/bin/bash
# Builds clients against an installed tree and runs them.
#   tests/consumer/check.sh cmake|pkg-config|readme PREFIX WORK-DIRECTORY
# CXX, CXXFLAGS, CMAKE_GENERATOR and QB_TEST_LAUNCHER are those of the library's own build: same word size, same sanitizers.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
check=$1 prefix=$2 work=$3
read -ra flags <<<"${CXXFLAGS:-}"
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
rm -rf "$work"
mkdir -p "$work"

# Every client prints what it should, whatever it was built with.
run_client() {
    "${launcher[@]}" "$1" | diff -u <(printf '%s\n' '(' '  "guest Ada"' ')' 'a stream' \
        "[100039] The file '/no/such/file' does not exist.") -
}

# Sets `shared` and `static` to the options that a client needs for either library.
ask_pkg_config() {
    local pc
    pc=$(find "$prefix" -name qbfoundation.pc)
    export PKG_CONFIG_PATH=${pc%/*}
    read -ra shared <<<"$(pkg-config --cflags --libs qbfoundation)"
    shared+=("-Wl,-rpath,$(pkg-config --variable=libdir qbfoundation)")
    read -ra static <<<"$(pkg-config --cflags qbfoundation) $(pkg-config --variable=archive qbfoundation)"
}

compile() {
    local source=$1 program=$2
    shift 2
    "${CXX:-c++}" -std=c++20 "${flags[@]}" "$source" -o "$program" "$@"
}

check_cmake() {
    cmake -S "$here" -B "$work" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$work"
    run_client "$work/client-QBFoundation"
    run_client "$work/client-QBFoundationStatic"
}

check_pkg_config() {
    ask_pkg_config
    compile "$here/main.cpp" "$work/shared" "${shared[@]}"
    run_client "$work/shared"
    compile "$here/main.cpp" "$work/static" "${static[@]}"
    run_client "$work/static"
}

# The README's C++ example prints the block of plain text that follows it.
check_readme() {
    local readme=$here/../../README.md
    awk '/^```cpp$/ && !seen {seen = on = 1; next} /^```$/ {on = 0} on' "$readme" >"$work/example.cpp"
    awk '/^```cpp$/ {seen = 1} /^```text$/ && seen && !done {done = on = 1; next} /^```$/ {on = 0} on' \
        "$readme" >"$work/expected.txt"
    [ -s "$work/example.cpp" ] && [ -s "$work/expected.txt" ]
    ask_pkg_config
    compile "$work/example.cpp" "$work/example" "${shared[@]}"
    "${launcher[@]}" "$work/example" | diff -u "$work/expected.txt" -
}

case $check in
    cmake) check_cmake ;;
    pkg-config) check_pkg_config ;;
    readme) check_readme ;;
    *) exit 2 ;;
esac
