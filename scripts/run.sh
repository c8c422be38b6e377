#!/usr/bin/env bash
# Installs what is missing, builds, and starts Vesk on your prompt library.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh

app=""
for candidate in build/src/app/Vesk.app/Contents/MacOS/Vesk build/src/app/vesk; do
    if [[ -x "$candidate" ]]; then app="$candidate"; break; fi
done
if [[ -z "$app" ]]; then
    echo "==> Built vesk-cli, the tests and the benchmarks; the desktop window is not part of this build yet." >&2
    echo "==> Try: build/src/cli/vesk-cli --help" >&2
    exit 0
fi
exec "$app" "$@"
