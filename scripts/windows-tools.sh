#!/bin/bash
# windows-tools.sh: the cross toolchain for the 32-bit Windows component, from the distribution's packages.
#
# Installs what is missing of it, as root or with sudo, and says so; when all is there it says nothing and does nothing.
# `windows-tools.sh check` only tells (exit status 0 or 1) whether all is there.
set -u

# One "path package" a line: the package is wanted when the path is missing.
wanted='
/usr/bin/i686-w64-mingw32-g++-posix      g++-mingw-w64-i686-posix
/usr/bin/i686-w64-mingw32-windres        binutils-mingw-w64-i686
/usr/bin/i686-w64-mingw32-widl           mingw-w64-tools
/usr/include/wine/wine/windows/oaidl.idl libwine-dev
/usr/bin/cmake                           cmake
/usr/bin/ninja                           ninja-build
/usr/src/googletest/CMakeLists.txt       googletest
/usr/include/nlohmann/json.hpp           nlohmann-json3-dev
/usr/include/rapidjson/reader.h          rapidjson-dev
/usr/include/CLI/CLI.hpp                 libcli11-dev
'

missing=()
while read -r path package; do
    [ -z "$path" ] || [ -e "$path" ] || missing+=("$package")
done <<<"$wanted"

[ ${#missing[@]} -gt 0 ] || exit 0
if [ "${1:-}" = check ]; then
    echo "windows-tools: missing: ${missing[*]}"
    exit 1
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "windows-tools: installing ${missing[*]} needs root or sudo" >&2
        exit 1
    fi
    as_root=(sudo)
fi

install() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends \
        -o DPkg::Lock::Timeout=600 -o Dpkg::Use-Pty=0 "${missing[@]}"
}

echo "windows-tools: installing ${missing[*]}"
# The package lists may be absent or old: then the first try fails and a fresh list helps.
if ! install >/dev/null 2>&1; then
    echo "windows-tools: updating the package lists"
    "${as_root[@]}" apt-get -qq update || echo "windows-tools: some package lists could not be updated; going on" >&2
    install || { echo "windows-tools: could not install ${missing[*]}" >&2; exit 1; }
fi
