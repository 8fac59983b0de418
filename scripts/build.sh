#!/bin/bash
# build.sh PRESET [TARGET...]: builds the targets (default: all) of a CMake preset in build/PRESET.
#
# Configures when that has not been done, or was done for another place. When no source has changed since the last
# build it does nothing, in milliseconds. Everything it says goes to standard error.
set -eu

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
preset=$1
shift
folder=$root/build/$preset
stamp=$folder/.built$(printf -- '-%s' "$@")

sources=(src simulator host phones packaging tests bench fuzz cmake CMakeLists.txt CMakePresets.json)
changed() {
    [ ! -e "$stamp" ] || [ -n "$(cd "$root" && find "${sources[@]}" -newer "$stamp" -print -quit 2>/dev/null)" ]
}

# Another user's build serves as it is; only that user can renew it.
if ! mkdir -p "$folder" 2>/dev/null || [ ! -w "$folder" ]; then
    changed || exit 0
    echo "build: ${folder#"$root"/} is not yours to write, and not up to date. Let $(stat -c %U "$(dirname "$folder")" 2>/dev/null) run" \
        "this once, or work in a copy of the tree." >&2
    exit 1
fi
exec 9>"$folder/.lock"
flock 9

# A build folder that came along with a moved tree still names the old place.
if [ -e "$folder/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
    echo "build: $folder was made for another place; starting anew" >&2
    find "$folder" -mindepth 1 -maxdepth 1 ! -name .lock -exec rm -rf {} +
fi
changed || exit 0

launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
if [ ! -e "$folder/build.ninja" ]; then
    echo "build: configuring build/$preset" >&2
    if ! (cd "$root" && cmake --preset "$preset" "${launcher[@]}") >"$folder/configure.log" 2>&1 9>&-; then
        cat "$folder/configure.log" >&2
        exit 1
    fi
fi

# The time before the build counts: what is edited meanwhile is new to the next one.
touch "$stamp.new"
echo "build: building build/$preset" >&2
if [ -t 2 ]; then
    (cd "$folder" && ninja "$@") >&2 9>&-
elif ! (cd "$folder" && ninja "$@") >"$folder/build.log" 2>&1 9>&-; then
    grep -v '^\[[0-9]*/[0-9]*\] [A-Z]' "$folder/build.log" | tail -n 200 >&2
    exit 1
fi
mv "$stamp.new" "$stamp"
