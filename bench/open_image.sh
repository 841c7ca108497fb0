#!/usr/bin/env bash
# Opening images: Ormidon's decoder against a bare libjpeg-turbo decode of a 24-megapixel JPEG,
# and the peak memory of decoding a 100-megapixel JPEG. Builds bench_open_image in
# build-bench-load, makes the pictures in a temporary folder and prints the table.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench-load"

source "$root/bench/lib.sh"
install_missing libturbojpeg0-dev imagemagick

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_open_image

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Photo-like content: a soft colour field with fine grain, which JPEG codes like a photograph
# (smooth areas plus texture) rather than like flat synthetic colour.
echo "making the test pictures..."
convert -size 1500x1000 plasma:fractal -blur 0x2 -resize 6000x4000! \
    -attenuate 0.15 +noise Gaussian -quality 90 "$work/photo24.jpg"
"$build/bench/bench_open_image" --make-large "$work/photo24.jpg" "$work/photo100.jpg" 10000
ls -l "$work"/*.jpg

"$build/bench/bench_open_image" "$work/photo24.jpg" "$work/photo100.jpg"

# For comparison, the tool a user would otherwise pick, decoding the same file to raw RGBA.
start=$(date +%s.%N)
convert "$work/photo24.jpg" rgba:/dev/null
end=$(date +%s.%N)
echo "    ImageMagick convert to RGBA (one run, including start-up): $(echo "($end - $start) * 1000" | bc) ms"
