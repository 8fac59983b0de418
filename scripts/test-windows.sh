#!/bin/bash
# test-windows.sh: builds everything for 32-bit Windows and tests it under Wine: the component as its hosts use it, the
# platform's calls, and what else of the tests runs there. Ends with the summary of ctest; its status is the script's.
set -eu -o pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
scripts=$root/scripts
build=$root/build/windows

"$scripts/install.sh" build windows
"$scripts/wine.sh" ensure
"$scripts/build.sh" windows

# Programs that an earlier run left hanging would keep their files.
"$scripts/wine.sh" stop "$build/wine"
status=0
ctest --test-dir "$build" --output-on-failure --no-tests=error 2>&1 |
    { grep -vE '^ +Start +[0-9]+|^Internal ctest|^ *$|^Test project' || true; } || status=$?
"$scripts/wine.sh" stop "$build/wine"
exit $status
