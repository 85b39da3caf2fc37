#!/usr/bin/env bash
# Builds the recording fuzzer with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs it for a given time:
# pcapng files read as the Line Log and halvex-sim --replay read them.
#   bench/fuzz-recording.sh [SECONDS] [more libFuzzer options, e.g. -runs=N]
# Starts from fuzz/recording-corpus and fuzz/recording-regressions; what it
# learns is kept in build-fuzz/recording-corpus, and a file that finds a
# fault is written to build-fuzz/fuzz-findings/ (then the exit status is not
# zero). Needs scripts/setup.sh --with-fuzzing.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
dir=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DHALVEX_FUZZ=ON -DHALVEX_TESTS=OFF >/dev/null
cmake --build "$dir" -j"$(nproc)" --target halvex-recording-fuzzer
mkdir -p "$dir/recording-corpus" "$dir/fuzz-findings"
export ASAN_OPTIONS="detect_leaks=0:malloc_context_size=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
exec "$dir/fuzz/halvex-recording-fuzzer" -max_total_time="$seconds" -max_len=4096 \
    -print_final_stats=1 -artifact_prefix="$dir/fuzz-findings/" "$@" \
    "$dir/recording-corpus" fuzz/recording-corpus fuzz/recording-regressions
