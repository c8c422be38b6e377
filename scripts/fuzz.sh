#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang into build-fuzz/ and runs each
# for a fixed time (default 20 s) from the checked-in seed corpus. A crash or
# a broken invariant stops with a non-zero exit and leaves the input in
# build-fuzz/findings/. Where no clang with libFuzzer is at hand, it says so
# and exits non-zero without running anything.
#   scripts/fuzz.sh [SECONDS_PER_HARNESS]
# Linux: clang and its runtime from the distribution (scripts/setup.sh --fuzz).
# macOS: Apple's clang has no libFuzzer; Homebrew's llvm (brew install llvm)
# has, and is used from $(brew --prefix llvm)/bin.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-20}"

unavailable() {
    printf 'fuzz: fuzzing is unavailable here: %s\n' "$*" >&2
    exit 1
}
die() {
    printf 'fuzz: %s\n' "$*" >&2
    exit 1
}

args=(-S . -B build-fuzz -G Ninja -DVESK_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [[ "$(uname -s)" == "Darwin" ]]; then
    llvm=$(brew --prefix llvm 2>/dev/null || true)
    if [[ -z $llvm || ! -x $llvm/bin/clang++ ]]; then
        unavailable "Apple's clang has no libFuzzer; install Homebrew's llvm (brew install llvm) and run this again"
    fi
    # The Objective-C++ of src/platform is built by the same clang.
    args+=(-DCMAKE_C_COMPILER="$llvm/bin/clang" -DCMAKE_CXX_COMPILER="$llvm/bin/clang++"
           -DCMAKE_OBJCXX_COMPILER="$llvm/bin/clang++" -DCMAKE_PREFIX_PATH="$(brew --prefix qtbase)")
else
    command -v clang++ >/dev/null 2>&1 ||
        unavailable "no clang++ (scripts/setup.sh --fuzz installs clang and its fuzzing runtime)"
    args+=(-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++)
fi

# A compiler once cached in build-fuzz stays; a different one needs a new folder.
cmake "${args[@]}" >/dev/null || die "configuring build-fuzz failed (see above)"
grep -q '^VESK_HAS_LIBFUZZER:INTERNAL=1$' build-fuzz/CMakeCache.txt ||
    unavailable "$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build-fuzz/CMakeCache.txt) cannot link programs with -fsanitize=fuzzer (no libFuzzer runtime)"
cmake --build build-fuzz --parallel || die "building the fuzz harnesses failed (see above)"

harnesses=(fuzz_frontmatter_parse fuzz_frontmatter_list fuzz_frontmatter_roundtrip fuzz_variables fuzz_orderfile)
for harness in "${harnesses[@]}"; do
    [[ -x build-fuzz/fuzz/$harness ]] || die "build-fuzz/fuzz/$harness was not built"
done

mkdir -p build-fuzz/findings
total=0
for harness in "${harnesses[@]}"; do
    work="build-fuzz/corpus/$harness"
    mkdir -p "$work"
    log="build-fuzz/$harness.log"
    # New inputs go to the scratch corpus; the seeds stay as checked in.
    status=0
    ASAN_OPTIONS=detect_leaks=0 "build-fuzz/fuzz/$harness" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb=4096 -print_final_stats=1 -artifact_prefix=build-fuzz/findings/"$harness"- \
        "$work" "fuzz/corpus/$harness" >"$log" 2>&1 || status=$?
    if ((status != 0)); then
        tail -n 40 "$log" >&2
        # libFuzzer names what it found in its log ("Test unit written to …").
        if grep -q 'Test unit written to' "$log"; then
            die "$harness found a failing input (see build-fuzz/findings/)"
        fi
        die "$harness did not run to its end (exit status $status; see $log)"
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    total=$((total + ${runs:-0}))
    printf 'fuzz: %-28s %10s executions, no finding\n' "$harness" "${runs:-?}"
done
printf 'fuzz: %s executions in all\n' "$total"
