#!/usr/bin/env bash
# Installs whatever the build, the tests and the app need and is not there yet.
# Debian/Ubuntu: apt-get (sudo when not root). macOS: Homebrew.
#   scripts/setup.sh           what building, running and testing need
#   scripts/setup.sh --fuzz    also clang and its fuzzing runtime (scripts/fuzz.sh)
set -euo pipefail
fuzz=false
[[ "${1:-}" == "--fuzz" ]] && fuzz=true

say() { printf '==> %s\n' "$*" >&2; }

if [[ "$(uname -s)" == "Darwin" ]]; then
    if ! command -v brew >/dev/null 2>&1; then
        say "Homebrew is required on macOS: https://brew.sh"
        exit 1
    fi
    # Only the Qt modules Vesk uses (qtbase has Core, Gui, Widgets, Test and
    # macdeployqt), not the whole of Qt; cmake and ninja unless some are on
    # the PATH already, from Homebrew or elsewhere.
    missing=()
    for f in qtbase qtsvg; do
        brew list --formula "$f" >/dev/null 2>&1 || missing+=("$f")
    done
    for tool in cmake ninja; do
        command -v "$tool" >/dev/null 2>&1 || missing+=("$tool")
    done
    if ((${#missing[@]})); then
        say "Installing ${missing[*]} with Homebrew"
        brew install "${missing[@]}"
    fi
    exit 0
fi

packages=(
    build-essential cmake ninja-build pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6svg6
    libgl-dev libxkbcommon-dev
    fonts-dejavu-core
    xvfb xauth xdg-utils
    libx11-dev libxtst-dev
    # A private session bus for the tests of the desktop's D-Bus services.
    dbus
    # The install's checks: desktop entry, AppStream metainfo, man page,
    # Info.plist and the zsh completion.
    desktop-file-utils appstream groff-base libxml2-utils zsh
)
if $fuzz; then
    packages+=(clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
((${#missing[@]})) || exit 0

if [[ $(id -u) -eq 0 ]]; then sudo=(); else sudo=(sudo); fi
say "Installing ${missing[*]}"

"${sudo[@]}" apt-get update -qq
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
