#!/bin/bash
# test-package.sh PRESET: makes the Debian package of a build and tries it where it has never been: in a clean system
# without a compiler, where nothing of this tree is to be seen. It is installed there, used by somebody who is not root,
# and removed.
#
# The clean system is made once (debian-root.sh) and kept in ${XDG_CACHE_HOME:-~/.cache}/ovno2; what is done in it goes
# to memory and is gone at the end. Needs root or sudo.
set -eu

# Raised when other packages are wanted in the clean system.
recipe=1

scripts=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
tests=$(dirname "$scripts")/tests/package
base=${XDG_CACHE_HOME:-${HOME:?}/.cache}/ovno2
architecture=$(dpkg --print-architecture)
root=$base/clean-$architecture-$recipe

package=$("$scripts/package.sh" "$1")
mkdir -p "$base"
"$scripts/debian-root.sh" "$root" "$architecture" man-db mandoc bash-completion zsh fish

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
work=$(mktemp -d)
trap 'rmdir "$work"' EXIT
# The mounts are those of a namespace and go away with it.
"${as_root[@]}" unshare --mount --pid --fork --kill-child /bin/sh -eu -c '
    root=$1 work=$2 package=$3 tests=$4
    mount -t tmpfs -o mode=755 tmpfs "$work"
    mkdir "$work/changes" "$work/overlay" "$work/clean"
    mount -t overlay -o "lowerdir=$root,upperdir=$work/changes,workdir=$work/overlay" overlay "$work/clean"
    cd "$work/clean"
    mount -t proc proc proc
    mount --rbind /dev dev
    mkdir given
    cp "$package" given/package.deb
    cp "$tests"/*.sh given/
    chmod -R a+rX given
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 chroot . /bin/bash /given/as_administrator.sh
' sh "$root" "$work" "$package" "$tests"
