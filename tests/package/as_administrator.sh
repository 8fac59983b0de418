# Runs as root in the clean system: installs the package, lets a user try it, removes it.
set -eu

everything() { find / -xdev ! -path '/var/lib/dpkg/*' ! -path '/var/log/*' ! -path '/var/cache/*' ! -path '/given/*' | sort; }

for tool in g++ cc make cmake; do
    ! command -v "$tool" >/dev/null || { echo "The system has a compiler: $tool"; exit 1; }
done
useradd --create-home --shell /bin/bash anna
everything >/given/before
dpkg --install /given/package.deb
[ -z "$(dpkg --verify ovphone)" ]
dpkg --audit

status=0
setpriv --reuid anna --regid anna --init-groups --no-new-privs \
    env -i PATH=/usr/bin:/bin HOME=/home/anna LC_ALL=C.UTF-8 /bin/bash /given/as_user.sh || status=1

dpkg --purge ovphone
rm -rf /home/anna/.local /home/anna/.config /home/anna/.cache /home/anna/folder  # the user's own
everything >/given/after
diff /given/before /given/after || { echo "The package leaves this behind."; status=1; }
[ $status -eq 0 ] && echo "The package is fit for use."
exit $status
