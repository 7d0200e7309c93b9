#!/bin/bash
# Starts programs in 10000 cycles and connects sockets in 1000000 (or as many as are named), and fails when memory,
# descriptors or children are left over.
#   scripts/soak.sh [CYCLES OF PROCESSES [CYCLES OF SOCKETS]]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}" "${QB_TEST_PACKAGES[@]}"
qb_build default
build/default/bin/qb_soak processes "${1:-10000}"
build/default/bin/qb_soak sockets "${2:-1000000}"
