#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test headless.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh
cd build
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)"
