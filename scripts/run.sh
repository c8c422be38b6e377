#!/usr/bin/env bash
# Installs what is missing, builds, and starts Vesk on your prompt library.
# Arguments are passed on to Vesk.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh

if [[ "$(uname -s)" == "Darwin" ]]; then
    # Opened as the Finder opens it, so that macOS gives the permissions it asks
    # for (accessibility) and the drag types it declares to Vesk, not to the
    # terminal; waits until Vesk quits.
    exec open -W -n build/src/app/Vesk.app --args "$@"
fi
exec build/src/app/vesk "$@"
