#!/usr/bin/env bash
# Peak memory of converting one 16000 x 16000 JPEG (1,024 MB as ARGB pixels) to BMP, PNG and
# PDF at 72 dpi, against ImageMagick and GraphicsMagick doing the same. The goal for Ormidon is
# under 2.5 x the picture's ARGB size; the table gives each tool's peak resident memory (MB),
# its wall time (s) and the ratio of the peak to the ARGB size.
#
#   bench/convert_memory.sh [SIDE]     SIDE x SIDE pixels (default 16000)
set -euo pipefail

ROOT="$(cd "$(dirname "$0")/.." && pwd)"
BUILD="${BUILD:-$ROOT/build-bench-flow}"
SIDE="${1:-16000}"

source "$ROOT/bench/lib.sh"
install_missing graphicsmagick imagemagick time
# The real ImageMagick, whatever else answers to "convert" on this machine.
IM=/usr/bin/convert-im6.q16

cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$BUILD" --target bench_convert_all >/dev/null
BENCH="$BUILD/bench/bench_convert_all"

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
mkdir -p "$WORK/src" "$WORK/out"
# A smooth picture (a gradient with a little noise) at 72 dpi, so one pixel is one point.
gm convert -size "${SIDE}x${SIDE}" gradient:navy-orange -density 72 -units PixelsPerInch \
    -quality 90 "$WORK/src/big.jpg"
argb=$(( SIDE * SIDE * 4 / 1048576 ))

# peak RSS in MB and wall seconds of a command, from GNU time
# (a tool that refuses the picture, as ImageMagick's system policy does past its area limit,
# is listed as refused)
measure() {
    if /usr/bin/time -f '%M %e' -o "$WORK/time" "$@" >/dev/null 2>&1; then
        awk '{ printf "%d %s\n", $1 / 1024, $2 }' "$WORK/time"
    else
        echo "refused -"
    fi
}
row() {
    local job=$1 tool=$2; shift 2
    read -r mb secs < <(measure "$@")
    local ratio="-"
    [ "$mb" = refused ] || ratio=$(printf '%.2fx' "$(echo "$mb / $argb" | bc -l)")
    printf '| %-12s | %-15s | %7s | %6s | %6s |\n' "$job" "$tool" "$mb" "$secs" "$ratio"
}

echo "picture: ${SIDE} x ${SIDE}, ARGB size ${argb} MB"
echo "| job          | tool            | peak MB | time s | x ARGB |"
echo "|--------------|-----------------|---------|--------|--------|"
for pair in "BMPf bmp" "PNGf png" "PDF  pdf"; do
    code=${pair:0:4}
    ext=${pair:5}
    rm -f "$WORK/out/"*
    row "JPEG to $ext" Ormidon "$BENCH" "$WORK/src" "$WORK/out" "$code" 72
    row "JPEG to $ext" ImageMagick "$IM" "$WORK/src/big.jpg" "$WORK/out/im.$ext"
    row "JPEG to $ext" GraphicsMagick gm convert "$WORK/src/big.jpg" "$WORK/out/gm.$ext"
done
