#!/usr/bin/env bash
# Installs what building and testing the console needs on Debian 12, if it is
# missing. Safe to run again. Uses sudo when not run as root.
#   --with-display    also a virtual X server (xvfb)
#   --with-packaging  also what building and checking the .deb needs
#   --with-fuzzing    also clang and its sanitizer and libFuzzer runtimes
#                     (scripts/build-checked.sh, bench/fuzz.sh)
#   --with-more-fonts also a second monospace family (CI: the kept pictures
#                     must not change with the fonts a machine has)
set -euo pipefail

# tshark: the suite opens recordings of the line with it and the dissector;
# ser2net: the suite reaches the virtual unit through a device server;
# libsdl2-dev: game controllers and joysticks (its virtual devices in the suite);
# python3: the check that no sender writes the protocol as numbers;
# qcoro-qt6-dev: waits are coroutines on the one event loop (its task type,
# all in headers: nothing of it is needed at run time);
# fonts-dejavu-core: the fonts the suite and the screenshot tool draw in,
# whatever other fonts the machine has (tools/picture_fonts.h);
# ccache: a rebuild reuses what an earlier build compiled; ninja-build: new
# build folders build with Ninja; lld: the fastest linker;
# GStreamer and its RTSP server: the console's live video (network sources,
# decoders from libav, Matroska recordings); halvex-sim --video encodes and
# serves the unit's video outputs (openh264enc is in plugins-bad);
# pkg-config: CMake finds GStreamer through it.
packages=(cmake g++ make ninja-build lld qt6-base-dev qt6-serialport-dev libsdl2-dev libgtest-dev libhamlib-utils
          ser2net tshark fonts-dejavu-core python3 qcoro-qt6-dev ccache
          libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libgstrtspserver-1.0-dev
          gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
          gstreamer1.0-libav gstreamer1.0-rtsp pkg-config)
# nodejs, npm: the suite drives the ONVIF bridge with the npm "onvif" client,
# which the suite installs into the build tree. A Node.js that is already
# installed from elsewhere (it brings its own npm) is used as it is.
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
    packages+=(nodejs npm)
fi
for flag in "$@"; do
    case "$flag" in
        --with-display) packages+=(xvfb) ;;
        --with-packaging) packages+=(dpkg-dev desktop-file-utils appstream libglib2.0-bin) ;;
        # Debian 12's clang keeps the libFuzzer and sanitizer runtimes in
        # libclang-rt-14-dev, which clang's packages only recommend.
        --with-fuzzing) packages+=(clang libclang-rt-14-dev) ;;
        # Noto Sans Mono takes "monospace" from DejaVu Sans Mono where both
        # are installed, as it does on a machine with openbox.
        --with-more-fonts) packages+=(fonts-noto-mono) ;;
        *)
            echo "setup.sh: unknown option $flag (known: --with-display, --with-packaging, --with-fuzzing, --with-more-fonts)" >&2
            exit 2
            ;;
    esac
done

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
