#!/bin/bash
# check-tidy.sh: clang-tidy, as .clang-tidy says, on what the ordinary build compiles of src, simulator and host.
#
# A file that passed is not looked at again until it, a project header that it includes, its compiler options, the
# checks or clang-tidy itself change; build/tidy keeps the list.
set -eu -o pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
build=$root/build/debug
passed=$root/build/tidy
mkdir -p "$passed"
cd "$build"

declare -A hash_of command_of seen
while read -r hash file; do hash_of[$file]=$hash; done < <(
    find "$root/src" "$root/simulator" "$root/host" \( -name '*.cpp' -o -name '*.h' \) -exec sha256sum {} +)
while IFS=$'\t' read -r file command; do command_of[$file]=$command; done < <(
    awk -F'"' '/^ *"command":/ { command = $0 } /^ *"file":/ { print $4 "\t" command }' compile_commands.json)
common=$(clang-tidy --version; cat "$root/.clang-tidy")

# Each object's source and headers, as the compiler told the build.
todo=()
while read -r -a files; do
    source=${files[0]}
    [ -n "${hash_of[$source]:-}" ] && [ -z "${seen[$source]:-}" ] || continue
    seen[$source]=yes
    content=$common${command_of[$source]:-}
    for file in "${files[@]}"; do content+=${hash_of[$file]:-}; done
    key=$(sha256sum <<<"$content")
    key=$passed/${key%% *}
    if [ -e "$key" ]; then touch "$key"; else todo+=("$key" "$source"); fi
done < <(ninja -t deps | awk '
    /^[^ ]/ { if (line != "") print line; line = ""; next }
    NF { line = line (line == "" ? "" : " ") $1 }
    END { if (line != "") print line }' |
    sed "s#\(^\| \)\.\./\.\./#\1$root/#g" | sort -u)  # a compiler cache may tell the headers relative to the build

if [ ${#seen[@]} -eq 0 ]; then
    echo "check-tidy: the build knows no source of the project" >&2
    exit 1
fi

[ ${#todo[@]} -gt 0 ] || exit 0
echo "check-tidy: $((${#todo[@]} / 2)) files"
printf '%s\0' "${todo[@]}" | xargs -0 -n 2 -P "$(nproc)" bash -c '
    if output=$(clang-tidy -p . --quiet --extra-arg=-Wno-error "$2" 2>/dev/null); then
        : >"$1"
    else
        printf "%s\n" "$output" >&2
        echo "check-tidy: ${2} failed" >&2
        exit 1
    fi' bash || exit 1
find "$passed" -type f -mtime +30 -delete
