#!/usr/bin/env bash
# Installs the build into a scratch DESTDIR the way a packager would (`cmake --install` with the
# /usr prefix) and checks what lands there: the executable, the desktop entry and metainfo (valid
# for desktop-file-validate and appstreamcli), and the icons, the SVG plus a real PNG of each
# hicolor size.
set -euo pipefail
build=${1:?path to the build folder}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
for tool in desktop-file-validate appstreamcli identify; do
  command -v "$tool" >/dev/null || fail "$tool is missing (scripts/install-deps installs it)"
done

DESTDIR="$work/root" cmake --install "$build" --prefix /usr >"$work/install.log" \
  || { cat "$work/install.log" >&2; fail "cmake --install failed"; }
root="$work/root/usr"
id=org.ormidon.Ormidon

[ -x "$root/bin/ormidon" ] || fail "no executable at /usr/bin/ormidon"
entry="$root/share/applications/$id.desktop"
[ -f "$entry" ] || fail "no desktop entry $id.desktop"
desktop-file-validate "$entry" || fail "desktop-file-validate refused the desktop entry"
for key in TryExec=ormidon StartupNotify=true Actions=NewInstance\; Icon=$id Keywords=; do
  grep -q "^$key" "$entry" || fail "the desktop entry has no $key"
done
grep -q '^Exec=ormidon --new-instance' "$entry" || fail "the New Window action does not start a new instance"
metainfo="$root/share/metainfo/$id.metainfo.xml"
[ -f "$metainfo" ] || fail "no metainfo $id.metainfo.xml"
appstreamcli validate --no-net "$metainfo" || fail "appstreamcli refused the metainfo"

# FFmpeg's calls, in the module the program loads for movies and FLC animations.
module=$(find "$root/lib" -name ormidon_ffmpeg.so)
[ -n "$module" ] || fail "no ormidon_ffmpeg.so under /usr/lib"
nm -D --defined-only "$module" | grep -q ' ormidon_ffmpeg_entry$' \
  || fail "ormidon_ffmpeg.so does not export its entry"

icons="$root/share/icons/hicolor"
[ -s "$icons/scalable/apps/$id.svg" ] || fail "no scalable icon"
for size in 16 22 24 32 48 64 128 256 512; do
  png="$icons/${size}x${size}/apps/$id.png"
  [ -f "$png" ] || fail "no ${size}x${size} icon"
  got=$(identify -format '%m %w %h' "$png") || fail "the ${size}x${size} icon is no image"
  [ "$got" = "PNG $size $size" ] || fail "the ${size}x${size} icon is '$got'"
done
# An icon that is drawn, not empty: some pixels are opaque.
opaque=$(convert "$icons/48x48/apps/$id.png" -alpha extract -format '%[fx:maxima]' info:)
[ "$opaque" != 0 ] || fail "the 48x48 icon is fully transparent"

# Nothing else: no stray build files among what is installed.
count=$(find "$work/root" -type f | wc -l)
[ "$count" -eq 14 ] || { find "$work/root" -type f >&2; fail "$count files installed, 14 expected"; }
echo "PASS: $count files installed under /usr"
