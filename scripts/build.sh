#!/usr/bin/env bash
# Configures and builds everything into build/ (app, vesk-cli, tests, benchmarks).
set -euo pipefail
cd "$(dirname "$0")/.."

args=(-S . -B build -G Ninja -DCMAKE_BUILD_TYPE="${VESK_BUILD_TYPE:-RelWithDebInfo}")
if [[ "$(uname -s)" == "Darwin" ]]; then
    # Homebrew installs each Qt module as its own formula under one prefix.
    args+=(-DCMAKE_PREFIX_PATH="$(brew --prefix)")
fi
if [[ -n "${CI:-}" ]]; then
    args+=(-DVESK_WERROR=ON)
fi
cmake "${args[@]}" >/dev/null
cmake --build build --parallel
