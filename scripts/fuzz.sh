#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ in the sanitizer build folder, which
# `scripts/tessaro.sh fuzz` (or `sanitize`) configures, and runs each for a
# bounded time; any crash, sanitizer report or broken property fails.
#   scripts/fuzz.sh [SECONDS] [TARGET...]
# SECONDS per target: the argument, else TESSARO_FUZZ_SECONDS, else 60.
# TARGET: the targets to run (default: all of them).
# Inputs that find new coverage stay in <build>/corpus/<target> for the next run;
# an input that breaks a target is written to <build>/artifacts/<target>/.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TESSARO_FUZZ_BUILD_DIR:-${TESSARO_ASAN_BUILD_DIR:-$here/build-asan}}"
jobs="${TESSARO_JOBS:-$(nproc)}"
seconds="${TESSARO_FUZZ_SECONDS:-60}"
if [[ "${1:-}" =~ ^[0-9]+$ ]]; then
    seconds="$1"
    shift
fi

if ! grep -qs '^TESSARO_FUZZ:BOOL=ON' "$build/CMakeCache.txt"; then
    echo "fuzz: $build is not configured with TESSARO_FUZZ; run scripts/tessaro.sh fuzz" >&2
    exit 2
fi
cmake --build "$build" -j "$jobs" --target fuzzers

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for source in "$here"/fuzz/fuzz_*.cpp; do
        targets+=("$(basename "$source" .cpp)")
    done
fi

export QT_QPA_PLATFORM=offscreen NORVIK_CONFIG=
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export LSAN_OPTIONS="suppressions=$here/tests/sanitizers/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

# One target: its seeds are read, new inputs go to the working corpus.
run_target() {
    local name="$1"
    local corpus="$build/corpus/$name" artifacts="$build/artifacts/$name/"
    local options=(-max_total_time="$seconds" -timeout=10 -print_final_stats=1 -artifact_prefix="$artifacts")
    mkdir -p "$corpus" "$artifacts"
    [ -f "$here/fuzz/$name.dict" ] && options+=(-dict="$here/fuzz/$name.dict")
    "$build/bin/$name" "${options[@]}" "$corpus" "$here/fuzz/corpus/$name" >"$build/$name.log" 2>&1
}
export -f run_target
export here build seconds

echo "fuzz: ${#targets[@]} targets, ${seconds} s each, ${jobs} at a time"
failed=0
printf '%s\n' "${targets[@]}" | xargs -P "$jobs" -I{} bash -c 'run_target {}' || failed=1

for name in "${targets[@]}"; do
    log="$build/$name.log"
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
    if [ -n "$runs" ] && ! grep -qE '^==[0-9]+==ERROR|^SUMMARY: |property broken|deadly signal' "$log"; then
        printf 'fuzz: %-20s ok      %10s runs  %7s exec/s\n' "$name" "$runs" "$rate"
    else
        printf 'fuzz: %-20s FAILED  (log %s)\n' "$name" "$log"
        tail -n 60 "$log" >&2
        failed=1
    fi
done
exit $failed
