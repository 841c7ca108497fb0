#!/usr/bin/env bash
# The modern formats, side by side in one run with the tools a user would pick instead:
#
#   - "Convert All" of Debian's JPEG wallpaper photographs (the corpus of convert_all.sh) to
#     WebP at quality 85 (method 4 everywhere), and of every fifth of them (10 photographs:
#     AV1 is slow; AVIF_ALL=1 takes them all) to AVIF at quality 70 with aom at speed 7
#     (vips: effort=2, which is speed 7; ImageMagick 6 cannot set it and uses libheif's 6).
#     Tools: Ormidon's batch (bench_convert_all), vips (two processes at a time) and
#     ImageMagick 6 mogrify. Target: Ormidon at most 0.8x the wall time of each.
#   - Opening a 24-megapixel HEIC (a wallpaper scaled to 6000 x 4000, coded by heif-enc at
#     quality 70): Ormidon's decoder chain against a bare libheif decode (bench_heif_open).
#     Target: at most 1.3x.
#
# Each line gives wall seconds, processor seconds (user + system, children included) and peak
# resident memory (MB; for the tools run two at a time, that of the larger process). The
# machine is shared: compare ratios within a run, and repeat (RUNS=3 gives medians).
#
#   bench/modern_formats.sh
#   RUNS=3 FORMATS="webp" HEIC=0 bench/modern_formats.sh
set -euo pipefail

ROOT="$(cd "$(dirname "$0")/.." && pwd)"
BUILD="${BUILD:-$ROOT/build-bench-flow}"
RUNS="${RUNS:-1}"
FORMATS="${FORMATS:-webp avif}"
HEIC="${HEIC:-1}"
AVIF_ALL="${AVIF_ALL:-0}"

source "$ROOT/bench/lib.sh"
install_missing gnome-backgrounds mate-backgrounds plasma-workspace-wallpapers libvips-tools \
    imagemagick libheif-examples time
IM=/usr/bin/mogrify-im6.q16

cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$BUILD" --target bench_convert_all bench_heif_open >/dev/null

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
trap 'exit 130' INT TERM
mkdir -p "$WORK/src" "$WORK/src10"
prepare_photo_corpus "$WORK/src"
ls "$WORK/src" | awk 'NR % 5 == 1' | head -n 10 | while read -r f; do cp "$WORK/src/$f" "$WORK/src10/"; done
echo "$(ls "$WORK/src" | wc -l) photographs ($(du -sh "$WORK/src" | cut -f1)), AVIF on $(ls "$WORK/src10" | wc -l) of them; $(nproc) cores; $RUNS run(s)"

code_of() { case $1 in webp) echo WEBP ;; avif) echo AVIF ;; esac; }
folder_of() { if [ "$1" = avif ] && [ "$AVIF_ALL" = 0 ]; then echo src10; else echo src; fi; }
vips_opts() { case $1 in webp) echo "[Q=85,effort=4]" ;; avif) echo "[Q=70,compression=av1,effort=2]" ;; esac; }
im_opts() { case $1 in webp) echo "-quality 85 -define webp:method=4" ;; avif) echo "-quality 70" ;; esac; }

job_command() { # tool fmt folder
    local tool=$1 fmt=$2 src=$3
    case $tool in
    ormidon) echo "\"$BUILD/bench/bench_convert_all\" \"$WORK/$src\" \"$WORK/out\" \"$(code_of "$fmt")\" 72 0" ;;
    vips) echo "cd \"$WORK/$src\" && ls | xargs -P2 -I{} sh -c 'vips copy \"\$1\" \"../out/\${1%.*}.$fmt$(vips_opts "$fmt")\"' _ {}" ;;
    im6) echo "cd \"$WORK/$src\" && $IM -path ../out -format $fmt $(im_opts "$fmt") *" ;;
    esac
}

declare -A wall cpu peak
run_job() { # key tool fmt folder
    local key=$1
    rm -rf "$WORK/out"
    mkdir -p "$WORK/out"
    sync
    if ! /usr/bin/time -f '%e %U %S %M' -o "$WORK/time" bash -c "$(job_command "${@:2}")" \
        >"$WORK/log" 2>&1; then
        echo "warning: $key failed: $(tail -n 2 "$WORK/log" | tr '\n' ' ')" >&2
    fi
    read -r e u s m < <(tail -n 1 "$WORK/time")
    wall[$key]+="$e "
    cpu[$key]+="$(awk -v a="$u" -v b="$s" 'BEGIN {printf "%.1f", a + b}') "
    peak[$key]+="$((m / 1024)) "
    local written
    written=$(ls "$WORK/out" | wc -l)
    [ "$written" -eq "$(ls "$WORK/$4" | wc -l)" ] || echo "warning: $key wrote $written files" >&2
    size[$key]=$(du -sm "$WORK/out" | cut -f1)
}
declare -A size

median() { tr ' ' '\n' | grep -v '^$' | sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.2f", a / b}'; }
verdict() { awk -v r="$1" -v t="$2" 'BEGIN {print (r <= t) ? "met" : "NOT met"}'; }

for run in $(seq 1 "$RUNS"); do
    for fmt in $FORMATS; do
        for tool in ormidon vips im6; do
            run_job "$fmt-$tool" "$tool" "$fmt" "$(folder_of "$fmt")"
        done
    done
done

echo
printf '  %-22s %8s %8s %8s %8s\n' "job / tool" "wall s" "cpu s" "peak MB" "out MB"
for fmt in $FORMATS; do
    echo "JPEG to $fmt ($(ls "$WORK/$(folder_of "$fmt")" | wc -l) photographs)"
    for tool in ormidon vips im6; do
        printf '  %-22s %8s %8s %8s %8s\n' "$tool" "$(echo "${wall[$fmt-$tool]}" | median)" \
            "$(echo "${cpu[$fmt-$tool]}" | median)" "$(echo "${peak[$fmt-$tool]}" | median)" \
            "${size[$fmt-$tool]}"
    done
    ow=$(echo "${wall[$fmt-ormidon]}" | median)
    for tool in vips im6; do
        r=$(ratio "$ow" "$(echo "${wall[$fmt-$tool]}" | median)")
        echo "  -> Ormidon / $tool: $r (target 0.8: $(verdict "$r" 0.8))"
    done
done

if [ "$HEIC" = 1 ]; then
    echo
    big=$(ls -S "$WORK/src"/*.jpg | head -n 1)
    vips thumbnail "$big" "$WORK/big.jpg[Q=95]" 6000 --height 4000 --size force
    heif-enc -q 70 "$WORK/big.jpg" -o "$WORK/big.heic" >/dev/null
    echo "24-megapixel HEIC ($(du -h "$WORK/big.heic" | cut -f1)), from $(basename "$big")"
    "$BUILD/bench/bench_heif_open" "$WORK/big.heic"
fi

echo
echo "every run (wall s):"
for key in "${!wall[@]}"; do echo "  $key: ${wall[$key]}"; done | sort
