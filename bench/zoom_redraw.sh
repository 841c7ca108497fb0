#!/bin/sh
# Builds the zoom and pan redraw benchmark in its own folder and runs it on the offscreen
# platform, with the CPU time it took (the machine may be shared).
# Usage: bench/zoom_redraw.sh [frames]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench-view"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_zoom_redraw
QT_QPA_PLATFORM=offscreen /usr/bin/time -f "wall %e s, user %U s, sys %S s" \
    "$build/bench/bench_zoom_redraw" "${1:-120}"
