#!/usr/bin/env bash
# One entry point for a fresh Debian 12 machine: installs what the build lacks,
# configures, builds and runs.
#   scripts/tessaro.sh demo      build the till and the plug-in, then play the bundled till scenarios
#   scripts/tessaro.sh test      build everything, then run the whole test suite through CTest
#   scripts/tessaro.sh package   build both Debian packages (tools in build/, plug-in against the stand-in SDK) and check them
#   scripts/tessaro.sh plugin-alone  install the stand-in as a host SDK, build the plug-in alone against it, play the demo with it
#   scripts/tessaro.sh plugin-package --sdk DIR [--plugin-dir DIR]  the plug-in package for a till, against the host SDK in DIR
#   scripts/tessaro.sh cleanroot build the tools package, install it into a clean Debian 12 root, play the demo there
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
# The plug-in-only build, and the stand-in installed as a host SDK for it.
plugin_build="${TESSARO_PLUGIN_BUILD_DIR:-$here/build-plugin}"
standin_sdk="${TESSARO_STANDIN_SDK_DIR:-$build/host-sdk}"
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

# The tools package from build/: its binaries and documents, then the package.
build_tools_package() {
    configure >/dev/null
    cmake --build "$build" -j "$jobs" --target tessaro-till tessaro-emulator tessaroback packagedocs manpages
    make_package "$build"
}

# CPack's staging copy (170 MB, mostly debug symbols) is not kept.
make_package() {
    (cd "$1" && rm -f ./*.deb ./*.ddeb ./*.lintian.log && cpack -G DEB >/dev/null && rm -rf _CPack_Packages)
}

# The stand-in under build/ installed as a host SDK into a fresh prefix:
# headers, libhost.so and the CMake package TessaroHostSDK.
install_standin_sdk() {
    configure >/dev/null
    cmake --build "$build" -j "$jobs" --target host
    rm -rf "$standin_sdk"
    cmake --install "$build" --component sdk --prefix "$standin_sdk" >/dev/null
    echo "plugin: the stand-in SDK in $standin_sdk"
}

# The plug-in alone, from its own build tree, against the host SDK in $1;
# further arguments go to CMake.
build_plugin_alone() {
    local sdk="$1"
    shift
    local start=$SECONDS
    cmake -S "$here" -B "$plugin_build" -G Ninja -DCMAKE_BUILD_TYPE="${TESSARO_BUILD_TYPE:-RelWithDebInfo}" \
        -DTESSARO_WERROR=ON -DCMAKE_INSTALL_PREFIX=/usr -DTESSARO_PLUGIN_ONLY=ON -DTESSARO_HOST_SDK="$sdk" "$@" >/dev/null
    cmake --build "$plugin_build" -j "$jobs" --target tessaroback packagedocs
    echo "plugin: built alone against $sdk in $((SECONDS - start)) s: $plugin_build/plugins/libtessaroback.so"
}

# Both packages, each checked by scripts/packagecheck.sh: lintian without
# error, under 10 MB, working document links, and the plug-in package holding
# the plug-in alone without a run path.
build_packages() {
    build_tools_package
    install_standin_sdk
    build_plugin_alone "$standin_sdk"
    make_package "$plugin_build"
    local deb
    for deb in "$build"/tessaroback-tools_*.deb "$plugin_build"/tessaroback_*.deb; do
        "$here/scripts/packagecheck.sh" "$deb"
    done
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
        build_packages
        ;;
    plugin-alone)
        shift
        install_missing "${packages[@]}"
        install_standin_sdk
        build_plugin_alone "$standin_sdk"
        # The till of build/ (the emulator runs inside it) plays the demo through that plug-in.
        cmake --build "$build" -j "$jobs" --target tessaro-till
        "$build/bin/tessaro-till" demo --plugins "$plugin_build/plugins" "$@"
        ;;
    plugin-package)
        shift
        sdk=""
        plugin_dir=()
        while [ $# -gt 0 ]; do
            case "$1" in
                --sdk) sdk="$(realpath "${2:?--sdk needs the folder of the host SDK}")"; shift 2 ;;
                --plugin-dir) plugin_dir=(-DTESSARO_HOST_PLUGIN_DIR="${2:?--plugin-dir needs the plug-in folder of the host}"); shift 2 ;;
                *) echo "tessaro: plugin-package: unknown argument '$1'" >&2; exit 2 ;;
            esac
        done
        [ -n "$sdk" ] || { echo "tessaro: plugin-package needs --sdk DIR, the host SDK's folder" >&2; exit 2; }
        install_missing "${packages[@]}" "${package_packages[@]}"
        build_plugin_alone "$sdk" "${plugin_dir[@]}"
        make_package "$plugin_build"
        "$here/scripts/packagecheck.sh" "$plugin_build"/tessaroback_*.deb
        ;;
    cleanroot)
        shift
        install_missing "${packages[@]}" "${package_packages[@]}" "${cleanroot_packages[@]}"
        build_tools_package
        exec "$here/scripts/cleanroot.sh" "$build"/tessaroback-tools_*.deb
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
