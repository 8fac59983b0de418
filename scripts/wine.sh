#!/bin/bash
# wine.sh: a 32-bit Wine for the Windows component, and programs run under it.
#
#   wine.sh ensure                          provide it; silent and quick when it is there
#   wine.sh run PREFIX PROGRAM [ARGS...]    run a Windows program (a path, or a name such as regsvr32)
#   wine.sh stop PREFIX                     end everything that runs in the prefix
#   wine.sh path FILE                       the file's Windows path (Z:\...)
#
# The system's own Wine is taken when a 32-bit program runs under it. Otherwise a 32-bit root with wine32 in it is made
# by debian-root.sh and kept in ${XDG_CACHE_HOME:-~/.cache}/ovno2. A program
# runs in a mount namespace of its own in which that root's /usr lies over the system's: every other path, the current
# directory, the environment, the standard streams and the exit status are the caller's, and no mount is left behind.
#
# A prefix is made on first use, needs no display and asks nothing; windows and messages work in it. Its background
# processes stay OVNO2_WINE_LINGER seconds (60) after its last program, so that short programs in a row start quickly;
# they hold none of the caller's files open. Prefixes may be used by several callers at once.
set -u

# Raised when the root or the prefix is made in another way, so that an older one is not taken for it.
recipe=1

me=$(readlink -f "${BASH_SOURCE[0]}")
here=${me%/*}
base=${XDG_CACHE_HOME:-${HOME:?}/.cache}/ovno2
root=$base/wine-i386-$recipe
linger=${OVNO2_WINE_LINGER:-60}

say() { echo "wine: $*" >&2; }
fail() { say "$*"; exit 125; }

# --- Which Wine ------------------------------------------------------------------------------------------------------

# The Wine in the search path with what tells one installation from another; empty when there is none.
system_wine_stamp() {
    local wine
    wine=$(type -P wine) && stat -L -c "%n %s %Y" "$wine"
}

# Compiles a 32-bit program and runs it under the system's Wine.
probe_system_wine() {
    local work status=1
    "$here/install.sh" windows || return 1
    work=$(mktemp -d) || return 1
    echo 'int main(void) { return sizeof(void*) == 4 ? 42 : 1; }' >"$work/probe.c"
    if i686-w64-mingw32-gcc-posix -o "$work/probe.exe" "$work/probe.c"; then
        WINEARCH=win32 WINEPREFIX=$work/prefix WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES="mscoree,mshtml=" \
            timeout 120 wine "$work/probe.exe" </dev/null >/dev/null 2>&1
        [ $? -eq 42 ] && status=0
        WINEPREFIX=$work/prefix timeout 20 wineserver -k >/dev/null 2>&1
    fi
    rm -rf "$work"
    return $status
}

# Sets kind to "system", "root" or "none" (nothing usable yet) from what an earlier `ensure` has found.
find_wine() {
    local stamp
    kind=none
    stamp=$(system_wine_stamp)
    if [ -n "$stamp" ] && [ "$(cat "$base/system-wine" 2>/dev/null)" = "works $stamp" ]; then
        kind=system
    elif [ -d "$root" ] && { [ -z "$stamp" ] || [ "$(cat "$base/system-wine" 2>/dev/null)" = "fails $stamp" ]; }; then
        kind=root
    fi
}

ensure() {
    local stamp
    find_wine
    if [ "$kind" = none ]; then
        mkdir -p "$base"
        exec 9>"$base/wine.lock"
        flock 9
        find_wine
        if [ "$kind" = none ]; then
            stamp=$(system_wine_stamp)
            if [ -n "$stamp" ]; then
                say "trying the system's Wine"
                if probe_system_wine; then
                    say "the system's Wine runs 32-bit programs"
                    echo "works $stamp" >"$base/system-wine"
                else
                    say "the system's Wine runs no 32-bit programs"
                    echo "fails $stamp" >"$base/system-wine"
                fi
            fi
            find_wine
            if [ "$kind" = none ]; then
                [ -h /lib ] || fail "this system keeps libraries outside /usr; install a 32-bit Wine by hand"
                say "making a 32-bit system with Wine in it, about 1 GB"
                "$here/debian-root.sh" "$root" i386 wine32 tzdata 9>&- || fail "no 32-bit Wine"
                find_wine
            fi
        fi
        exec 9>&-
    fi
}

# --- Running ---------------------------------------------------------------------------------------------------------

# Sets `tool` to the command line that starts "wine" or "wineserver" of the Wine that `kind` names.
find_tool() {
    local enter=(unshare -m)
    if [ "$kind" = system ]; then
        tool=("$1")
        return
    fi
    [ "$(id -u)" -eq 0 ] || enter=(unshare -r -m)
    tool=("${enter[@]}" /bin/sh -c '
        usr=$1/usr tool=$2
        shift 2
        mount -n --rbind /usr/local "$usr/local" && mount -n --rbind /usr/src "$usr/src" &&
            mount -n --rbind "$usr" /usr || exit 125
        exec "/usr/lib/wine/$tool" "$@"' sh "$root" "$1")
}

run_wine() { find_tool wine; "${tool[@]}" "$@"; }
run_server() { find_tool wineserver; "${tool[@]}" "$@"; }

# Ends everything in the prefix and waits until its registry is written.
end_session() {
    run_server -k >/dev/null 2>&1
    run_server -w >/dev/null 2>&1
}

# Starts the prefix's background processes if they are not running; they inherit nothing from the caller.
start_session() {
    run_server "-p$linger" </dev/null >/dev/null 2>&1 && run_wine wineboot </dev/null >/dev/null 2>&1
}

# Makes a prefix that needs no display and keeps its hands off the user's own folders.
make_prefix() {
    local target=$1 started=$SECONDS
    if [ -e "$target" ] && [ -n "$(ls -A "$target")" ]; then
        fail "$target is neither empty nor a Wine prefix"
    fi
    say "making the prefix $target"
    rm -rf "$target".new.*
    export WINEPREFIX=$target.new.$$
    trap 'end_session; rm -rf "$WINEPREFIX" "$target.log"; exit 130' INT TERM HUP
    mkdir "$WINEPREFIX" || fail "cannot make $WINEPREFIX"
    cat >"$WINEPREFIX/user.reg" <<'REG'
WINE REGISTRY Version 2
;; All keys relative to \\User\\S-1-5-21-0-0-0-1000

#arch=win32

[Software\\Wine\\Drivers]
"Graphics"="null"

[Software\\Wine\\WineDbg]
"ShowCrashDialog"=dword:00000000
REG
    # Without a home folder, Documents and the like are made as folders of the prefix, not as links out of it.
    (export HOME=/nonexistent; run_wine wineboot -i) </dev/null >"$target.log" 2>&1
    end_session
    if [ ! -e "$WINEPREFIX/system.reg" ]; then
        rm -rf "$WINEPREFIX"
        tail -n 5 "$target.log" >&2
        fail "could not make the prefix; the output is in $target.log"
    fi
    mv -T "$WINEPREFIX" "$target" || fail "cannot make $target"
    rm -f "$target.log"
    trap - INT TERM HUP
    say "the prefix is ready after $((SECONDS - started)) s"
}

use_prefix() {
    export WINEARCH=win32 WINEDEBUG=${WINEDEBUG--all}
    export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d${WINEDLLOVERRIDES:+;$WINEDLLOVERRIDES}"
    unset DISPLAY
    prefix=$(realpath -m -- "$1")
    export WINEPREFIX=$prefix
}

run() {
    local prefix tool
    use_prefix "$1"
    shift
    ensure
    mkdir -p "${prefix%/*}"
    # The lock is closed in every child: a background process that kept it would hold up the next caller.
    exec 9>"$prefix.lock" || fail "cannot write $prefix.lock"
    flock 9
    { [ -e "$prefix/system.reg" ] || make_prefix "$prefix"; } 9>&-
    export WINEPREFIX=$prefix
    start_session 9>&-
    exec 9>&-
    find_tool wine
    exec "${tool[@]}" "$@"
}

stop() {
    local prefix
    use_prefix "$1"
    find_wine
    [ "$kind" = none ] || [ ! -e "$prefix/system.reg" ] || end_session
}

command=${1:-}
[ $# -eq 0 ] || shift
case $command:$# in
    ensure:0) ensure ;;
    run:[2-9] | run:[1-9][0-9]*) run "$@" ;;
    stop:1) stop "$1" ;;
    path:1) path=$(realpath -m -- "$1") && echo "Z:${path//\//\\}" ;;
    *) sed -n '2,/^set -u/{/^#/s/^# \{0,1\}//p}' "$me" >&2; exit 2 ;;
esac
