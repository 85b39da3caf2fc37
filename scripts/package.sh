#!/usr/bin/env bash
# Builds the Debian package and prints the path of the .deb on stdout
# (everything else goes to stderr).
#   scripts/package.sh [--from DIR] [CMake options]
# With --from, packs the tree already built in DIR (CI packs build/, which
# the suite ran in; CPack strips the programs either way). Without it, makes
# a Release build with the tests off in build-package/ first; the CMake
# options go to that build.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --with-packaging >&2
if [[ "${1:-}" == "--from" ]]; then
    dir=${2:?--from which build folder?}
    shift 2
    if (($# > 0)); then
        echo "package.sh: $* would change nothing: $dir is configured already" >&2
        exit 2
    fi
else
    dir=build-package
    cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DHALVEX_TESTS=OFF "$@" >&2
fi
cmake --build "$dir" -j"$(nproc)" >&2
rm -f "$dir"/*.deb
(cd "$dir" && cpack -G DEB) >&2
debs=("$PWD/$dir"/*.deb)
if [[ ${#debs[@]} -ne 1 || ! -f "${debs[0]}" ]]; then
    echo "package.sh: expected one .deb in $dir, found: ${debs[*]}" >&2
    exit 1
fi
echo "${debs[0]}"
