#!/usr/bin/env bash
# Configures and builds into the folder given (default: build).
# Extra arguments go to CMake, e.g. -DHALVEX_SANITIZE=ON.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$dir" -j"$(nproc)"
