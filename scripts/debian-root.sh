#!/bin/bash
# debian-root.sh FOLDER ARCHITECTURE PACKAGE...: a folder with a system of its own, in which the packages are installed
# and little else; for one who changes the root there. Does nothing when FOLDER exists.
#
# debootstrap makes it, as root or with sudo, from the mirror that apt uses on this machine. FOLDER appears when it is
# complete. The folder above must exist; a log of what went wrong is left there.
set -u

say() { echo "debian-root: $*" >&2; }
fail() { say "$*"; exit 1; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        command -v sudo >/dev/null || fail "$1 needs root or sudo"
        sudo "$@"
    fi
}

[ $# -ge 3 ] || { sed -n '2,/^set -u/{/^#/s/^# \{0,1\}//p}' "$0" >&2; exit 2; }
root=$1 architecture=$2
shift 2
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")

exec 9>"$root.lock" || fail "cannot write $root.lock"
flock 9
[ ! -d "$root" ] || exit 0

"$here/install.sh" root || exit 1
codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
mirror=$(apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
    awk -v codename="$codename" '($1 == codename || $1 !~ /[-\/]/) && $2 == "main" { print $3; exit }')
[ -n "$codename" ] && [ -n "$mirror" ] || fail "apt knows no mirror for this system (\"$codename\")"
[ -n "${http_proxy:-}" ] || eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
[ -n "${https_proxy:-}" ] || eval "$(apt-config shell https_proxy Acquire::https::Proxy)"

started=$SECONDS
say "making $root (once; a minute or two)"
as_root rm -rf --one-file-system "$root".new.*
temp=$root.new.$$
log=$root.log
trap 'as_root rm -rf --one-file-system "$temp"; exit 130' INT TERM HUP
# In a mount namespace, what debootstrap mounts goes away with it, however it ends.
if ! as_root env http_proxy="${http_proxy:-}" https_proxy="${https_proxy:-}" unshare -m \
    debootstrap --arch="$architecture" --variant=minbase --include="$(IFS=, && echo "$*")" "$codename" "$temp" "$mirror" \
    >"$log" 2>&1 9>&-
then
    tail -n 5 "$log" "$temp/debootstrap/debootstrap.log" >&2
    as_root rm -rf --one-file-system "$temp"
    fail "debootstrap failed; its output is in $log"
fi
as_root rm -rf "$temp/var/cache/apt" "$temp/var/lib/apt/lists" "$temp/usr/share/doc" "$temp/usr/share/man"
as_root mv -T "$temp" "$root"
rm -f "$log"
say "$root is ready after $((SECONDS - started)) s"
