#!/usr/bin/env bash
# One entry point for a fresh Debian 12 machine: installs what the build lacks,
# configures, builds and runs.
#   scripts/tessaro.sh demo   build, then play the bundled till scenarios against the emulator
#   scripts/tessaro.sh test   build, then run the whole test suite through CTest
#   scripts/tessaro.sh setup  only install the missing Debian packages
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TESSARO_BUILD_DIR:-$here/build}"
jobs="${TESSARO_JOBS:-$(nproc)}"

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-declarative-dev qt6-httpserver-dev qt6-websockets-dev libqt6sql6-sqlite
    qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtquick-templates qml6-module-qtquick-controls
    qml6-module-qtquick-layouts qml6-module-qtqml-workerscript fonts-dejavu-core
    libcurl4-openssl-dev ca-certificates
)

usage() {
    sed -n '2,7p' "${BASH_SOURCE[0]}" | sed 's/^# \{0,1\}//'
}

install_missing() {
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "tessaro: installing ${missing[*]}"
    local apt=(apt-get install -y --no-install-recommends "${missing[@]}")
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
}

configure_and_build() {
    cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${TESSARO_BUILD_TYPE:-RelWithDebInfo}" "$@"
    cmake --build "$build" -j "$jobs"
}

case "${1:-}" in
    setup)
        install_missing "${packages[@]}"
        ;;
    test)
        shift
        install_missing "${packages[@]}"
        configure_and_build -DTESSARO_WERROR=ON
        ctest --test-dir "$build" --output-on-failure -j "$jobs" "$@"
        ;;
    demo)
        shift
        install_missing "${packages[@]}"
        configure_and_build
        "$build/bin/tessaro-till" demo "$@"
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
