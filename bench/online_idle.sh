#!/usr/bin/env bash
# Starts the console against its built-in virtual unit, offscreen, connects,
# and reports how long coming online took and what an idle online console
# costs: CPU share of one core and resident memory over a sampling window.
#
#   bench/online_idle.sh [BUILD_DIR] [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
seconds=${2:-30}
binary="$build/app/halvex"
[[ -x "$binary" ]] || binary="$build/halvex"
[[ -x "$binary" ]] || { echo "no halvex binary under $build; run scripts/build.sh first" >&2; exit 1; }

work=$(mktemp -d)
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT
log="$work/halvex.log"
(cd "$work" && QT_QPA_PLATFORM=offscreen exec "$OLDPWD/$binary" --simulate --connect) 2>"$log" &
pid=$!

# Wait for the console's own word that it is online (60 s at most).
for _ in $(seq 600); do
    grep -q "halvex: online after" "$log" && break
    grep -q "halvex: no connection" "$log" && { cat "$log"; exit 1; }
    sleep 0.1
done
line=$(grep "halvex: online after" "$log") || { echo "never came online" >&2; cat "$log"; exit 1; }
frames=$(sed -E 's/.*after ([0-9]+) frames.*/\1/' <<<"$line")
online_ms=$(sed -E 's/.* in ([0-9]+) ms.*/\1/' <<<"$line")
sequence_cpu_ms=$(sed -E 's/.*CPU ([0-9]+) ms.*/\1/' <<<"$line")

ticks=$(getconf CLK_TCK)
cpu_ticks() { awk '{print $14 + $15}' "/proc/$pid/stat"; }
start_ticks=$(cpu_ticks)
start_ns=$(date +%s%N)
sleep "$seconds"
end_ticks=$(cpu_ticks)
end_ns=$(date +%s%N)
peak_kb=$(awk '/VmHWM/ {print $2}' "/proc/$pid/status")
rss_kb=$(awk '/VmRSS/ {print $2}' "/proc/$pid/status")

awk -v f="$frames" -v ms="$online_ms" -v seqcpu="$sequence_cpu_ms" -v t0="$start_ticks" -v t1="$end_ticks" -v hz="$ticks" \
    -v n0="$start_ns" -v n1="$end_ns" -v peak="$peak_kb" -v rss="$rss_kb" 'BEGIN {
    wall = (n1 - n0) / 1e9
    cpu = (t1 - t0) / hz
    printf "time to online:        %.2f s (floor %.1f s: %d frames x 100 ms)\n", ms / 1000, f * 0.1, f
    printf "CPU while connecting:  %.2f %% of one core (32 preset requests and every page read, each waiting for its reply)\n", 100 * seqcpu / ms
    printf "idle CPU while online: %.2f %% of one core over %.0f s (target < 1 %%)\n", 100 * cpu / wall, wall
    printf "resident memory:       %.1f MB now, %.1f MB peak (target < 80 MB)\n", rss / 1024, peak / 1024
}'

# The preset reload, measured inside one process against the same baseline.
if [[ -x "$build/tools/halvex-reload-bench" ]]; then
    QT_QPA_PLATFORM=offscreen "$build/tools/halvex-reload-bench" 3 2>/dev/null
fi
