#!/usr/bin/env bash
# Builds the Debian package: a Release build in build-package/ with the tests
# off, then cpack. Prints the path of the .deb on stdout (everything else goes
# to stderr). Extra arguments go to CMake.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --with-packaging >&2
dir=build-package
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release -DHALVEX_TESTS=OFF "$@" >&2
cmake --build "$dir" -j"$(nproc)" >&2
rm -f "$dir"/*.deb
(cd "$dir" && cpack -G DEB) >&2
debs=("$PWD/$dir"/*.deb)
if [[ ${#debs[@]} -ne 1 || ! -f "${debs[0]}" ]]; then
    echo "package.sh: expected one .deb in $dir, found: ${debs[*]}" >&2
    exit 1
fi
echo "${debs[0]}"
