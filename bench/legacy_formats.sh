#!/usr/bin/env bash
# The older output formats on ten of Debian's JPEG wallpaper photographs (every fifth one, 72 dpi
# recorded, so that every tool writes the photographs' own pixels), side by side in one run with
# what a user would pick instead on Linux:
#
#   MooV  Ormidon's one-frame PNG movie    vs  ffmpeg -c:v png into .mov (two files at a time)
#   SWFL  Ormidon's lossless bitmap SWF    vs  ffmpeg's swf muxer (MJPEG: it writes no lossless)
#   PNTG  Ormidon's dithered MacPaint page vs  netpbm: jpegtopnm | pamscale -xyfit 576 720 |
#                                              ppmtopgm | pamditherbw -fs | pamtopnm | pbmtomacp
#   qtif  Ormidon's QuickTime image        vs  ImageMagick writing the same JPEG payload (q 90)
#   FLC   Ormidon's 256-colour FLC         (no writer on Debian to compare with)
#
# Each line: wall seconds, processor seconds (user + system) and peak resident memory (MB; for
# the tools run two at a time, that of the larger process), and Ormidon's wall and processor
# time as a ratio of the other tool's. The machine is shared: compare ratios within one run.
#
#   bench/legacy_formats.sh               BUILD=build bench/legacy_formats.sh
set -euo pipefail

ROOT="$(cd "$(dirname "$0")/.." && pwd)"
BUILD="${BUILD:-$ROOT/build}"
APP="$BUILD/src/ormidon"
source "$ROOT/bench/lib.sh"
install_missing gnome-backgrounds mate-backgrounds plasma-workspace-wallpapers netpbm imagemagick ffmpeg time
[ -x "$APP" ] || { echo "build Ormidon first (scripts/build), or give BUILD=" >&2; exit 2; }

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
mkdir -p "$WORK/src"
find /usr/share/backgrounds /usr/share/wallpapers -type f \( -iname '*.jpg' -o -iname '*.jpeg' \) |
    sort | awk 'NR % 5 == 1' | head -n 10 | while read -r f; do
    name="${f#/usr/share/}"
    cp "$f" "$WORK/src/${name//\//_}"
done
python3 "$ROOT/bench/set_density_72.py" "$WORK/src"/*.jpg
export HOME="$WORK/home" XDG_RUNTIME_DIR="$WORK/run"
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
mp=$(identify -format '%w %h\n' "$WORK/src"/*.jpg | awk '{s += $1 * $2} END {printf "%.0f", s / 1e6}')
echo "10 photographs, $mp megapixels; $(nproc) cores, shared"

measure() { # label command...: prints wall, cpu, peak MB; leaves "wall cpu" in $WORK/last
    local label=$1; shift
    /usr/bin/time -f "%e %U %S %M" -o "$WORK/time" "$@" >/dev/null 2>&1 || echo "  ($label failed)"
    read -r wall user sys peak < "$WORK/time"
    cpu=$(echo "$user + $sys" | bc)
    printf '  %-44s %7.2f s wall %7.2f s cpu %6d MB\n' "$label" "$wall" "$cpu" $((peak / 1024))
    echo "$wall $cpu" > "$WORK/last"
}
ratio() { # ormidon-file other-file
    read -r ow oc < "$1"; read -r tw tc < "$2"
    printf '  %-44s %7.2fx wall %6.2fx cpu\n' "Ormidon / other" "$(echo "$ow / $tw" | bc -l)" "$(echo "$oc / $tc" | bc -l)"
}
ours() { # code: Ormidon's Convert All engine on the folder
    rm -rf "$WORK/out" && mkdir -p "$WORK/out"
    measure "ormidon --convert '$1'" "$APP" --convert "$1" --dest "$WORK/out" "$WORK/src"
    cp "$WORK/last" "$WORK/ours"
}
peer() { # label script (run on each file, two at a time, with $1 the source and $2 the output folder)
    rm -rf "$WORK/peer" && mkdir -p "$WORK/peer"
    printf '%s\n' "$2" > "$WORK/peer.sh"
    measure "$1" bash -c "ls '$WORK/src'/*.jpg | xargs -P 2 -I{} bash '$WORK/peer.sh' {} '$WORK/peer'"
    ratio "$WORK/ours" "$WORK/last"
}

echo "MooV"
ours MooV
peer "ffmpeg -c:v png .mov" 'ffmpeg -v error -nostdin -i "$1" -frames:v 1 -c:v png "$2/$(basename "$1").mov"'
echo "SWFL"
ours SWFL
peer "ffmpeg -f swf (mjpeg)" 'ffmpeg -v error -nostdin -i "$1" -frames:v 1 -c:v mjpeg -q:v 2 -f swf "$2/$(basename "$1").swf"'
echo "PNTG"
ours PNTG
peer "netpbm pipeline" 'jpegtopnm "$1" 2>/dev/null | pamscale -xyfit 576 720 | ppmtopgm | pamditherbw -fs | pamtopnm | pbmtomacp > "$2/$(basename "$1").mac"'
echo "qtif"
ours qtif
peer "convert -quality 90 (JPEG payload)" 'convert "$1" -quality 90 "$2/$(basename "$1").jpg"'
echo "FLC"
ours "FLC "
