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
# A pulled unit leaves its link pointing at a pseudo-terminal number that
# any other program on the machine (a test suite, a terminal) may be given
# next; the console would then open that program's terminal as the unit coming
# back. A real adapter's device and by-id link go away with it. So the run
# gets pseudo-terminals of its own where it may mount them (as root), and
# says so where it may not.
if unshare -m true 2>/dev/null; then
    exec unshare -m bash -c '
        mount -t devpts -o newinstance,ptmxmode=0666,mode=620 devpts /dev/pts &&
        mount --bind /dev/pts/ptmx /dev/ptmx &&
        exec "$0" "$1" 2>"$2"' "$build/bench/halvex-soak" "$minutes" "$log"
fi
echo "soak: pseudo-terminals shared with the rest of the machine" >&2
"$build/bench/halvex-soak" "$minutes" 2>"$log"
