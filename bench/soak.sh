#!/usr/bin/env bash
# A long run of the console against halvex-sim on a pseudo-terminal whose line
# is moved through noise bursts, corrupted and dropped replies, replies at
# 9600 baud and a silent unit, with the cable pulled every few minutes and a
# scripted operator clicking moves, preset saves and tour loads. Prints a
# table of what became of it; fails when a device was lost that never went
# away, a command was lost without a report or a wait never ended.
#
#   bench/soak.sh [MINUTES] [BUILD_DIR]     (default 30 minutes, build/)
#
# The console's own messages (range faults from the random replies of the
# noise bursts, the lost and found port) go to BUILD_DIR/soak.log.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-30}
build=${2:-build}
if [[ ! -x "$build/bench/halvex-soak" ]]; then
    scripts/build.sh "$build"
fi
log="$build/soak.log"
echo "soak: $minutes minutes, console messages in $log" >&2
"$build/bench/halvex-soak" "$minutes" 2>"$log"
