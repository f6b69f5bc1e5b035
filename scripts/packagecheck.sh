#!/usr/bin/env bash
# Checks one Debian package of the project (scripts/tessaro.sh package runs it
# on both):
#   scripts/packagecheck.sh PACKAGE.deb
# - lintian reports no error (its report goes to PACKAGE.lintian.log);
# - the package is under 10 MB;
# - every relative link of every Markdown document it installs resolves to a
#   file of the package;
# - tessaroback (the plug-in for a till) holds the plug-in and documents only:
#   no stand-in, emulator or till file, and a plug-in without a run path;
# - tessaroback-tools: every program and library finds each library it needs,
#   through its run path inside the package or on the system.
set -euo pipefail

deb="$(realpath "${1:?usage: scripts/packagecheck.sh PACKAGE.deb}")"
name="$(dpkg-deb -f "$deb" Package)"
root="$(mktemp -d)"
trap 'rm -rf "$root"' EXIT
dpkg-deb -x "$deb" "$root"
failures=0
fail() {
    echo "packagecheck: $name: $*" >&2
    failures=$((failures + 1))
}

echo "packagecheck: $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB, $(dpkg-deb -c "$deb" | grep -cv '/$') files"
log="${deb%.deb}.lintian.log"
# lintian leaves the mark E: on an error, W: on a warning.
lintian --tag-display-limit 0 "$deb" | tee "$log" || true  # judged by its marks below
grep -q '^E: ' "$log" && fail "lintian reports errors"
[ "$(stat -c %s "$deb")" -lt $((10 * 1024 * 1024)) ] || fail "over 10 MB"

# Links as Markdown writes them, [text](target); addresses and anchors of the same page are no files.
links=0
while IFS= read -r document; do
    while IFS= read -r target; do
        target="${target%%#*}"
        case "$target" in ''|*://*|mailto:*) continue ;; esac
        links=$((links + 1))
        [ -e "$(dirname "$document")/$target" ] || fail "${document#"$root"} links $target, which the package lacks"
    done < <(grep -oE '\]\([^)]*\)' "$document" | sed 's/^](//; s/)$//')
done < <(find "$root" -name '*.md')
echo "packagecheck: $links relative links of the installed documents checked"

elves=()
while IFS= read -r file; do
    file -b "$file" | grep -q '^ELF' && elves+=("$file")
done < <(find "$root" -type f)

case "$name" in
    tessaroback)
        unexpected="$(find "$root" -type f ! -name 'libtessaroback.so' ! -path '*/usr/share/doc/*' -printf '/%P\n')"
        [ -z "$unexpected" ] || fail "holds more than the plug-in and its documents: $unexpected"
        [ ${#elves[@]} -eq 1 ] || fail "holds ${#elves[@]} binaries, not the plug-in alone"
        for elf in "${elves[@]}"; do
            if readelf -d "$elf" | grep -qE 'R(UN)?PATH'; then
                fail "${elf#"$root"} has a run path: $(readelf -d "$elf" | grep -E 'R(UN)?PATH')"
            fi
        done
        echo "packagecheck: the plug-in needs $(readelf -d "${elves[0]}" | grep -c NEEDED) libraries"
        ;;
    tessaroback-tools)
        for elf in "${elves[@]}"; do
            missing="$(ldd "$elf" | grep 'not found' || true)"
            [ -z "$missing" ] || fail "${elf#"$root"} does not find $missing"
        done
        echo "packagecheck: ${#elves[@]} binaries checked for the libraries they need"
        ;;
    *)
        fail "unknown package"
        ;;
esac
[ "$failures" -eq 0 ] || exit 1
echo "packagecheck: $name passed"
