#!/usr/bin/env bash
# One entry point for a fresh Debian 12 machine: installs what the build lacks,
# configures, builds and runs.
#   scripts/tessaro.sh demo      build the till and the plug-in, then play the bundled till scenarios
#   scripts/tessaro.sh test      build everything, then run the whole test suite through CTest
#   scripts/tessaro.sh package   build the Debian package in build/ and check it with lintian
#   scripts/tessaro.sh cleanroot build the package, install it into a clean Debian 12 root, play the demo there
#   scripts/tessaro.sh newcomer  time demo, then test, from a clone of HEAD in a clean Debian 12 root
#   scripts/tessaro.sh sanitize  build with clang's ASan+UBSan in build-asan, run the whole suite under them
#   scripts/tessaro.sh fuzz [S]  build the libFuzzer targets in build-asan, run each for S seconds (default 60)
#   scripts/tessaro.sh lint      clang-tidy and cppcheck over the project's code
#   scripts/tessaro.sh bench     build the benchmarks in build-bench (RelWithDebInfo) and run them
#   scripts/tessaro.sh simulate [ARGS]  build, then tessaro-till simulate ARGS (TESSARO_SANITIZE=1: in build-asan)
#   scripts/tessaro.sh setup     only install the missing Debian packages
# demo, test and package share build/ with one configuration, so each reuses
# what the others built. docs/quality.md tells what each gate checks.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TESSARO_BUILD_DIR:-$here/build}"
jobs="${TESSARO_JOBS:-$(nproc)}"

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-declarative-dev qt6-httpserver-dev qt6-websockets-dev libqt6sql6-sqlite
    qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-templates qml6-module-qtquick-controls
    qml6-module-qtquick-layouts qml6-module-qtqml-workerscript fonts-dejavu-core
    libcurl4-openssl-dev ca-certificates mold
)
# The quality gates' tools, installed by the commands that use them.
clang_packages=(clang-14 libclang-rt-14-dev)
lint_packages=(clang-tidy-14 cppcheck)
bench_packages=(libbenchmark-dev)
package_packages=(dpkg-dev file help2man lintian)
cleanroot_packages=(debootstrap)

usage() {
    # The comment block at the top of this file.
    sed -n '2,/^[^#]/p' "${BASH_SOURCE[0]}" | sed -n 's/^# \{0,1\}//p'
}

install_missing() {
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "tessaro: installing ${missing[*]}"
    local apt=(apt-get install -y --no-install-recommends "${missing[@]}")
    local start=$SECONDS
    if [ "$(id -u)" -eq 0 ]; then
        DEBIAN_FRONTEND=noninteractive apt-get update -qq
        DEBIAN_FRONTEND=noninteractive "${apt[@]}"
    elif command -v sudo >/dev/null 2>&1; then
        sudo DEBIAN_FRONTEND=noninteractive apt-get update -qq
        sudo DEBIAN_FRONTEND=noninteractive "${apt[@]}"
    else
        echo "tessaro: these Debian packages are missing; run as root:" >&2
        echo "  ${apt[*]}" >&2
        exit 1
    fi
    echo "tessaro: installed ${#missing[@]} packages and what they need in $((SECONDS - start)) s"
}

# build/ has one configuration for demo, test and package: another one would
# change the compile flags and so rebuild everything.
configure() {
    cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${TESSARO_BUILD_TYPE:-RelWithDebInfo}" \
        -DTESSARO_WERROR=ON -DCMAKE_INSTALL_PREFIX=/usr "$@"
}

configure_and_build() {
    configure "$@"
    cmake --build "$build" -j "$jobs"
}

# The sanitizer build also carries the fuzz targets, so that the fuzz gate
# reuses its objects (scripts/fuzz.sh builds and runs them there).
configure_sanitized() {
    build="${TESSARO_ASAN_BUILD_DIR:-$here/build-asan}"
    cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${TESSARO_BUILD_TYPE:-Debug}" \
        -DCMAKE_CXX_COMPILER=clang++-14 -DTESSARO_WERROR=ON -DTESSARO_SANITIZE=ON -DTESSARO_FUZZ=ON
}

# The package's binaries and documents, then the package; lintian must report
# no error and the package must stay under 10 MB.
build_package() {
    configure >/dev/null
    cmake --build "$build" -j "$jobs" --target tessaro-till tessaro-emulator tessaroback packagedocs manpages
    # CPack's staging copy (170 MB, mostly debug symbols) is not kept.
    (cd "$build" && rm -f ./*.deb ./*.ddeb && cpack -G DEB >/dev/null && rm -rf _CPack_Packages)
    local deb
    deb="$(ls "$build"/tessaroback_*.deb)"
    echo "package: $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB; symbols in $(basename "$(ls "$build"/tessaroback-dbgsym_*.ddeb)")"
    # lintian leaves the mark E: on an error, W: on a warning.
    lintian --tag-display-limit 0 "$deb" | tee "$build/lintian.log"
    if grep -q '^E: ' "$build/lintian.log"; then
        echo "package: lintian reports errors" >&2
        exit 1
    fi
    if [ "$(stat -c %s "$deb")" -ge $((10 * 1024 * 1024)) ]; then
        echo "package: over 10 MB" >&2
        exit 1
    fi
}

# Any sanitizer report ends the process with an error, and so fails its test.
sanitizer_environment() {
    export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:check_initialization_order=1:detect_stack_use_after_return=1"
    export LSAN_OPTIONS="suppressions=$here/tests/sanitizers/lsan.supp:print_suppressions=0"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
}

case "${1:-}" in
    setup)
        install_missing "${packages[@]}"
        ;;
    test)
        shift
        install_missing "${packages[@]}"
        configure_and_build
        ctest --test-dir "$build" --output-on-failure -j "$jobs" "$@"
        ;;
    sanitize)
        shift
        install_missing "${packages[@]}" "${clang_packages[@]}"
        configure_sanitized
        cmake --build "$build" -j "$jobs"
        sanitizer_environment
        ctest --test-dir "$build" --output-on-failure -j "$jobs" "$@"
        ;;
    fuzz)
        shift
        install_missing "${packages[@]}" "${clang_packages[@]}"
        configure_sanitized >/dev/null
        TESSARO_FUZZ_BUILD_DIR="$build" exec "$here/scripts/fuzz.sh" "$@"
        ;;
    lint)
        shift
        install_missing "${packages[@]}" "${lint_packages[@]}"
        exec "$here/scripts/lint.sh" "$@"
        ;;
    bench)
        shift
        install_missing "${packages[@]}" "${bench_packages[@]}"
        build="${TESSARO_BENCH_BUILD_DIR:-$here/build-bench}"
        cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTESSARO_WERROR=ON \
            -DTESSARO_BENCH=ON -DBUILD_TESTING=OFF
        cmake --build "$build" -j "$jobs" --target benchmarks
        for benchmark in "$build"/bin/bench_*; do
            "$benchmark" "$@"
        done
        ;;
    simulate)
        shift
        install_missing "${packages[@]}"
        if [ "${TESSARO_SANITIZE:-0}" = 1 ]; then
            install_missing "${clang_packages[@]}"
            configure_sanitized >/dev/null
            sanitizer_environment
        else
            configure >/dev/null
        fi
        cmake --build "$build" -j "$jobs" --target tessaro-till tessaro-till-cart tessaroback
        "$build/bin/tessaro-till" simulate --plugins "$build/plugins" "$@"
        ;;
    demo)
        shift
        install_missing "${packages[@]}"
        configure
        # Only what the demo plays: the till (the emulator runs inside it) and the plug-in.
        cmake --build "$build" -j "$jobs" --target tessaro-till tessaroback
        "$build/bin/tessaro-till" demo "$@"
        ;;
    package)
        shift
        install_missing "${packages[@]}" "${package_packages[@]}"
        build_package
        ;;
    cleanroot)
        shift
        install_missing "${packages[@]}" "${package_packages[@]}" "${cleanroot_packages[@]}"
        build_package
        exec "$here/scripts/cleanroot.sh" "$build"/tessaroback_*.deb
        ;;
    newcomer)
        shift
        install_missing "${cleanroot_packages[@]}"
        exec "$here/scripts/cleanroot.sh" --newcomer "$here"
        ;;
    -h|--help|help|"")
        usage
        ;;
    *)
        echo "tessaro: unknown command '$1'" >&2
        usage >&2
        exit 2
        ;;
esac
