#!/usr/bin/env bash
# Lossless JPEG turns: Ormidon's Image > Rotate Right on a 24-megapixel photograph against the
# tools a user would otherwise pick: jpegtran (-rotate 90 -copy all -perfect, to a new file) and
# exiftran (-9 -i, in place, which also resets the orientation), and ImageMagick's lossy turn
# (decode, turn, encode again at quality 92) for scale. Builds bench_jpeg_turn in
# build-bench-turn, makes the picture in a temporary folder and prints the medians of wall and
# CPU (user + system) time. RUNS=n sets the number of runs (default 8).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="${BUILD:-$root/build-bench-turn}"
runs=${RUNS:-8}

source "$root/bench/lib.sh"
install_missing libturbojpeg0-dev libjpeg-turbo-progs exiftran imagemagick

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_jpeg_turn

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "making the test picture..."
convert -size 1500x1000 plasma:fractal -blur 0x2 -resize 6000x4000! \
    -attenuate 0.15 +noise Gaussian -quality 90 "$work/photo24.jpg"
ls -l "$work/photo24.jpg"

# Prints the median "wall cpu" in milliseconds of running the command $runs times.
timed() {
  for _ in $(seq "$runs"); do
    /usr/bin/time -f '%e %U %S' "$@" 2>&1 >/dev/null | tail -n1
  done | awk '{ print $1 * 1000, ($2 + $3) * 1000 }' | sort -n |
    awk '{ w[NR] = $1; c[NR] = $2 } END { m = int((NR + 1) / 2); printf "%.0f ms wall, %.0f ms CPU\n", w[m], c[m] }'
}

echo
"$build/bench/bench_jpeg_turn" "$work/photo24.jpg" "$runs"
cp "$work/photo24.jpg" "$work/in.jpg"
echo "jpegtran -rotate 90 -copy all -perfect: $(timed jpegtran -rotate 90 -copy all -perfect -outfile "$work/out.jpg" "$work/in.jpg")"
echo "    jpegtran's output: $(stat -c %s "$work/out.jpg") bytes"
echo "exiftran -9 -i (in place):              $(timed exiftran -9 -i "$work/in.jpg")"
echo "    exiftran's output: $(stat -c %s "$work/in.jpg") bytes"
echo "ImageMagick convert -rotate 90 (lossy):  $(timed convert "$work/photo24.jpg" -rotate 90 -quality 92 "$work/lossy.jpg")"
echo "(the machine may be shared with other builds: compare CPU times and ratios, repeat runs)"
