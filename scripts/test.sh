#!/usr/bin/env bash
# Sets up, builds and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
# The benchmarks are left out: the suite runs none of them.
scripts/build.sh build -DHALVEX_BENCHMARKS=OFF
export QT_QPA_PLATFORM=offscreen
cd build
ctest --output-on-failure --timeout 300 -j"$(nproc)"
