#!/usr/bin/env bash
# Packs the build with `cpack -G DEB` into a scratch folder and checks the package without
# installing it: its files, its dependencies (found by dpkg-shlibdeps), and that the program
# unpacked from it starts and tells its version.
set -euo pipefail
build=${1:?path to the build folder}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
command -v dpkg-shlibdeps >/dev/null || fail "dpkg-shlibdeps is missing (package dpkg-dev)"

cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/out" >"$work/cpack.log" 2>&1 \
  || { cat "$work/cpack.log" >&2; fail "cpack -G DEB failed"; }
deb=$(find "$work/out" -maxdepth 1 -name 'ormidon_*.deb')
[ -n "$deb" ] || fail "cpack made no ormidon_*.deb"

dpkg-deb -c "$deb" | awk '{print $6}' >"$work/files"
id=org.ormidon.Ormidon
for path in ./usr/bin/ormidon ./usr/share/applications/$id.desktop \
            ./usr/share/metainfo/$id.metainfo.xml ./usr/share/icons/hicolor/scalable/apps/$id.svg; do
  grep -qx "$path" "$work/files" || fail "the package lacks $path"
done
grep -q '/ormidon/ormidon_ffmpeg\.so$' "$work/files" || fail "the package lacks ormidon_ffmpeg.so"
for size in 16 22 24 32 48 64 128 256 512; do
  grep -qx "./usr/share/icons/hicolor/${size}x${size}/apps/$id.png" "$work/files" \
    || fail "the package lacks the ${size}x${size} icon"
done

depends=$(dpkg-deb -f "$deb" Depends)
for lib in libqt6core6 libqt6widgets6 libpoppler-qt6 'libmagick++' libtiff libgif libavformat; do
  grep -q "$lib" <<<"$depends" || fail "the dependencies name no $lib: $depends"
done
[ "$(dpkg-deb -f "$deb" Architecture)" = "$(dpkg --print-architecture)" ] \
  || fail "the package is not for $(dpkg --print-architecture)"

dpkg-deb -x "$deb" "$work/root"
version=$(QT_QPA_PLATFORM=offscreen HOME="$work" "$work/root/usr/bin/ormidon" --version) \
  || fail "the packed program did not start"
grep -q "Ormidon" <<<"$version" || fail "the packed program answered '$version' to --version"
# The unpacked program finds its FFmpeg module beside it: it writes a movie that ffprobe reads.
convert -size 40x20 xc:red "$work/red.png"
mkdir "$work/movies"
QT_QPA_PLATFORM=offscreen HOME="$work" "$work/root/usr/bin/ormidon" --convert moov \
  --dest "$work/movies" "$work/red.png" >"$work/convert.log" 2>&1 \
  || { cat "$work/convert.log" >&2; fail "the packed program wrote no movie"; }
size=$(ffprobe -v error -show_entries stream=width,height -of csv=p=0 "$work/movies/red.MooV") \
  || fail "ffprobe cannot read the packed program's movie"
[ "$size" = "40,20" ] || fail "the packed program's movie is '$size', not 40,20"
echo "PASS: $(basename "$deb"), $(wc -l <"$work/files") entries, Depends: $depends"
