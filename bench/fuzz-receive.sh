#!/usr/bin/env bash
# Builds the receive-path fuzzer with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in build-fuzz/ and runs it for a given time.
#   bench/fuzz-receive.sh [SECONDS] [more libFuzzer options, e.g. -runs=N]
# Starts from fuzz/corpus and fuzz/regressions; what it learns on the way is
# kept in build-fuzz/fuzz-corpus, and any input that finds a fault is written
# to build-fuzz/fuzz-findings/ (then the exit status is not zero). Needs
# scripts/setup.sh --with-fuzzing.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
dir=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DHALVEX_FUZZ=ON -DHALVEX_TESTS=OFF >/dev/null
cmake --build "$dir" -j"$(nproc)" --target halvex-receive-fuzzer
mkdir -p "$dir/fuzz-corpus" "$dir/fuzz-findings"
export QT_QPA_PLATFORM=offscreen
# Qt keeps caches to the end of the program; they are not our leaks.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
# -close_fd_mask=2 silences the status-bar lines that range faults print;
# libFuzzer and the sanitizers report on their own copy of stderr.
exec "$dir/fuzz/halvex-receive-fuzzer" -max_total_time="$seconds" -max_len=1024 \
    -close_fd_mask=2 -detect_leaks=0 -print_final_stats=1 \
    -artifact_prefix="$dir/fuzz-findings/" "$@" \
    "$dir/fuzz-corpus" fuzz/corpus fuzz/regressions
