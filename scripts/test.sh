#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test headless.
#   scripts/test.sh          the test suites (a short kill -9 soak among them)
#   scripts/test.sh --full   also the fuzzers, 20 s each from the seed corpus (what CI runs)
set -euo pipefail
cd "$(dirname "$0")/.."
full=false
[[ "${1:-}" == "--full" ]] && full=true

if $full; then scripts/setup.sh --fuzz; else scripts/setup.sh; fi
scripts/build.sh
(
    cd build
    QT_QPA_PLATFORM=offscreen ctest --output-on-failure --parallel "$(getconf _NPROCESSORS_ONLN 2>/dev/null || echo 2)"
)
if $full; then
    scripts/fuzz.sh 20
fi
