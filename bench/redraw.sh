#!/bin/sh
# Builds the redraw benchmark in its own folder and runs it on the offscreen platform.
# Usage: bench/redraw.sh [frames]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench-view"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORMIDON_BENCH=ON >/dev/null
cmake --build "$build" --target bench_redraw
QT_QPA_PLATFORM=offscreen "$build/bench/bench_redraw" "${1:-120}"
