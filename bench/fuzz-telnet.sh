#!/usr/bin/env bash
# Builds the fuzzer for what a device server's RFC 2217 port sends (telnet
# and the com port session) with clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer in build-fuzz/, and runs it for a given time.
#   bench/fuzz-telnet.sh [SECONDS] [more libFuzzer options, e.g. -runs=N]
# Starts from fuzz/telnet-corpus; what it learns is kept in
# build-fuzz/telnet-corpus, and an input that finds a fault is written to
# build-fuzz/telnet-findings/ (the exit status is then not zero). Needs
# scripts/setup.sh --with-fuzzing.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
dir=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DHALVEX_FUZZ=ON -DHALVEX_TESTS=OFF >/dev/null
cmake --build "$dir" -j"$(nproc)" --target halvex-telnet-fuzzer
mkdir -p "$dir/telnet-corpus" "$dir/telnet-findings"
exec "$dir/fuzz/halvex-telnet-fuzzer" -max_total_time="$seconds" -max_len=512 \
    -print_final_stats=1 -artifact_prefix="$dir/telnet-findings/" "$@" \
    "$dir/telnet-corpus" fuzz/telnet-corpus
