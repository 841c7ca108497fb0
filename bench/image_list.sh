#!/usr/bin/env bash
# The "Image List" tab on a folder of 1,000 real photographs (Debian's desktop backgrounds,
# copied under new names until there are COUNT), side by side with vipsthumbnail making 128-pixel
# thumbnails of the same files: Ormidon's fill with a cold thumbnail cache (first picture, first
# screenful, whole list), the same fill with a warm cache, the longest time the GUI thread spent
# away from its event loop, and the memory of the filled list. Each job runs RUNS times
# (default 3); the table shows medians.
#
#   bench/image_list.sh [COUNT]      (default 1000)
#   ONLY='jpe?g' bench/image_list.sh  only the photographs whose suffix matches (default: all)
set -euo pipefail

ROOT="$(cd "$(dirname "$0")/.." && pwd)"
BUILD="${BUILD:-$ROOT/build-bench-thumbs}"
COUNT="${1:-1000}"
RUNS="${RUNS:-3}"
ONLY="${ONLY:-jpe?g|png|webp}"

source "$ROOT/bench/lib.sh"
install_missing gnome-backgrounds mate-backgrounds plasma-workspace-wallpapers libvips-tools

cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$BUILD" --target bench_image_list >/dev/null
BENCH="$BUILD/bench/bench_image_list"

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
trap 'exit 130' INT TERM
mkdir -p "$WORK/photos"
mapfile -t sources < <(find /usr/share/backgrounds /usr/share/wallpapers -type f \
    \( -iname '*.jpg' -o -iname '*.jpeg' -o -iname '*.png' -o -iname '*.webp' \) \
    ! -name 'screenshot.*' | grep -iE "\.($ONLY)\$" | sort)
[ "${#sources[@]}" -gt 0 ] || { echo "no photographs found"; exit 1; }
for ((i = 0; i < COUNT; i++)); do
    f=${sources[i % ${#sources[@]}]}
    ext=${f##*.}
    cp "$f" "$WORK/photos/$(printf 'photo%04d' "$i").${ext,,}"
done
mpix=$(for f in "${sources[@]}"; do
    echo $(( $(vipsheader -f width "$f") * $(vipsheader -f height "$f") ))
done | awk '{s+=$1} END {printf "%.1f", s/NR/1e6}')
echo "$COUNT photographs ($((${#sources[@]})) distinct, $mpix megapixels on average)," \
     "$(du -sh "$WORK/photos" | cut -f1) on disk; $RUNS runs each; $(nproc) cores"

median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2 ? a[(NR+1)/2] : (a[NR/2] + a[NR/2+1]) / 2)}'; }

: >"$WORK/cold"; : >"$WORK/warm"; : >"$WORK/vips"
for ((r = 0; r < RUNS; r++)); do
    rm -rf "$WORK/cache"; mkdir -p "$WORK/cache"
    XDG_CACHE_HOME="$WORK/cache" "$BENCH" "$WORK/photos" >>"$WORK/cold"
    XDG_CACHE_HOME="$WORK/cache" "$BENCH" "$WORK/photos" >>"$WORK/warm"
    rm -rf "$WORK/vout"; mkdir -p "$WORK/vout"
    start=$(date +%s%N)
    vipsthumbnail -s 128 -o "$WORK/vout/%s.png" "$WORK"/photos/* 2>/dev/null || true
    end=$(date +%s%N)
    echo $(( (end - start) / 1000000 )) >>"$WORK/vips"
done

col() { awk -v c="$1" '{print $c}' "$2" | median; }
vips=$(median <"$WORK/vips")
cold_all=$(col 3 "$WORK/cold")
printf '\n%-44s %12s %10s\n' "job (medians)" "Ormidon" "target"
printf '%-44s %10s ms %10s\n' "first thumbnail visible (cold cache)" "$(col 1 "$WORK/cold")" "< 300 ms"
printf '%-44s %10s ms\n' "  of which loading the chosen picture" "$(col 9 "$WORK/cold")"
printf '%-44s %10s ms %10s\n' "first screenful complete (cold cache)" "$(col 2 "$WORK/cold")" ""
printf '%-44s %10s ms %10s\n' "whole list (cold cache)" "$cold_all" "<= 1.5x vips"
printf '%-44s %10s ms %10s\n' "vipsthumbnail -s 128, same files" "$vips" ""
printf '%-44s %12s\n' "  ratio Ormidon / vipsthumbnail" "$(awk -v a="$cold_all" -v b="$vips" 'BEGIN {printf "%.2fx", a / b}')"
printf '%-44s %10s ms %10s\n' "whole list (warm cache)" "$(col 3 "$WORK/warm")" "< 2000 ms"
printf '%-44s %10s ms %10s\n' "first thumbnail visible (warm cache)" "$(col 1 "$WORK/warm")" ""
printf '%-44s %10s ms %10s\n' "longest GUI event-loop gap (cold)" "$(col 4 "$WORK/cold")" "< 50 ms"
printf '%-44s %10s ms %10s\n' "longest GUI event-loop gap (warm)" "$(col 4 "$WORK/warm")" "< 50 ms"
printf '%-44s %10s ms\n' "  the same, idle after the fill (noise)" "$(col 10 "$WORK/cold")"
printf '%-44s %10s ms\n' "  most GUI-thread CPU between two iterations" "$(col 11 "$WORK/cold")"
printf '%-44s %10s MB %10s\n' "memory of the filled list (RSS growth)" "$(col 6 "$WORK/cold")" "< 150 MB"
printf '%-44s %10s MB\n' "whole process resident (cold)" "$(col 5 "$WORK/cold")"
printf '%-44s %12s\n' "decodes, cold / warm" "$(col 7 "$WORK/cold") / $(col 7 "$WORK/warm")"
printf '%-44s %12s\n' "cells" "$(col 8 "$WORK/cold")"
