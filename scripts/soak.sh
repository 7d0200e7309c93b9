#!/bin/bash
# Starts programs in 10000 cycles (or as many as are named), and fails when memory, descriptors or children are left over.
#   scripts/soak.sh [CYCLES]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}" "${QB_TEST_PACKAGES[@]}"
qb_build default
build/default/bin/qb_soak "${1:-10000}"
