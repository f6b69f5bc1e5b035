#!/usr/bin/env bash
# Static analysis of the project's own code (secrets/, host/, hostsdk/, plugin/,
# client/, responses/, returns/, contracts/, emulator/, till/; not tests, fuzz targets, benchmarks
# or generated files): clang-tidy with the checks of .clang-tidy, and cppcheck.
# Both read the compile commands of the build folder, which is built first so
# that generated headers exist. Any finding fails.
#   scripts/lint.sh [tidy|cppcheck]   (default: both)
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TESSARO_BUILD_DIR:-$here/build}"
jobs="${TESSARO_JOBS:-$(nproc)}"
what="${1:-all}"
areas='secrets|host|hostsdk|plugin|client|responses|returns|contracts|emulator|till'

if [ ! -f "$build/build.ninja" ]; then
    cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${TESSARO_BUILD_TYPE:-RelWithDebInfo}" -DTESSARO_WERROR=ON \
        -DCMAKE_INSTALL_PREFIX=/usr
fi
cmake --build "$build" -j "$jobs"

# The compile commands of the project's own sources only, without the
# precompiled header: the analysers read each source as it is written.
lintdb="$build/lint"
mkdir -p "$lintdb"
python3 - "$build/compile_commands.json" "$lintdb/compile_commands.json" "$here" "$areas" <<'PY'
import json, re, sys
source, target, here, areas = sys.argv[1:]
own = re.compile(re.escape(here) + r"/(" + areas + r")/.*\.cpp$")
pch = re.compile(r" -Winvalid-pch| -Wno-error=invalid-pch| -include \S*/cmake_pch\.hxx")
commands = [dict(entry, command=pch.sub("", entry["command"]))
            for entry in json.load(open(source)) if own.match(entry["file"])]
json.dump(commands, open(target, "w"), indent=1)
PY

failed=0
if [ "$what" = all ] || [ "$what" = tidy ]; then
    echo "lint: clang-tidy"
    # run-clang-tidy's own exit status also counts notes on Qt's headers; the
    # findings are the lines that name a check.
    run-clang-tidy-14 -p "$lintdb" -j "$jobs" -quiet -header-filter="^$here/($areas)/" \
        >"$lintdb/clang-tidy.log" 2>&1 || true
    if sed 's/\x1b\[[0-9;]*m//g' "$lintdb/clang-tidy.log" | grep -E '^/.*: (warning|error): .*\]$' | sort -u; then
        failed=1
    fi
fi
if [ "$what" = all ] || [ "$what" = cppcheck ]; then
    echo "lint: cppcheck"
    # --library=qt teaches cppcheck Qt's macros (Q_OBJECT, signals, slots,
    # foreach); cppcheck-qt6.cfg adds the Qt 6 ones that it lacks.
    cppcheck --project="$lintdb/compile_commands.json" --quiet --error-exitcode=1 --inline-suppr \
        --enable=warning,performance,portability --library=qt --library="$here/scripts/cppcheck-qt6.cfg" \
        --std=c++17 -j "$jobs" \
        --template='{file}:{line}:{column}: {severity}: {message} [{id}]' || failed=1
fi
exit $failed
