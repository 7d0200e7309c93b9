#!/bin/bash
# Measures the library against its peers and prints a table. Installs what is missing (Debian).
#   scripts/bench.sh [REGULAR EXPRESSION OF BENCHMARK NAMES]
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}" pkg-config python3 libbenchmark-dev \
    libabsl-dev libboost1.81-dev qt6-base-dev libglib2.0-dev nlohmann-json3-dev rapidjson-dev libspdlog-dev libssl-dev libicu-dev locales
qb_prepare_locale
qb_build bench

LC_ALL=C python3 scripts/lib/bench-table.py build/bench/bin/qb_bench "${1:-.}"
