#!/bin/bash
# run-windows.sh [ARGS...]: builds the Windows component and runs `ovphone.exe ARGS...` under Wine, which reaches the
# phones through it.
#
# The phones are those in phones/, or in the folders that OVNO2_PHONES names (separated by ":", as natively). The Wine
# prefix is a folder of the build; its user has the date format of the user who calls, and the simulator is its phone
# software.
set -eu

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
scripts=$root/scripts
build=$root/build/windows
dist=$build/dist

"$scripts/install.sh" build windows
"$scripts/wine.sh" ensure
"$scripts/build.sh" windows dist

wine() { "$scripts/wine.sh" run "$build/wine" "$@"; }
windows_path() { "$scripts/wine.sh" path "$1"; }

# What the prefix must know. It is told again when that has changed, or when the component is new.
locale=${LC_ALL:-${LC_TIME:-${LANG:-C}}}
settings=$build/run.reg
{
    echo 'REGEDIT4'
    echo
    echo '[HKEY_LOCAL_MACHINE\SOFTWARE\PC Connectivity Solution]'
    platform_path=$(windows_path "$dist/simulator")
    echo "\"PlatformPath\"=\"${platform_path//\\/\\\\}\\\\\""
    # The system's own locale has the dates of ISO 8601; Wine knows it only as American English.
    case $locale in
        C | C.* | POSIX)
            echo
            echo '[HKEY_CURRENT_USER\Control Panel\International]'
            echo '"sShortDate"="yyyy-MM-dd"'
            echo '"sTimeFormat"="HH:mm:ss"'
            echo '"iTime"="1"'
            ;;
    esac
} >"$settings.new"
if ! cmp -s "$settings.new" "$settings" || [ "$dist/ovNo2.dll" -nt "$settings" ] || [ ! -e "$build/wine/system.reg" ]; then
    wine regedit /S "$(windows_path "$settings.new")"
    wine regsvr32 /s "$(windows_path "$dist/ovNo2.dll")"
    mv "$settings.new" "$settings"
fi

phones=
IFS=: read -r -a folders <<<"${OVNO2_PHONES:-$root/phones}"
for folder in "${folders[@]}"; do phones+=${phones:+;}$(windows_path "$folder"); done
export OVNO2_PHONES=$phones
exec "$scripts/wine.sh" run "$build/wine" "$dist/ovphone.exe" "$@"
