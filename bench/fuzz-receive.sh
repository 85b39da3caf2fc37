#!/usr/bin/env bash
# Builds the receive-path fuzzer with clang (libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer) in build-checked/ and runs it for a given time.
#   bench/fuzz-receive.sh [SECONDS] [more libFuzzer options, e.g. -runs=N]
# SECONDS 0 runs until -runs=N inputs are done.
# Starts from fuzz/corpus and fuzz/regressions; what it learns on the way is
# kept in build-checked/fuzz-corpus, and any input that finds a fault is written
# to build-checked/fuzz-findings/ (then the exit status is not zero). Needs
# scripts/setup.sh --with-fuzzing.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
dir=build-checked
# Fuzzers may run side by side (scripts/fuzz-briefly.sh): one builds at a
# time in the shared tree; HALVEX_FUZZERS_BUILT says they are built already.
mkdir -p "$dir"
if [[ -z "${HALVEX_FUZZERS_BUILT:-}" ]]; then
    flock "$dir/.build-lock" scripts/build-checked.sh halvex-receive-fuzzer
fi
mkdir -p "$dir/fuzz-corpus" "$dir/fuzz-findings"
export QT_QPA_PLATFORM=offscreen
# Qt keeps caches to the end of the program; they are not our leaks.
# Recording where every block was allocated took a fifth of the time, and the
# console allocates from many places; rerun a finding's input with
# ASAN_OPTIONS=malloc_context_size=30 to see where a bad block came from.
export ASAN_OPTIONS="detect_leaks=0:malloc_context_size=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
# -close_fd_mask=2 silences the status-bar lines that range faults print;
# libFuzzer and the sanitizers report on their own copy of stderr.
exec "$dir/fuzz/halvex-receive-fuzzer" -max_total_time="$seconds" -max_len=1024 \
    -close_fd_mask=2 -detect_leaks=0 -print_final_stats=1 \
    -artifact_prefix="$dir/fuzz-findings/" "$@" \
    "$dir/fuzz-corpus" fuzz/corpus fuzz/regressions
