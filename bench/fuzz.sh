#!/usr/bin/env bash
# Builds one of the smaller fuzz targets with clang (libFuzzer,
# AddressSanitizer, UndefinedBehaviorSanitizer) in build-checked/ and runs it
# for a given time; the receive path has its own script, fuzz-receive.sh.
#   bench/fuzz.sh NAME [SECONDS] [more libFuzzer options]
# NAME is the target without its halvex- and -fuzzer: line-command, ...
# It starts from fuzz/NAME-corpus and fuzz/NAME-regressions when there are; what it learns is kept
# in build-checked/NAME-corpus, and an input that finds a fault goes to
# build-checked/fuzz-findings/ and the exit status is not zero.
set -euo pipefail
cd "$(dirname "$0")/.."
name=${1:?which target? e.g. line-command}
seconds=${2:-30}
shift 2 || shift $#
dir=build-checked
# Fuzzers may run side by side (scripts/fuzz-briefly.sh): one builds at a
# time in the shared tree; HALVEX_FUZZERS_BUILT says they are built already.
mkdir -p "$dir"
if [[ -z "${HALVEX_FUZZERS_BUILT:-}" ]]; then
    flock "$dir/.build-lock" scripts/build-checked.sh "halvex-$name-fuzzer"
fi
mkdir -p "$dir/$name-corpus" "$dir/fuzz-findings"
corpora=("$dir/$name-corpus")
for kept in "fuzz/$name-corpus" "fuzz/$name-regressions"; do
    if [[ -d "$kept" ]]; then
        corpora+=("$kept")
    fi
done
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS="detect_leaks=0:malloc_context_size=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
exec "$dir/fuzz/halvex-$name-fuzzer" -max_total_time="$seconds" -close_fd_mask=2 \
    -detect_leaks=0 -print_final_stats=1 -artifact_prefix="$dir/fuzz-findings/$name-" "$@" \
    "${corpora[@]}"
