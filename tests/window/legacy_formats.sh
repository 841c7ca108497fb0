#!/usr/bin/env bash
# Drives Ormidon in a real X server with an older output format: converts the picture shown to a
# QuickTime image with the menu shortcut, opens the written file at the next launch, read back
# by the program's own reader, and does the same with an FLC animation written by --convert. The
# screenshots (legacy_formats_*.png in the given folder) are for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

wait_file() { # waits up to 10 s for a non-empty file
  for _ in $(seq 100); do [ -s "$1" ] && return 0; sleep 0.1; done
  return 1
}

run_in_x() {
  "$app" --no-splash "$pictures/a.png" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: a.png") || fail "no window titled 'Ormidon: a.png'"
  xdotool windowsize "$win" 900 700
  xdotool windowfocus --sync "$win"
  sleep 0.5
  xdotool key ctrl+e
  wait_file "$out/a.qtif" || fail "ctrl+e wrote no $out/a.qtif"
  sleep 0.5
  import -window root "$shots/legacy_formats_convert.png"
  xdotool key ctrl+q
  expect_exit "$pid"
  # The written file opens at the next launch, read back by the program's own reader.
  "$app" --no-splash "$out/a.qtif" >"$work/app2.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: a.qtif") || fail "the window did not open a.qtif"
  xdotool windowfocus --sync "$win"
  sleep 0.8
  import -window root "$shots/legacy_formats_qtif.png"
  xdotool key ctrl+q
  expect_exit "$pid" "QuickTime image run"
  # An FLC written from the command line opens in a new window.
  "$app" --convert FLC --dest "$out" "$pictures/a.png" >/dev/null || fail "--convert FLC failed"
  "$app" --no-splash "$out/a.FLC " >"$work/app3.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: a.FLC ") || fail "the window did not open a.FLC"
  xdotool windowfocus --sync "$win"
  sleep 0.8
  import -window root "$shots/legacy_formats_flc.png"
  xdotool key ctrl+q
  expect_exit "$pid" "FLC run"
  return 0
}

run_inside_or_make_work
export pictures=$work/pictures out=$work/out
fresh_home
mkdir -p "$pictures" "$out"
convert -size 320x240 gradient:red-blue -fill yellow -draw "circle 160,120 160,60" "$pictures/a.png"
echo "{ expformat = \"qtif\"; dstLocation = \"$out\"; }" > "$HOME/Library/Preferences/zel.pref"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }

# What the window wrote is a QuickTime image of the picture's size, and FFmpeg reads the FLC.
head -c 8 "$out/a.qtif" | tail -c 4 | grep -q idsc || fail "a.qtif starts with no idsc atom"
ffprobe -v error -show_entries stream=width,height -of csv=p=0 "$out/a.FLC " | grep -q '^320,240$' \
  || fail "a.FLC is not 320 x 240 for ffprobe"
echo "PASS"
