#!/usr/bin/env bash
# Stepping through a folder of 24-megapixel JPEGs: time from the arrow key to the picture drawn,
# with and without decode-ahead, beside the bare decode of the same file by djpeg
# (libjpeg-turbo's command-line decoder) and by Qt, which a viewer that decodes each picture
# when it is stepped to pays at every step. Builds bench_step_latency in build-bench-step, makes
# the pictures from a wallpaper photograph in a temporary folder and prints the table, with the
# CPU time of the run (the machine may be shared). One row steps every 100 ms, as with the key
# held down, where a step waits for the decode under way.
# Usage: bench/step_latency.sh [steps]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench-step"
steps=${1:-10}

source "$root/bench/lib.sh"
install_missing libjpeg-turbo-progs imagemagick mate-backgrounds

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_step_latency

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/photos"
prepare_photo_corpus "$work/corpus" >/dev/null
# The largest photograph of the corpus, brought to 6000 x 4000 and varied per file (turned,
# mirrored, tinted), so that no two files are alike.
photo=$(ls -S "$work/corpus"/*.jpg | head -1)
echo "making $((steps + 1)) pictures of 6000 x 4000 from $(basename "$photo")..."
convert "$photo" -resize '6000x4000^' -gravity center -extent 6000x4000 "$work/base.ppm"
for i in $(seq 0 "$steps"); do
    variant=()
    [ $((i % 2)) -eq 1 ] && variant+=(-flop)
    [ $((i % 3)) -eq 2 ] && variant+=(-flip)
    convert "$work/base.ppm" "${variant[@]}" -modulate 100,100,$((100 + i * 7)) \
        -quality 90 "$work/photos/$(printf 'step%02d.jpg' "$i")"
done
rm -f "$work/base.ppm"
ls -l "$work/photos" | head -3

QT_QPA_PLATFORM=offscreen /usr/bin/time -f "bench_step_latency: wall %e s, user %U s, sys %S s" \
    "$build/bench/bench_step_latency" "$work/photos" "$steps"

# What a viewer without decode-ahead pays at each step at least: the bare decode of the file.
first="$work/photos/step00.jpg"
for run in 1 2 3; do
    /usr/bin/time -f "%e %U %S" djpeg -outfile /dev/null "$first" 2>>"$work/djpeg.times"
done
sort -n "$work/djpeg.times" | sed -n 2p |
    awk '{ printf "%-50s %12.1f   (user %.2f s, sys %.2f s)\n", "bare djpeg decode of one file (median of 3)", $1 * 1000, $2, $3 }'
