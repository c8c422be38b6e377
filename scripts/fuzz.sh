#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang into build-fuzz/ and runs each
# for a fixed time (default 20 s) from the checked-in seed corpus. A crash or
# a broken invariant stops with a non-zero exit and leaves the input in
# build-fuzz/findings/.
#   scripts/fuzz.sh [SECONDS_PER_HARNESS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-20}"

if ! command -v clang++ >/dev/null 2>&1; then
    echo "scripts/fuzz.sh needs clang (scripts/setup.sh installs it)" >&2
    exit 1
fi

args=(-S . -B build-fuzz -G Ninja -DVESK_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
      -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)
if [[ "$(uname -s)" == "Darwin" ]]; then
    args+=(-DCMAKE_PREFIX_PATH="$(brew --prefix qtbase)")
fi
cmake "${args[@]}" >/dev/null
cmake --build build-fuzz --parallel

mkdir -p build-fuzz/findings
total=0
for harness in fuzz_frontmatter_parse fuzz_frontmatter_list fuzz_frontmatter_roundtrip fuzz_variables fuzz_orderfile; do
    work="build-fuzz/corpus/$harness"
    mkdir -p "$work"
    log="build-fuzz/$harness.log"
    # New inputs go to the scratch corpus; the seeds stay as checked in.
    if ! ASAN_OPTIONS=detect_leaks=0 "build-fuzz/fuzz/$harness" -max_total_time="$seconds" -timeout=10 \
            -rss_limit_mb=4096 -print_final_stats=1 -artifact_prefix=build-fuzz/findings/"$harness"- \
            "$work" "fuzz/corpus/$harness" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        echo "fuzz: $harness found a failing input (see build-fuzz/findings/)" >&2
        exit 1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    total=$((total + ${runs:-0}))
    printf 'fuzz: %-28s %10s executions, no finding\n' "$harness" "${runs:-?}"
done
printf 'fuzz: %s executions in all\n' "$total"
