#!/usr/bin/env bash
# What the Line Log costs: CPU with its window open against the same console
# with it closed, at the line's own pace and in a burst of 200 frames a
# second, whether it keeps up, and a full ring's memory and filter time.
#
#   bench/line_log.sh [BUILD_DIR] [SECONDS]     (SECONDS per measurement, default 20)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
seconds=${2:-20}
binary="$build/tools/halvex-line-log-bench"
[[ -x "$binary" ]] || { echo "no $binary; run scripts/build.sh first" >&2; exit 1; }
QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "$binary" "$seconds" 2>/dev/null
