#!/usr/bin/env bash
# Configures and builds into the folder given (default: build).
# Extra arguments go to CMake, e.g. -DHALVEX_SANITIZE=ON. Warnings are errors
# here (and so in CI); a plain cmake build leaves them warnings.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/disk-space.sh
dir=${1:-build}
shift || true
# -g1: line tables and function names, enough for a backtrace; full debug
# information took half of each file's compile.
# Ninja for a new folder: it starts the next file as soon as a core is free,
# where make first works through each target's dependencies. A folder made
# before keeps its generator.
generator=()
if [[ ! -f "$dir/CMakeCache.txt" ]] && command -v ninja >/dev/null; then
    generator=(-G Ninja)
fi
cmake -S . -B "$dir" "${generator[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG" -DHALVEX_WERROR=ON -DHALVEX_BENCHMARKS=ON \
    "$@" >/dev/null
build_in "$dir" -j"$(nproc)"
