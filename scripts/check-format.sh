#!/bin/bash
# check-format.sh: every C++ file must be laid out as .clang-format says; names those that are not.
# `clang-format -i FILE` puts a file right.
set -eu

cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
find src simulator host tests bench fuzz \( -name '*.cpp' -o -name '*.h' \) -print0 2>/dev/null |
    xargs -0 -r -n 16 -P "$(nproc)" bash -c '
        status=0
        for file; do
            clang-format --dry-run -Werror "$file" 2>/dev/null || { echo "check-format: not laid out: $file" >&2; status=1; }
        done
        exit $status' bash
