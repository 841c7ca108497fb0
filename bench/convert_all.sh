#!/usr/bin/env bash
# "Convert All" on Debian's 55 JPEG wallpaper photographs, side by side in one run with the tools
# a user would pick instead, on the same files at matched settings:
#
#   - every file records 72 dpi (only the density bytes are rewritten, see set_density_72.py),
#     so every tool writes the photographs' own pixels; the script checks the output sizes;
#   - JPEG at quality 75 (4:2:0, no optimised tables) everywhere;
#   - PNG at zlib level 6 with libpng's adaptive filter choice (gm and ImageMagick: -quality 65,
#     vips: compression=6 filter=all; Ormidon's own writer filters the same way and compresses
#     with libdeflate at level 6, so the output sizes are printed beside the times);
#   - TIFF and BMP uncompressed; GIF 256 colours, dithered.
#
# Tools: the libjpeg-turbo floor (djpeg | cjpeg, two files at a time), gm mogrify, vips (two
# processes at a time) and ImageMagick 6 mogrify. Then a job with a transform: 10 photographs
# at 150 dpi turned by 30 degrees to PNG (vips: resize then rotate on white; ImageMagick and gm:
# -resize then -rotate on white).
#
# Each line gives wall seconds, processor seconds, peak resident memory (MB; for the tools run
# two at a time, that of the larger process), the output's megapixels and its size on disk
# (MB: a faster encoder must not buy its speed with bigger files), then the ratios the project
# aims at: JPEG within 1.5x the two-core floor, every other format at most 0.8x the fastest
# peer, memory at most gm's. The machine is shared: compare ratios within a run, and repeat
# (RUNS=3 gives medians).
#
#   bench/convert_all.sh                  everything, once
#   FORMATS="jpg png" TRANSFORM=0 RUNS=3 bench/convert_all.sh
#
# What only this benchmark needs (wallpapers, gm, vips, ImageMagick, libjpeg-turbo's tools,
# GNU time) is installed here, never by the test scripts.
set -euo pipefail

ROOT="$(cd "$(dirname "$0")/.." && pwd)"
BUILD="${BUILD:-$ROOT/build-bench-flow}"
RUNS="${RUNS:-1}"
FORMATS="${FORMATS:-jpg png tif bmp gif}"
TRANSFORM="${TRANSFORM:-1}"
# CLI=1 adds the command line (ormidon --convert) beside the window's Convert All; see
# bench/command_line.sh.
CLI="${CLI:-0}"

source "$ROOT/bench/lib.sh"
install_missing gnome-backgrounds mate-backgrounds plasma-workspace-wallpapers graphicsmagick libvips-tools libjpeg-turbo-progs imagemagick time
IM=/usr/bin/mogrify-im6.q16

cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$BUILD" --target bench_convert_all ormidon >/dev/null
BENCH="$BUILD/bench/bench_convert_all"
ORMIDON="$BUILD/src/ormidon"

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
trap 'exit 130' INT TERM
mkdir -p "$WORK/src10"
prepare_photo_corpus "$WORK/src"
# The transform job: every fifth photograph, 10 of them.
ls "$WORK/src" | awk 'NR % 5 == 1' | head -n 10 | while read -r f; do cp "$WORK/src/$f" "$WORK/src10/"; done

pixels_of() { # total megapixels of the pictures in a folder
    for f in "$1"/*; do
        echo "$(vipsheader -f width "$f") $(vipsheader -f height "$f")"
    done | awk '{s += $1 * $2} END {printf "%.1f", s / 1e6}'
}
n=$(ls "$WORK/src" | wc -l)
echo "$n photographs, $(pixels_of "$WORK/src") megapixels, $(du -sh "$WORK/src" | cut -f1); transform job on $(ls "$WORK/src10" | wc -l) of them; $(nproc) cores; $RUNS run(s)"

# Ormidon's output codes and the peers' settings per format.
code_of() { case $1 in jpg) echo JPEG ;; png) echo PNGf ;; tif) echo TIFF ;; bmp) echo BMPf ;; gif) echo "GIF " ;; esac; }
magick_opts() { case $1 in jpg) echo "-quality 75" ;; png) echo "-quality 65" ;; tif) echo "-compress None" ;; *) echo "" ;; esac; }
vips_opts() { case $1 in jpg) echo "[Q=75]" ;; png) echo "[compression=6,filter=all]" ;; *) echo "" ;; esac; }

# The command line of each job; each reads $WORK/$src and writes $WORK/out.
job_command() {
    local tool=$1 fmt=$2 src=$3 dpi=$4 angle=$5
    local scale
    scale=$(awk -v d="$dpi" 'BEGIN {printf "%.6f", d / 72}')
    local pct
    pct=$(awk -v d="$dpi" 'BEGIN {printf "%.4f%%", d / 72 * 100}')
    local turn=""
    [ "$angle" = 0 ] || turn="-background white -rotate $angle"
    [ "$dpi" = 72 ] || turn="-resize $pct $turn"
    case $tool in
    ormidon) echo "\"$BENCH\" \"$WORK/$src\" \"$WORK/out\" \"$(code_of "$fmt")\" $dpi $angle" ;;
    cli) echo "\"$ORMIDON\" --convert \"$(code_of "$fmt")\" --dpi $dpi --angle $angle --dest \"$WORK/out\" \"$WORK/$src\" </dev/null" ;;
    floor) echo "cd \"$WORK/$src\" && ls | xargs -P2 -I{} sh -c 'djpeg \"\$1\" | cjpeg -quality 75 > \"../out/\${1%.*}.jpg\"' _ {}" ;;
    gm) echo "cd \"$WORK/$src\" && gm mogrify -output-directory ../out -format $fmt $turn $(magick_opts "$fmt") *" ;;
    im6) echo "cd \"$WORK/$src\" && $IM -path ../out -format $fmt $turn $(magick_opts "$fmt") *" ;;
    vips)
        if [ "$angle" = 0 ] && [ "$dpi" = 72 ]; then
            echo "cd \"$WORK/$src\" && ls | xargs -P2 -I{} sh -c 'vips copy \"\$1\" \"../out/\${1%.*}.$fmt$(vips_opts "$fmt")\"' _ {}"
        else
            echo "cd \"$WORK/$src\" && ls | xargs -P2 -I{} sh -c 'vips resize \"\$1\" \"../out/\${1%.*}.v\" $scale && vips rotate \"../out/\${1%.*}.v\" \"../out/\${1%.*}.$fmt$(vips_opts "$fmt")\" $angle --background 255 && rm \"../out/\${1%.*}.v\"' _ {}"
        fi
        ;;
    esac
}

declare -A wall cpu peak outmp outmb filesps
run_job() { # key tool fmt src dpi angle
    local key=$1
    rm -rf "$WORK/out"
    mkdir -p "$WORK/out"
    sync
    # %e wall seconds, %U + %S processor seconds (children included), %M peak RSS in kB.
    if ! /usr/bin/time -f '%e %U %S %M' -o "$WORK/time" bash -c "$(job_command "${@:2}")" \
        >"$WORK/log" 2>&1; then
        echo "warning: $key failed: $(tail -n 2 "$WORK/log" | tr '\n' ' ')" >&2
    fi
    read -r e u s m < <(tail -n 1 "$WORK/time")
    wall[$key]+="$e "
    cpu[$key]+="$(awk -v a="$u" -v b="$s" 'BEGIN {printf "%.1f", a + b}') "
    peak[$key]+="$((m / 1024)) "
    [ "$2" = cli ] && filesps[$key]+="$(grep -o '[0-9.]* files/s' "$WORK/log" | cut -d' ' -f1) "
    local written
    written=$(ls "$WORK/out" | wc -l)
    [ "$written" -eq "$(ls "$WORK/$4" | wc -l)" ] || echo "warning: $key wrote $written files" >&2
    outmp[$key]=$(pixels_of "$WORK/out")
    outmb[$key]=$(du -sb "$WORK/out" | awk '{printf "%.1f", $1 / 1e6}')
}

median() { tr ' ' '\n' | grep -v '^$' | sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.2f", a / b}'; }
row() { # label key
    printf '  %-22s %8s %8s %8s %9s %9s\n' "$1" "$(echo "${wall[$2]}" | median)" \
        "$(echo "${cpu[$2]}" | median)" "$(echo "${peak[$2]}" | median)" "${outmp[$2]}" \
        "${outmb[$2]}"
}

for run in $(seq 1 "$RUNS"); do
    for fmt in $FORMATS; do
        tools="ormidon gm vips im6"
        [ "$fmt" = jpg ] && tools="ormidon floor gm vips im6"
        [ "$CLI" = 1 ] && tools="cli $tools"
        for tool in $tools; do
            run_job "$fmt-$tool" "$tool" "$fmt" src 72 0
        done
    done
    if [ "$TRANSFORM" = 1 ]; then
        for tool in ormidon vips im6 gm; do
            run_job "turn-$tool" "$tool" png src10 150 30
        done
    fi
done

verdict() { awk -v r="$1" -v t="$2" 'BEGIN {print (r <= t) ? "met" : "NOT met"}'; }
echo
printf '  %-22s %8s %8s %8s %9s %9s\n' "job / tool" "wall s" "cpu s" "peak MB" "out MP" "out MB"
for fmt in $FORMATS; do
    echo "JPEG to $fmt"
    tools="ormidon gm vips im6"
    [ "$fmt" = jpg ] && tools="ormidon floor gm vips im6"
    [ "$CLI" = 1 ] && tools="cli $tools"
    for tool in $tools; do row "$tool" "$fmt-$tool"; done
    ow=$(echo "${wall[$fmt-ormidon]}" | median)
    om=$(echo "${peak[$fmt-ormidon]}" | median)
    gmm=$(echo "${peak[$fmt-gm]}" | median)
    if [ "$fmt" = jpg ]; then
        fw=$(echo "${wall[jpg-floor]}" | median)
        r=$(ratio "$ow" "$fw")
        echo "  -> Ormidon / two-core libjpeg-turbo floor: $r (target 1.5: $(verdict "$r" 1.5))"
    fi
    best=""
    for tool in gm vips im6; do
        w=$(echo "${wall[$fmt-$tool]}" | median)
        if [ -z "$best" ] || awk -v a="$w" -v b="$best" 'BEGIN {exit !(a < b)}'; then best=$w; bt=$tool; fi
    done
    r=$(ratio "$ow" "$best")
    [ "$fmt" = jpg ] || echo "  -> Ormidon / fastest peer ($bt): $r (target 0.8: $(verdict "$r" 0.8))"
    if [ "$CLI" = 1 ]; then
        cw=$(echo "${wall[$fmt-cli]}" | median)
        echo "  -> command line: $(echo "${filesps[$fmt-cli]}" | median) files/s as it reports"
        r=$(ratio "$cw" "$ow")
        echo "  -> command line / window's Convert All: $r (target 1.0: $(verdict "$r" 1.0))"
        r=$(ratio "$cw" "$best")
        echo "  -> command line / fastest of gm, vips, im6 ($bt): $r (target 0.8: $(verdict "$r" 0.8))"
    fi
    r=$(ratio "$om" "$gmm")
    echo "  -> Ormidon / gm peak memory: $r (target 1.0: $(verdict "$r" 1.0))"
done
if [ "$TRANSFORM" = 1 ]; then
    echo "10 photographs at 150 dpi, turned 30 degrees, to png"
    for tool in ormidon vips im6 gm; do row "$tool" "turn-$tool"; done
    r=$(ratio "$(echo "${wall[turn-ormidon]}" | median)" "$(echo "${wall[turn-vips]}" | median)")
    echo "  -> Ormidon / vips (two processes): $r (target 0.8: $(verdict "$r" 0.8))"
fi
echo
echo "every run (wall s):"
for key in "${!wall[@]}"; do echo "  $key: ${wall[$key]}"; done | sort
