#!/bin/bash
# Runs an example of the handbook and compares what it prints with what the book says.
#   tests/handbook/check.sh PROGRAM EXPECTED-OUTPUT
set -euo pipefail
read -ra launcher <<<"${QB_TEST_LAUNCHER:-}"
LC_ALL=C.UTF-8 "${launcher[@]}" "$1" 2>/dev/null | diff -u "$2" -
