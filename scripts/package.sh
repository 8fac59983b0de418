#!/bin/bash
# package.sh [--windows] [PRESET]: makes what users install, the Debian package or the zip for Windows, and prints its
# path. PRESET is the build that it is made of: "run" if none is given, which is optimised; "windows" with --windows.
set -eu

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
preset=run
if [ "${1:-}" = --windows ]; then
    preset=windows
    shift
fi
preset=${1:-$preset}
folder=$root/build/$preset

if [ "$preset" = windows ]; then
    "$root/scripts/install.sh" build windows package
    "$root/scripts/build.sh" windows dist
else
    "$root/scripts/install.sh" build package
    "$root/scripts/build.sh" "$preset" ovphone ovviewer ConnAPI DAAPI compressed_manual
fi
rm -rf "$folder/packages"
if ! cpack --config "$folder/CPackConfig.cmake" >"$folder/package.log" 2>&1; then
    cat "$folder/package.log" >&2
    exit 1
fi
find "$folder/packages" -maxdepth 1 \( -name '*.deb' -o -name '*.zip' \)
