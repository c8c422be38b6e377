#!/usr/bin/env bash
# Runs the README's commands on another Debian release, in a root made with
# debootstrap: the tree is copied in as it is, and scripts/test.sh (and a
# start of the built app) runs there with that release's Qt. Needs root and
# Debian's package servers; what it makes stays under VESK_ROOTS for the
# next run.
#   scripts/distro-check.sh trixie          Debian 13 (Qt 6.8): build, every test, start the app
#   scripts/distro-check.sh sid             Debian unstable (the newest Qt Debian ships)
#   scripts/distro-check.sh SUITE --build   build with -Werror only, no tests
set -euo pipefail
cd "$(dirname "$0")/.."

suite="${1:?usage: scripts/distro-check.sh SUITE [--build]}"
mode="${2:---test}"
roots="${VESK_ROOTS:-/var/tmp/vesk-roots}"
mirror="${VESK_DEBIAN_MIRROR:-http://deb.debian.org/debian}"
root="$roots/$suite"

say() { printf '==> [%s] %s\n' "$suite" "$*" >&2; }

if [[ $(id -u) -ne 0 ]]; then
    echo "scripts/distro-check.sh needs root (debootstrap, chroot and mounts)" >&2
    exit 1
fi
if ! command -v debootstrap >/dev/null 2>&1 || ! command -v unshare >/dev/null 2>&1; then
    say "Installing debootstrap"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends debootstrap util-linux >/dev/null
fi

if [[ ! -x "$root/usr/bin/apt-get" || ! -f "$root/.vesk-root-complete" ]]; then
    say "Making a $suite root in $root"
    rm -rf "$root"
    mkdir -p "$roots"
    started=$SECONDS
    debootstrap --variant=minbase "$suite" "$root" "$mirror" >"$roots/$suite-debootstrap.log" 2>&1 || {
        tail -n 30 "$roots/$suite-debootstrap.log" >&2
        exit 1
    }
    # The mirror's unstable may be older than its Release file allows.
    echo 'Acquire::Check-Valid-Until "false";' >"$root/etc/apt/apt.conf.d/99vesk-valid-until"
    touch "$root/.vesk-root-complete"
    say "Root made in $((SECONDS - started)) s"
fi
cp /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null || true

# The tree as it is now (committed or not, never the build folders).
say "Copying the tree"
rm -rf "$root/vesk"
mkdir -p "$root/vesk"
git ls-files --cached --others --exclude-standard -z | tar --null -T - -cf - | tar -C "$root/vesk" -xf -

# What runs inside: the README's two commands, every test and then the app
# itself, which must start and stay up on a virtual display until stopped.
cat >"$root/vesk-check.sh" <<'INNER'
set -euo pipefail
cd /vesk
. /etc/os-release
scripts/setup.sh
echo "==> $PRETTY_NAME, Qt $(dpkg-query -W -f='${Version}' qt6-base-dev), $(g++ --version | head -n 1)"
if [[ "$1" == "--build" ]]; then
    exec scripts/build.sh
fi
started=$SECONDS
scripts/test.sh
echo "==> scripts/test.sh passed in $((SECONDS - started)) s"
export HOME="$(mktemp -d)"
rc=0
xvfb-run -a timeout -s TERM 8 scripts/run.sh || rc=$?
if [[ $rc -ne 124 ]]; then
    echo "==> scripts/run.sh: Vesk exited with $rc before it was stopped" >&2
    exit 1
fi
echo "==> scripts/run.sh: Vesk started and was still running after 8 s"
INNER

# A private mount namespace: whatever is mounted for the root (and by the
# tests inside it) goes away with it.
say "Running the README's commands in $suite"
started=$SECONDS
unshare --mount --propagation private bash -euo pipefail -c '
    root="$1"; mode="$2"
    mount -t proc proc "$root/proc"
    mount -t sysfs sysfs "$root/sys"
    mount --rbind /dev "$root/dev"
    mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
    mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
    exec chroot "$root" /usr/bin/env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        HOME=/root LANG=C.UTF-8 CI="${CI:-}" DEBIAN_FRONTEND=noninteractive bash /vesk-check.sh "$mode"
' _ "$root" "$mode"
say "Done in $((SECONDS - started)) s"
