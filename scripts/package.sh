#!/usr/bin/env bash
# Builds a release of Vesk into build-package/ and packs it into dist/.
#   macOS: dist/Vesk.app, self-contained (macdeployqt copies in the Qt
#          frameworks and plugins) and signed, with vesk-cli inside
#          (Contents/MacOS/vesk-cli), and dist/Vesk-VERSION.dmg.
#          VESK_SIGN_IDENTITY names the code-signing identity to sign with
#          (as `security find-identity -p codesigning` lists it, e.g.
#          "Developer ID Application: Jane Doe (TEAMID)" or a self-signed
#          certificate made in Keychain Access); without it the app is
#          signed ad hoc, with a warning.
#   Linux: dist/vesk-VERSION-linux-ARCH.tar.gz, the install tree under usr/
#          (what `cmake --install` puts into a prefix).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

say() { printf '==> %s\n' "$*" >&2; }
die() {
    printf 'package: %s\n' "$*" >&2
    exit 1
}

build="build-package"
dist="dist"
args=(-S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release)
darwin=false
[[ "$(uname -s)" == "Darwin" ]] && darwin=true
if $darwin; then
    args+=(-DCMAKE_PREFIX_PATH="$(brew --prefix)")
fi
cmake "${args[@]}" >/dev/null
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
rm -rf "$dist"
mkdir -p "$dist"

if ! $darwin; then
    cmake --build "$build" --parallel --target vesk vesk-cli vesk-linux-icons vesk-help-book
    stage=$build/stage
    rm -rf "$stage"
    DESTDIR="$PWD/$stage" cmake --install "$build" --prefix /usr >/dev/null
    archive=$dist/vesk-$version-linux-$(uname -m).tar.gz
    tar -C "$stage" -czf "$archive" usr
    say "Made $archive; unpack it into / (or use cmake --install with your prefix)"
    exit 0
fi

cmake --build "$build" --parallel --target vesk vesk-cli
app=$dist/Vesk.app
ditto "$build/src/app/Vesk.app" "$app"
cp "$build/src/cli/vesk-cli" "$app/Contents/MacOS/vesk-cli"

# The Qt frameworks and plugins into the bundle, for the app and vesk-cli.
homebrew=$(brew --prefix)
macdeployqt=$homebrew/bin/macdeployqt
[[ -x $macdeployqt ]] || macdeployqt=$(command -v macdeployqt) || die "macdeployqt not found (Homebrew's qtbase has it)"
"$macdeployqt" "$app" -always-overwrite -verbose=1 -libpath="$homebrew/lib" \
    -executable="$app/Contents/MacOS/vesk-cli"

# Is version $1 newer than $2? ("14.4" > "14.0"; missing parts count as 0)
newer_than() {
    local -a a b
    IFS=. read -r -a a <<<"$1"
    IFS=. read -r -a b <<<"$2"
    local i
    for ((i = 0; i < 3; i++)); do
        ((${a[i]:-0} > ${b[i]:-0})) && return 0
        ((${a[i]:-0} < ${b[i]:-0})) && return 1
    done
    return 1
}

# Self-contained, and no part needs a newer macOS than the bundle promises:
# Homebrew builds its libraries for the macOS it runs on.
minimum=$(/usr/libexec/PlistBuddy -c 'Print :LSMinimumSystemVersion' "$app/Contents/Info.plist")
problems=()
# (Whole outputs are read before matching: a reader that stops early would
# break the pipe, which pipefail and set -e turn into a failure.)
while IFS= read -r -d '' file; do
    [[ $(file -b "$file") == Mach-O* ]] || continue
    if [[ $(otool -L "$file") == *"$homebrew/"* ]]; then
        problems+=("${file#"$app"/} still loads from $homebrew")
    fi
    commands=$(otool -l "$file")
    needs=$(awk '/LC_BUILD_VERSION/ { b = 1 } b && !found && $1 == "minos" { print $2; found = 1 }' <<<"$commands")
    if [[ -z $needs ]]; then
        needs=$(awk '/LC_VERSION_MIN_MACOSX/ { b = 1 } b && !found && $1 == "version" { print $2; found = 1 }' <<<"$commands")
    fi
    if [[ -n $needs ]] && newer_than "$needs" "$minimum"; then
        problems+=("${file#"$app"/} needs macOS $needs, the bundle promises $minimum")
    fi
done < <(find "$app" -type f -print0)
if ((${#problems[@]})); then
    printf '  %s\n' "${problems[@]}" >&2
    die "the bundle would not run on every Mac it claims to (build on an older macOS, or raise CMAKE_OSX_DEPLOYMENT_TARGET)"
fi

# A signature over everything macdeployqt changed, then checked. macOS keeps
# the Accessibility permission (auto-paste) for the signature's designated
# requirement: with a stable identity it names the certificate and carries
# over to the next build; an ad-hoc signature names the build's own hash, so
# after each update macOS still lists Vesk as allowed but refuses it.
identity=${VESK_SIGN_IDENTITY:-}
if [[ -n $identity ]]; then
    say "Signing with \"$identity\""
    codesign --force --deep --sign "$identity" "$app" ||
        die "could not sign with VESK_SIGN_IDENTITY \"$identity\" (security find-identity -p codesigning lists the identities in your keychains)"
else
    printf 'package: warning: signing ad hoc. Set VESK_SIGN_IDENTITY to a code-signing identity for a\n' >&2
    printf 'package: warning: signature that stays the same across builds; with an ad-hoc one, auto-paste\n' >&2
    printf 'package: warning: needs the Accessibility permission granted again after every update.\n' >&2
    codesign --force --deep --sign - "$app"
fi
codesign --verify --deep --strict --verbose=2 "$app"

# The deployed vesk-cli runs on the bundle's own Qt.
library=$(mktemp -d)
"$app/Contents/MacOS/vesk-cli" --root "$library/prompts" projects >/dev/null || die "the deployed vesk-cli does not run"
rm -rf "$library"

# The disk image: the app beside a link to /Applications.
staging=$(mktemp -d)
ditto "$app" "$staging/Vesk.app"
ln -s /Applications "$staging/Applications"
# hdiutil now and then fails with "Resource busy" while the system still
# looks at the new folder (on CI runners especially): try again a moment later.
made=false
for attempt in 1 2 3; do
    if hdiutil create -volname Vesk -srcfolder "$staging" -ov -format UDZO "$dist/Vesk-$version.dmg" >/dev/null; then
        made=true
        break
    fi
    say "hdiutil create failed (attempt $attempt of 3)"
    sleep 5
done
rm -rf "$staging"
$made || die "could not make the disk image"
if [[ -n $identity ]]; then
    say "Made $app and $dist/Vesk-$version.dmg (signed by \"$identity\")"
else
    say "Made $app and $dist/Vesk-$version.dmg (signed ad hoc: on another Mac, open it the first time with right-click > Open)"
fi
