#!/usr/bin/env bash
# Sets up, builds and starts the console. With no arguments it runs against
# the virtual unit; pass --real to use the port chosen in the Port menu.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh build
if [[ "${1:-}" == "--real" ]]; then
    shift
    exec build/app/halvex "$@"
fi
exec build/app/halvex --simulate "$@"
