#!/usr/bin/env bash
# Builds the .deb with scripts/package.sh, installs it on this machine and
# checks the installed copy: both programs' --version and their answer to an
# unknown option, the package's dependencies, the desktop entry (validated,
# and launched the way a menu launches it), the metainfo, where the console
# finds its data files, that it comes online against its built-in virtual
# unit, and that tshark names the frames it recorded with the installed
# Wireshark dissector. Needs root or sudo. Removes the package at the end unless --keep is
# given. Extra arguments go to scripts/package.sh: --from DIR packs a tree
# already built, anything else goes to CMake.
set -euo pipefail
cd "$(dirname "$0")/.."

keep=false
if [[ "${1:-}" == "--keep" ]]; then
    keep=true
    shift
fi
as_root=()
if [[ $(id -u) -ne 0 ]]; then
    as_root=(sudo)
fi

failures=0
passes=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}
pass() {
    passes=$((passes + 1))
    echo "ok: $*"
}

scripts/setup.sh --with-packaging
deb=$(scripts/package.sh "$@")
echo "== checking $deb =="
version=$(dpkg-deb -f "$deb" Version)
app_id=io.halvex.Console
work=$(mktemp -d)
cleanup() {
    rm -rf "$work"
    if ! $keep; then
        "${as_root[@]}" dpkg -r halvex >/dev/null || true
    fi
}
trap cleanup EXIT

depends=$(dpkg-deb -f "$deb" Depends)
for library in libqt6core6 libqt6gui6 libqt6widgets6 libqt6serialport6 libqt6network6 libsdl2-2.0-0; do
    [[ ",$depends," == *[\ ,]"$library"[\ ,]* ]] || fail "Depends lacks $library: $depends"
done
[[ "$depends" != *-dev* ]] || fail "Depends names a development package: $depends"

if ! "${as_root[@]}" dpkg -i "$deb"; then
    echo "== installing the missing runtime packages ==" >&2
    "${as_root[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -f --no-install-recommends
fi
[[ -x /usr/bin/halvex && -x /usr/bin/halvex-sim ]] || fail "programs not in /usr/bin"

# --version needs no display; an unknown option exits 2 with a message.
for program in halvex halvex-sim; do
    answer=$(env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "/usr/bin/$program" --version) ||
        fail "$program --version failed"
    [[ "$answer" == "$program $version" ]] || fail "$program --version says '$answer'"
    status=0
    QT_QPA_PLATFORM=offscreen "/usr/bin/$program" --no-such-option >/dev/null 2>"$work/err" ||
        status=$?
    [[ $status -eq 2 ]] || fail "$program --no-such-option exits $status, not 2"
    grep -q "no-such-option" "$work/err" || fail "$program does not name the unknown option"
done
pass "--version and unknown options"

share=/usr/share
desktop_file=$share/applications/$app_id.desktop
metainfo=$share/metainfo/$app_id.metainfo.xml
[[ -f $share/icons/hicolor/scalable/apps/$app_id.svg ]] || fail "no icon"
[[ -d $share/halvex ]] || fail "no $share/halvex"
desktop-file-validate "$desktop_file" || fail "desktop-file-validate $desktop_file"
appstreamcli validate --no-net "$metainfo" || fail "appstreamcli validate $metainfo"
release=$(grep -o -m1 '<release version="[^"]*"' "$metainfo" | cut -d'"' -f2)
[[ "$release" == "$version" ]] || fail "newest release in the metainfo is $release, not $version"
pass "desktop entry, icon and metainfo"

# Launched as a menu launches it, the console runs in its settings folder,
# made when missing. A stand-in earlier on PATH records where it started.
mkdir -p "$work/bin" "$work/home"
cat >"$work/bin/halvex" <<EOF
#!/bin/sh
pwd >"$work/started-in"
EOF
chmod +x "$work/bin/halvex"
env -u XDG_CONFIG_HOME HOME="$work/home" PATH="$work/bin:$PATH" gio launch "$desktop_file" ||
    fail "gio launch $desktop_file"
for ((i = 0; i < 50; i++)); do
    [[ -s "$work/started-in" ]] && break
    sleep 0.1
done
started_in=$(cat "$work/started-in" 2>/dev/null || true)
[[ "$started_in" == "$work/home/.config/halvex" ]] ||
    fail "menu entry started the console in '$started_in'"
pass "menu entry starts in ~/.config/halvex"

plugin=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/wireshark/plugins/halvex.lua
[[ -f $plugin ]] || fail "no Wireshark dissector at $plugin"

# The installed console, offscreen, with its own virtual unit, until online,
# recording the line.
(cd "$work" && QT_QPA_PLATFORM=offscreen exec timeout 30 /usr/bin/halvex --simulate --connect \
    --record "$work/session.pcapng") 2>"$work/console.log" &
console=$!
for ((i = 0; i < 300; i++)); do
    if grep -q "halvex: online after" "$work/console.log" || ! kill -0 "$console" 2>/dev/null; then
        break
    fi
    sleep 0.1
done
kill "$console" 2>/dev/null || true
wait "$console" || true
grep "^halvex: " "$work/console.log" || true
grep -q "^halvex: data files in $share/halvex\$" "$work/console.log" ||
    fail "the console does not report its data files in $share/halvex"
grep -q "^halvex: online after" "$work/console.log" || fail "the console did not come online"
pass "installed console online"

# The service for --headless: installed, not enabled, its settings a
# conffile; and the installed program, run as the service runs it (no
# display), goes online against the installed virtual unit and ends with 0
# on SIGTERM.
service=/lib/systemd/system/halvex-headless.service
[[ -f $service ]] || fail "no $service"
[[ -f /etc/halvex/headless.conf ]] || fail "no /etc/halvex/headless.conf"
dpkg-query -W -f='${Conffiles}' halvex | grep -q "/etc/halvex/headless.conf" ||
    fail "/etc/halvex/headless.conf is not a conffile"
[[ ! -e /etc/systemd/system/multi-user.target.wants/halvex-headless.service ]] ||
    fail "the headless service is enabled by the package"
grep -q "^ExecStart=/usr/bin/halvex --headless " "$service" || fail "ExecStart does not run --headless"
halvex-sim >"$work/sim.out" 2>/dev/null &
sim=$!
for ((i = 0; i < 50; i++)); do
    [[ -s "$work/sim.out" ]] && break
    sleep 0.1
done
(cd "$work" && exec env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM \
    timeout 30 /usr/bin/halvex --headless --port "$(head -1 "$work/sim.out")") 2>"$work/headless.log" &
headless=$!
for ((i = 0; i < 300; i++)); do
    if grep -q " Online\$" "$work/headless.log" || ! kill -0 "$headless" 2>/dev/null; then
        break
    fi
    sleep 0.1
done
kill -TERM "$headless" 2>/dev/null || true
status=0
wait "$headless" || status=$?
kill "$sim" 2>/dev/null || true
wait "$sim" 2>/dev/null || true
cat "$work/headless.log"
grep -q " Online\$" "$work/headless.log" || fail "halvex --headless did not come online"
[[ $status -eq 0 ]] || fail "halvex --headless ended with $status on SIGTERM"
pass "installed headless service files, and --headless online"

# Wireshark finds the installed dissector by itself and names the frames.
if command -v tshark >/dev/null; then
    tshark -r "$work/session.pcapng" 2>/dev/null >"$work/dissected" || fail "tshark -r failed"
    grep -q "HALVEX.*jog message" "$work/dissected" &&
        grep -q "HALVEX.*preset record: preset 31" "$work/dissected" ||
        fail "tshark does not name the recorded frames with the installed dissector"
    pass "installed dissector in tshark"
else
    echo "tshark not installed: the installed dissector was not tried" >&2
fi

echo "package-check: $deb"
echo "package: $passes passed, $failures failed"
if ((failures > 0)); then
    exit 1
fi
