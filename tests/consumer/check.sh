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

example=$here/../../examples/publish/handbook/examples/objects # with a class of its own

# run PROGRAM EXPECTED-OUTPUT
run() { "${launcher[@]}" "$1" | diff -u "$2" -; }

# compile_and_run SOURCE EXPECTED-OUTPUT: with either library.
compile_and_run() {
    local pc shared static
    pc=$(find "$prefix" -name qbfoundation.pc)
    export PKG_CONFIG_PATH=${pc%/*}
    # It marks what the shell would take apart.
    eval "shared=($(pkg-config --cflags --libs qbfoundation))"
    eval "static=($(pkg-config --cflags qbfoundation) $(pkg-config --variable=archive qbfoundation))"
    "${CXX:-c++}" -std=c++20 "${flags[@]}" "$1" -o "$work/shared" "${shared[@]}" \
        "-Wl,-rpath,$(pkg-config --variable=libdir qbfoundation)"
    "${CXX:-c++}" -std=c++20 "${flags[@]}" "$1" -o "$work/static" "${static[@]}"
    run "$work/shared" "$2"
    run "$work/static" "$2"
}

check_cmake() {
    cmake -S "$here" -B "$work" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$work"
    run "$work/client-QBFoundation" "$example.output"
    run "$work/client-QBFoundationStatic" "$example.output"
}

# The README's C++ example prints the block of plain text that follows it.
check_readme() {
    local readme=$here/../../README.md
    awk '/^```cpp$/ && !seen {seen = on = 1; next} /^```$/ {on = 0} on' "$readme" >"$work/example.cpp"
    awk '/^```cpp$/ {seen = 1} /^```text$/ && seen && !done {done = on = 1; next} /^```$/ {on = 0} on' \
        "$readme" >"$work/expected.txt"
    [ -s "$work/example.cpp" ] && [ -s "$work/expected.txt" ]
    compile_and_run "$work/example.cpp" "$work/expected.txt"
}

case $check in
    cmake) check_cmake ;;
    pkg-config)
        compile_and_run "$example.cpp" "$example.output"
        # Where objects would be laid out otherwise, on 32 bits, a client doesn't compile.
        [[ ${flags[*]} != *-m32* ]] || ! "${CXX:-c++}" -std=c++20 "${flags[@]}" -malign-double -fsyntax-only \
            -I"$prefix/include" "$example.cpp" 2>"$work/errors"
        ;;
    readme) check_readme ;;
    *) exit 2 ;;
esac
