#!/bin/bash
# Builds the library and runs all its tests; a preset may be named: default, asan, i386, valgrind.
# Installs what is missing (Debian).
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

preset=${1:-default}
options=()
qb_need_packages "${QB_BUILD_PACKAGES[@]}" "${QB_TEST_PACKAGES[@]}"
qb_need_packages "${QB_TEST_TOOLS[@]}" || true
case $preset in
    i386)
        qb_prepare_32_bit
        options=("-DQB_TEST_LAUNCHER=$launcher")
        ;;
    valgrind) qb_need_packages valgrind ;;
esac

qb_build "$preset" "${options[@]}"
ctest --preset "$preset"
