#!/bin/bash
# Builds the library in release mode and publishes its handbook with it. Installs what is missing (Debian).
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/lib/packages.sh

qb_need_packages "${QB_BUILD_PACKAGES[@]}"
qb_build release

result=$PWD/build/release/handbook
build/release/bin/publish examples/publish/handbook "$result"
echo "The handbook is ready: $result/index.html"
