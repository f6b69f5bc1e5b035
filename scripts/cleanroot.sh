#!/usr/bin/env bash
# Runs in a clean Debian 12 root, in a chroot. Needs root (chroot, mount) and
# debootstrap.
#   scripts/cleanroot.sh PACKAGE.deb
#       Proof that the Debian package stands on its own: installs it, letting
#       apt resolve its dependencies and nothing else, and plays the till demo.
#       (scripts/tessaro.sh cleanroot builds the package first.)
#   scripts/cleanroot.sh --newcomer REPOSITORY
#       A newcomer's first two commands: on a root with what a new developer
#       machine has (compiler, CMake, GoogleTest, the analysers), a clone of
#       REPOSITORY's checked-out branch runs the README's demo, then its test
#       command, each timed, without ccache. (scripts/tessaro.sh newcomer.)
# The clean root is made once with debootstrap from the Debian mirror that apt
# uses and kept as a tar archive in TESSARO_CLEANROOT_CACHE (default
# ~/.cache/tessaroback); each run unpacks a fresh copy and removes it afterwards.
set -euo pipefail

usage="usage: scripts/cleanroot.sh PACKAGE.deb | --newcomer REPOSITORY"
deb=""
repository=""
if [ "${1:-}" = "--newcomer" ]; then
    repository="$(realpath "${2:?$usage}")"
else
    deb="$(realpath "${1:?$usage}")"
fi
# What a new developer machine of the team has before the README's commands.
developer_machine=(g++ make cmake git libgtest-dev libgmock-dev libbenchmark-dev clang-format clang-tidy cppcheck
                   gdb valgrind)
cache="${TESSARO_CLEANROOT_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tessaroback}"
archive="$cache/bookworm-minbase.tar"

step_start=$SECONDS
step() {
    echo "cleanroot: $* ($((SECONDS - step_start)) s so far)"
}

# The first Debian mirror of apt's own sources, in either format.
debian_mirror() {
    local sources=(/etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources)
    local mirror
    mirror="$( (grep -hsE '^deb (\[[^]]*\] )?https?://[^ ]+ bookworm ' "${sources[@]}" | awk '{print ($2 ~ /^\[/) ? $3 : $2}';
                grep -hsA2 '^URIs:' "${sources[@]}" | awk '/^URIs:/ {uri=$2} /^Suites:.* bookworm( |$)/ {print uri}') |
              grep -v security | head -n 1)"
    echo "${mirror:-http://deb.debian.org/debian}"
}

if [ ! -f "$archive" ]; then
    mirror="$(debian_mirror)"
    step "making a clean Debian 12 root from $mirror (once; kept in $archive)"
    mkdir -p "$cache"
    fresh="$(mktemp -d "$cache/bootstrap.XXXXXX")"
    debootstrap --variant=minbase bookworm "$fresh" "$mirror" >"$cache/debootstrap.log"
    tar -C "$fresh" -cf "$archive.part" .
    mv "$archive.part" "$archive"
    rm -rf "$fresh"
fi

root="$(mktemp -d /var/tmp/tessaro-cleanroot.XXXXXX)"
cleanup() {
    umount "$root/proc" 2>/dev/null || true
    # Never into a file system still mounted there.
    rm -rf --one-file-system "$root"
}
trap cleanup EXIT

step "unpacking the clean root into $root"
tar -C "$root" -xf "$archive"
# The chroot reads the host's name server and, when apt has them, the same
# Debian sources as the host (security updates included).
cp /etc/resolv.conf "$root/etc/resolv.conf"
if [ -f /etc/apt/sources.list.d/debian.sources ]; then
    cp /etc/apt/sources.list.d/debian.sources "$root/etc/apt/sources.list.d/"
    rm -f "$root/etc/apt/sources.list"
fi
mount -t proc proc "$root/proc"

in_root() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}

if [ -n "$repository" ]; then
    step "installing what a new developer machine has: ${developer_machine[*]}"
    in_root apt-get update -qq
    in_root apt-get install -y -qq "${developer_machine[@]}" >"$root.apt.log" 2>&1 ||
        { tail -n 40 "$root.apt.log" >&2; rm -f "$root.apt.log"; exit 1; }
    rm -f "$root.apt.log"
    git clone -q "$repository" "$root/root/tessaroback"
    echo "cleanroot: cloned $(git -C "$repository" rev-parse --short HEAD) into /root/tessaroback"
    for command in demo test; do
        step "scripts/tessaro.sh $command, as the README says"
        command_start=$SECONDS
        root_before=$(du -smx "$root" | cut -f1)
        build_before=$(du -sm "$root/root/tessaroback/build" 2>/dev/null | cut -f1 || echo 0)
        in_root sh -c "cd /root/tessaroback && CCACHE_DISABLE=1 scripts/tessaro.sh $command" >"$root.$command.log" 2>&1 ||
            { tail -n 60 "$root.$command.log" >&2; rm -f "$root.$command.log"; exit 1; }
        grep '^tessaro: installed' "$root.$command.log" || true
        tail -n 3 "$root.$command.log"
        rm -f "$root.$command.log"
        build_after=$(du -sm "$root/root/tessaroback/build" | cut -f1)
        echo "cleanroot: $command passed in $((SECONDS - command_start)) s; build/ holds $build_after MiB;" \
            "the rest of the root grew by $(( $(du -smx "$root" | cut -f1) - root_before - (build_after - build_before) )) MiB"
    done
    exit 0
fi

cp "$deb" "$root/tmp/"
step "installing $(basename "$deb") with apt"
before=$(du -skx "$root" | cut -f1)
packages_before=$(in_root dpkg-query -W | wc -l)
install_start=$SECONDS
in_root apt-get update -qq
in_root apt-get install -y -qq --no-install-recommends "/tmp/$(basename "$deb")" >"$root.apt.log" 2>&1 ||
    { tail -n 40 "$root.apt.log" >&2; rm -f "$root.apt.log"; exit 1; }
rm -f "$root.apt.log"
echo "cleanroot: apt installed the package and $(( $(in_root dpkg-query -W | wc -l) - packages_before - 1 )) dependencies" \
    "in $((SECONDS - install_start)) s; the root grew by $(( ($(du -skx "$root" | cut -f1) - before) / 1024 )) MiB"

step "playing tessaro-till demo in the clean root"
demo_start=$SECONDS
in_root sh -c 'cd /tmp && tessaro-till demo'
echo "cleanroot: the demo passed in $((SECONDS - demo_start)) s; $((SECONDS - step_start)) s in all"
