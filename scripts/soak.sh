#!/usr/bin/env bash
# The crash-consistency soak: kill -9 at random moments of saves, moves,
# renames and creations, checking the library after every kill.
#   scripts/soak.sh [KILLS] [FOLDER]     (default 3000 kills in the temp folder)
# FOLDER picks the file system to test (a USB stick, a network share).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh
args=(--kills "${1:-3000}")
[[ -n "${2:-}" ]] && args+=(--folder "$2")
exec build/tools/crash_soak "${args[@]}"
