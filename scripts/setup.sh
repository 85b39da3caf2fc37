#!/usr/bin/env bash
# Installs what building and testing the console needs on Debian 12, if it is
# missing. Safe to run again. Uses sudo when not run as root.
set -euo pipefail

packages=(cmake g++ make qt6-base-dev qt6-serialport-dev libgtest-dev libhamlib-utils)
if [[ "${1:-}" == "--with-display" ]]; then
    packages+=(xvfb)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if ((${#missing[@]} > 0)); then
    as_root=()
    if [[ $(id -u) -ne 0 ]]; then
        as_root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi
