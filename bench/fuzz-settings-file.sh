#!/usr/bin/env bash
# Builds the unit settings file fuzzer with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs it for a given time.
#   bench/fuzz-settings-file.sh [SECONDS] [more libFuzzer options, e.g. -runs=N]
# Starts from fuzz/settings-corpus (files saved from each controller type)
# and fuzz/settings-regressions; what it learns is kept in
# build-fuzz/settings-corpus, and an input that finds a fault is written to
# build-fuzz/fuzz-findings/ (then the exit status is not zero). Needs
# scripts/setup.sh --with-fuzzing.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
dir=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DHALVEX_FUZZ=ON -DHALVEX_TESTS=OFF >/dev/null
cmake --build "$dir" -j"$(nproc)" --target halvex-settings-fuzzer
mkdir -p "$dir/settings-corpus" "$dir/fuzz-findings"
export ASAN_OPTIONS="detect_leaks=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
# The dictionary holds the words of the format, so that mutations reach past
# the first line.
exec "$dir/fuzz/halvex-settings-fuzzer" -max_total_time="$seconds" -max_len=8192 \
    -dict=fuzz/settings.dict -print_final_stats=1 \
    -artifact_prefix="$dir/fuzz-findings/" "$@" \
    "$dir/settings-corpus" fuzz/settings-corpus fuzz/settings-regressions
