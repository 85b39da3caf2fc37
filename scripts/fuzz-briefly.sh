#!/usr/bin/env bash
# Runs every fuzzer briefly, two at a time (each fuzzer uses one core), as CI
# does after the sanitizer suite. Each fuzzer's output goes to
# build-checked/fuzz-logs/NAME.log; a fuzzer that finds something fails the
# script and its log's end is printed. Usage: scripts/fuzz-briefly.sh
set -euo pipefail
cd "$(dirname "$0")/.."
logs=build-checked/fuzz-logs
mkdir -p "$logs"

# Two lanes of about half a minute of fuzzing each: NAME SECONDS [options].
lane_one=(
    "receive 14"
    "recording 7 -max_len=4096"
    "onvif 7 -max_len=4096"
    "video-source 5 -max_len=512"
)
lane_two=(
    "telnet 7 -max_len=512"
    "settings 7 -max_len=8192 -dict=fuzz/settings.dict"
    "visca 6 -max_len=128"
    "pelco-d 6 -max_len=512"
    "line-command 4"
    "input-mapping 5 -max_len=2048"
)

# Built once here; each run then starts at once.
targets=()
for entry in "${lane_one[@]}" "${lane_two[@]}"; do
    targets+=("halvex-${entry%% *}-fuzzer")
done
scripts/build-checked.sh "${targets[@]}" >"$logs/build.log" 2>&1 || {
    tail -n 40 "$logs/build.log"
    exit 1
}
export HALVEX_FUZZERS_BUILT=1

fuzz_one() {
    local name=$1 seconds=$2
    shift 2
    local log="$logs/$name.log" started=$SECONDS
    if [[ $name == receive ]]; then
        bench/fuzz-receive.sh "$seconds" "$@" >"$log" 2>&1 || return 1
    else
        bench/fuzz.sh "$name" "$seconds" "$@" >"$log" 2>&1 || return 1
    fi
    local runs
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    echo "   $name: ${runs:-?} inputs in $((SECONDS - started)) s"
}

run_lane() {
    local entry
    for entry in "$@"; do
        # shellcheck disable=SC2086 # the entry is a name, seconds and options
        if ! fuzz_one $entry; then
            local name=${entry%% *}
            echo "!! the $name fuzzer failed; the end of $logs/$name.log:"
            tail -n 40 "$logs/$name.log"
            return 1
        fi
    done
}

run_lane "${lane_one[@]}" &
first=$!
run_lane "${lane_two[@]}" &
second=$!
failed=0
wait "$first" || failed=1
wait "$second" || failed=1
exit "$failed"
