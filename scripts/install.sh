#!/bin/bash
# install.sh GROUP...: what the project needs from the distribution, by group: "build" to build and run it, "test" for
# the tests and checks on top, "windows" to build it and its tests for 32-bit Windows, "package" to make the packages,
# "root" for scripts/debian-root.sh, "bench" and "fuzz" for what these presets add.
#
# Installs the packages that are missing, as root or with sudo, and says so; when all is there it says nothing and does
# nothing.
set -u

# "group path package": the package is wanted when the path is missing.
wanted='
build   /usr/bin/g++                             g++
build   /usr/bin/cmake                           cmake
build   /usr/bin/ninja                           ninja-build
build   /usr/include/nlohmann/json.hpp           nlohmann-json3-dev
build   /usr/include/rapidjson/reader.h          rapidjson-dev
build   /usr/include/CLI/CLI.hpp                 libcli11-dev
build   /usr/share/javascript/chart.js           libjs-chart.js
test    /usr/include/gtest/gtest.h               libgtest-dev
test    /usr/include/gmock/gmock.h               libgmock-dev
test    /usr/bin/clang-format                    clang-format
test    /usr/bin/clang-tidy                      clang-tidy
test    /usr/bin/gammu                           gammu
test    /usr/include/libical/ical.h              libical-dev
test    /usr/bin/chromium                        chromium
test    /usr/bin/chromedriver                    chromium-driver
test    /usr/lib/python3/dist-packages/selenium  python3-selenium
windows /usr/bin/i686-w64-mingw32-g++-posix      g++-mingw-w64-i686-posix
windows /usr/bin/i686-w64-mingw32-windres        binutils-mingw-w64-i686
windows /usr/bin/i686-w64-mingw32-widl           mingw-w64-tools
windows /usr/include/wine/wine/windows/oaidl.idl libwine-dev
windows /usr/src/googletest/CMakeLists.txt       googletest
package /usr/bin/dpkg-shlibdeps                  dpkg-dev
root    /usr/sbin/debootstrap                    debootstrap
bench   /usr/include/benchmark/benchmark.h       libbenchmark-dev
fuzz    /usr/bin/clang++                         clang
fuzz    /usr/lib/clang/14/lib/linux              libclang-rt-14-dev
'

missing=()
while read -r group path package; do
    [ -n "$group" ] && [[ " $* " == *" $group "* ]] && [ ! -e "$path" ] && missing+=("$package")
done <<<"$wanted"
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "install: ${missing[*]}: not installed; installing needs root or sudo" >&2
        exit 1
    fi
    as_root=(sudo)
fi

install() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends \
        -o DPkg::Lock::Timeout=600 -o Dpkg::Use-Pty=0 "${missing[@]}" </dev/null
}

echo "install: installing ${missing[*]}" >&2
# The package lists may be absent or old: then the first try fails and a fresh list helps.
if ! install >/dev/null 2>&1; then
    echo "install: updating the package lists" >&2
    "${as_root[@]}" apt-get -qq update >&2 || echo "install: some package lists could not be updated; going on" >&2
    install >&2 || { echo "install: could not install ${missing[*]}" >&2; exit 1; }
fi
