#!/bin/bash
# on_windows.sh BUILD: makes the zip of the Windows build in the folder BUILD, unpacks it somewhere else, and does under
# Wine what its readme.txt says.
set -u

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../.." && pwd)
build=$(realpath "$1")
prefix=$build/wine-package
zip=$("$root/scripts/package.sh" --windows "$(basename "$build")") || exit 1
work=$(mktemp -d)
trap '"$root/scripts/wine.sh" stop "$prefix"; rm -rf "$work"' EXIT
(cd "$work" && cmake -E tar xf "$zip") && cd "$work"/ovphone-* || exit 1

wrong=0
# expect STATUS PATTERN PROGRAM...: the program ends with that status, and what it says matches.
expect() {
    local status=$1 pattern=$2 said got=0
    shift 2
    said=$(timeout 300 "$root/scripts/wine.sh" run "$prefix" "$@" 2>&1 </dev/null) || got=$?
    if [ "$got" -ne "$status" ] || ! grep -qE -- "$pattern" <<<"$said"; then
        echo "$*: status $got instead of $status, or no \"$pattern\" in: $said"
        wrong=1
    fi
}

# The demo phone as it is given to a new user.
rm -rf "$prefix"/drive_c/users/*/AppData/Local/ovphone
expect 0 '^ovphone [0-9]' ./ovphone.exe --version
expect 1 'connectivity library was not found' ./ovphone.exe list
expect 0 'keeps what you change' ./ovphone.exe contacts add --demo firstName=Berta
expect 0 'Berta' ./ovphone.exe contacts show --demo Berta
[ "$(grep -rl Berta . | wc -l)" -eq 0 ] || { echo "The bundled phone has changed."; wrong=1; }
expect 0 'simulated phones are attached' cmd /c register.cmd simulator
expect 0 'Nokia N95' cscript //nologo list-phones.vbs
expect 0 'no longer registered' cmd /c unregister.cmd
exit $wrong
