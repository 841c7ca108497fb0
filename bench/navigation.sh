#!/bin/sh
# Previous/next stepping over a generated folder of 10,000 entries: 500 PNG images among
# 4,500 text files and 5,000 sub-folders, names interleaved so that every step skips entries.
# Builds the benchmark into build-bench, makes the folder in a temporary place, runs it.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_navigation

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folder="$work/folder"
mkdir "$folder"
printf 'P3\n2 2\n255\n255 0 0 0 255 0 0 0 255 255 255 255\n' >"$work/seed.ppm"
if command -v convert >/dev/null 2>&1; then
    convert "$work/seed.ppm" "$work/seed.png"
else
    cp "$work/seed.ppm" "$work/seed.png"
fi
(
    cd "$folder"
    i=0
    while [ $i -lt 10000 ]; do
        if [ $((i % 20)) -eq 0 ]; then
            cp "$work/seed.png" "entry$i.png"
        elif [ $((i % 2)) -eq 1 ]; then
            mkdir "entry$i"
        else
            : >"entry$i.txt"
        fi
        i=$((i + 1))
    done
)
for run in 1 2 3; do
    echo "run $run"
    "$build/bench/bench_navigation" "$folder"
done
