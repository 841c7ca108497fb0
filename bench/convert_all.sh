#!/usr/bin/env bash
# "Convert All" on ~50 real photographs against the tools a user would pick instead, on the
# same files with matching settings (72 dpi, no turn; JPEG at quality 75, PNG at the default
# compression). Each job runs RUNS times (default 3), side by side in one go; the table shows
# medians in seconds and the ratio of Ormidon's time to each tool's, plus Ormidon's peak memory.
#
#   bench/convert_all.sh [COUNT]      COUNT photographs (default 50)
set -euo pipefail

ROOT="$(cd "$(dirname "$0")/.." && pwd)"
BUILD="${BUILD:-$ROOT/build-bench-flow}"
COUNT="${1:-50}"
RUNS="${RUNS:-3}"

# GNOME's own backgrounds are WebP and SVG; the JPEG and PNG photographs come from the MATE
# and Plasma sets.
need=()
[ -d /usr/share/backgrounds/gnome ] || need+=(gnome-backgrounds)
[ -d /usr/share/backgrounds/mate ] || need+=(mate-backgrounds)
[ -d /usr/share/wallpapers/Next ] || need+=(plasma-workspace-wallpapers)
command -v gm >/dev/null || need+=(graphicsmagick)
command -v vips >/dev/null || need+=(libvips-tools)
if [ "${#need[@]}" -gt 0 ]; then
    SUDO=""
    [ "$(id -u)" -eq 0 ] || SUDO=sudo
    $SUDO apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${need[@]}" >/dev/null
fi

if [ ! -x "$BUILD/bench/bench_convert_all" ]; then
    cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
    cmake --build "$BUILD" --target bench_convert_all >/dev/null
fi
BENCH="$BUILD/bench/bench_convert_all"

WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
trap 'exit 130' INT TERM
mkdir -p "$WORK/src"
# JPEG and PNG photographs in name order (picking the largest would bias the sample).
find /usr/share/backgrounds /usr/share/wallpapers -type f \( -iname '*.jpg' -o -iname '*.jpeg' -o -iname '*.png' \) \
    ! -name 'screenshot.*' | sort | head -n "$COUNT" | while read -r f; do
    # Plasma names every picture by its size (1920x1080.jpg): keep the folders in the name.
    name="${f#/usr/share/}"
    cp "$f" "$WORK/src/${name//\//_}"
done
n=$(ls "$WORK/src" | wc -l)
mpix=$(for f in "$WORK/src"/*; do
    w=$(vipsheader -f width "$f"); h=$(vipsheader -f height "$f")
    echo $((w * h))
done | awk '{s+=$1} END {printf "%.0f", s/1e6}')
echo "$n photographs, $mpix megapixels in all, $(du -sh "$WORK/src" | cut -f1) on disk; $RUNS runs each"

fresh() { rm -rf "$WORK/out"; mkdir -p "$WORK/out"; }

# The command line of each job; every one reads $WORK/src and writes $WORK/out.
job_command() {
    case $1 in
    ormidon-jpg) echo "\"$BENCH\" \"$WORK/src\" \"$WORK/out\" JPEG 72" ;;
    ormidon-png) echo "\"$BENCH\" \"$WORK/src\" \"$WORK/out\" PNGf 72" ;;
    gm-jpg) echo "cd \"$WORK/src\" && gm mogrify -output-directory ../out -format jpg -quality 75 *" ;;
    gm-png) echo "cd \"$WORK/src\" && gm mogrify -output-directory ../out -format png *" ;;
    vips-jpg) echo "cd \"$WORK/src\" && for f in *; do vips copy \"\$f\" \"../out/\${f%.*}.jpg[Q=75]\"; done" ;;
    vips-png) echo "cd \"$WORK/src\" && for f in *; do vips copy \"\$f\" \"../out/\${f%.*}.png\"; done" ;;
    esac
}

JOBS="ormidon-jpg ormidon-png gm-jpg gm-png vips-jpg vips-png"
declare -A wall cpu peak
for run in $(seq 1 "$RUNS"); do
    for job in $JOBS; do
        fresh
        sync
        # %e wall seconds, %U + %S processor seconds (children included), %M peak RSS in kB.
        /usr/bin/time -f '%e %U %S %M' -o "$WORK/time" bash -c "$(job_command "$job")" \
            >/dev/null 2>&1 || echo "warning: $job failed" >&2
        read -r e u s m <"$WORK/time"
        wall[$job]+="$e "
        cpu[$job]+="$(awk -v a="$u" -v b="$s" 'BEGIN {printf "%.2f", a + b}') "
        peak[$job]+="$m "
        written=$(ls "$WORK/out" | wc -l)
        [ "$written" -eq "$n" ] || echo "warning: $job wrote $written of $n files" >&2
    done
done

median() { tr ' ' '\n' | grep -v '^$' | sort -g | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN {printf "%.2f", a / b}'; }

echo
echo "Medians of $RUNS runs (wall seconds / processor seconds); the machine is shared, so the"
echo "processor time is the steadier figure. Ratio below 1: Ormidon is faster."
printf '%-20s %14s %14s %14s %16s %16s\n' "job" "Ormidon" "gm mogrify" "vips copy" \
    "Orm/gm wall,cpu" "Orm/vips wall,cpu"
for fmt in jpg png; do
    ow=$(echo "${wall[ormidon-$fmt]}" | median); oc=$(echo "${cpu[ormidon-$fmt]}" | median)
    gw=$(echo "${wall[gm-$fmt]}" | median); gc=$(echo "${cpu[gm-$fmt]}" | median)
    vw=$(echo "${wall[vips-$fmt]}" | median); vc=$(echo "${cpu[vips-$fmt]}" | median)
    printf '%-20s %14s %14s %14s %16s %16s\n' "Convert All to $fmt" "$ow / $oc" "$gw / $gc" \
        "$vw / $vc" "$(ratio "$ow" "$gw"), $(ratio "$oc" "$gc")" "$(ratio "$ow" "$vw"), $(ratio "$oc" "$vc")"
done
echo
echo "Ormidon peak memory (max RSS, kB): JPEG $(echo "${peak[ormidon-jpg]}" | median)," \
    "PNG $(echo "${peak[ormidon-png]}" | median); gm $(echo "${peak[gm-jpg]}" | median)," \
    "vips (one file at a time) $(echo "${peak[vips-jpg]}" | median)"
for job in $JOBS; do
    echo "  $job wall: ${wall[$job]} cpu: ${cpu[$job]}"
done
