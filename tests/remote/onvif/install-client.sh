#!/bin/sh
# Installs the npm "onvif" client (the version the tests were written
# against) into $1 unless it is there already.
set -e
dir=$1
if [ -f "$dir/node_modules/onvif/package.json" ]; then
    exit 0
fi
mkdir -p "$dir"
cd "$dir"
npm install --no-audit --no-fund --no-package-lock --no-save onvif@0.8.3
