#!/usr/bin/env bash
# The command line (ormidon --convert CODE --dest DIR FOLDER) on the conversion benchmark's
# photographs, side by side in one run with the window's Convert All and with gm mogrify, vips
# (two processes at a time) and ImageMagick 6 mogrify at matched settings: the same corpus,
# tools and settings as bench/convert_all.sh, which runs it. The command line aims at no more
# wall time than the window's Convert All, and at most 0.8x the fastest of the three tools; its
# own files-per-second figure is printed beside.
#
#   bench/command_line.sh                     JPEG and PNG, once
#   FORMATS="jpg png tif" RUNS=3 bench/command_line.sh
set -euo pipefail
export CLI=1 TRANSFORM="${TRANSFORM:-0}" FORMATS="${FORMATS:-jpg png}"
exec "$(dirname "$0")/convert_all.sh" "$@"
