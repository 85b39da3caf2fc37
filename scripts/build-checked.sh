#!/usr/bin/env bash
# The checked build, in build-checked/: clang with AddressSanitizer and
# UndefinedBehaviorSanitizer, the suite and the libFuzzer targets in one
# tree, warnings as errors. Builds the targets named, or everything.
#   scripts/build-checked.sh [TARGET...]
# Needs scripts/setup.sh --with-fuzzing (clang and its runtimes).
# -O1 and line tables only: a sanitizer's report still names the file and
# line, and the build and the suite both take less time than at -O0 or -O2.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/disk-space.sh
dir=build-checked
# Ninja for a new folder, as in scripts/build.sh.
generator=()
if [[ ! -f "$dir/CMakeCache.txt" ]] && command -v ninja >/dev/null; then
    generator=(-G Ninja)
fi
CC=clang CXX=clang++ cmake -S . -B "$dir" "${generator[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
    -DHALVEX_SANITIZE=ON -DHALVEX_FUZZ=ON -DHALVEX_BENCHMARKS=OFF -DHALVEX_SCREENSHOTS=OFF -DHALVEX_WERROR=ON >/dev/null
targets=()
for target in "$@"; do
    targets+=(--target "$target")
done
build_in "$dir" -j"$(nproc)" "${targets[@]}"
