#!/bin/bash
# Runs an example of the handbook and compares what it prints with what the book says.
#   tests/handbook/check.sh PROGRAM EXPECTED-OUTPUT
# A file beside the output, with the extension input, is the example's standard input.
set -euo pipefail
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
[ ! -e "${2%.output}.input" ] || exec <"${2%.output}.input"
LC_ALL=C.UTF-8 "${launcher[@]}" "$1" 2>/dev/null | diff -u "$2" -
