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

results=build/bench/results.json
LC_ALL=C build/bench/bin/qb_bench --benchmark_filter="${1:-.}" --benchmark_repetitions=3 \
    --benchmark_report_aggregates_only=true --benchmark_out_format=json --benchmark_out="$results" >/dev/null
python3 scripts/lib/bench-table.py "$results"
