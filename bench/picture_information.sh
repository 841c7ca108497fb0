#!/usr/bin/env bash
# The information panel's reading of a picture (header, colour profile, camera data) against
# the decode a step does anyway, on 24-megapixel JPEG (with camera EXIF), PNG and TIFF files and
# on Debian's wallpaper photographs; beside it, the metadata tools a user would run instead
# (exiv2, exiftool: one process per file, start-up included). Builds bench_picture_information
# in build-bench-info. The machine may be shared: CPU time is printed beside wall time.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD:-"$root/build-bench-info"} # BUILD=build reuses a configured build folder

source "$root/bench/lib.sh"
install_missing imagemagick exiv2 libimage-exiftool-perl \
    gnome-backgrounds mate-backgrounds plasma-workspace-wallpapers

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_picture_information

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
echo "making the test pictures..."
convert -size 1500x1000 plasma:fractal -blur 0x2 -resize 6000x4000! \
    -attenuate 0.15 +noise Gaussian -quality 90 "$work/photo24.jpg"
exiv2 -k -M"set Exif.Image.Make Ascii Canon" -M"set Exif.Image.Model Ascii Canon EOS R5" \
    -M"set Exif.Photo.ExposureTime Rational 1/250" -M"set Exif.Photo.FNumber Rational 28/10" \
    -M"set Exif.Photo.ISOSpeedRatings Short 400" -M"set Exif.Photo.FocalLength Rational 50/1" \
    -M"set Exif.Photo.DateTimeOriginal Ascii 2024:05:17 14:03:21" \
    -M"set Exif.GPSInfo.GPSLatitudeRef Ascii S" -M"set Exif.GPSInfo.GPSLatitude Rational 33/1 51/1 2484/100" \
    -M"set Exif.GPSInfo.GPSLongitudeRef Ascii E" -M"set Exif.GPSInfo.GPSLongitude Rational 151/1 12/1 5436/100" \
    "$work/photo24.jpg"
convert "$work/photo24.jpg" "$work/photo24.png"
convert "$work/photo24.jpg" -compress lzw "$work/photo24.tif"
prepare_photo_corpus "$work/wallpapers"
# The largest wallpapers: where a slow reading would show.
mapfile -t large < <(ls -S "$work"/wallpapers/*.jpg | head -n 5)

"$build/bench/bench_picture_information" "$work"/photo24.* "${large[@]}"

echo
echo "the tools a user would run instead, one process per file (median of 5 runs, wall ms):"
for tool in "exiv2 -q -pa" "exiftool -fast"; do
    for file in "$work/photo24.jpg" "$work/photo24.tif"; do
        times=()
        for _ in 1 2 3 4 5; do
            start=$(date +%s%N)
            $tool "$file" >/dev/null 2>&1 || true
            times+=($((($(date +%s%N) - start) / 1000000)))
        done
        median=$(printf '%s\n' "${times[@]}" | sort -n | sed -n 3p)
        printf '  %-16s %-14s %5s ms\n' "${tool%% *}" "$(basename "$file")" "$median"
    done
done
