#!/usr/bin/env bash
# Drives Ormidon in a real X server through a folder of the modern formats: opens a HEIC from the command line, steps with the arrow key to the JPEG XL and then the
# AVIF picture, checks each one's colours in a screenshot, and fills the "Image List" tab with
# the folder's thumbnails. Screenshots are kept as modern_window*.png in the given folder.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

# The number of pixels of colour $2 (within 8%) in the picture $1.
count_colour() {
  convert "$1" -fuzz 8% -fill black +opaque "$2" -fill white -opaque "$2" -colorspace gray \
    -format '%[fx:int(mean*w*h+0.5)]' info:
}

# Waits up to 10 s for the screen to show at least $2 pixels of colour $1; keeps the shot as $3.
wait_colour() {
  local n=0
  for _ in $(seq 50); do
    import -window root "$shots/$3"
    n=$(count_colour "$shots/$3" "$1")
    [ "$n" -ge "$2" ] && return 0
    sleep 0.2
  done
  fail "$3 shows $n pixels of $1, fewer than $2"
}

run_in_x() {
  "$app" --no-splash "$pictures/a.heic" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: a.heic") || fail "no window titled 'Ormidon: a.heic'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  wait_colour "rgb(200,30,30)" 40000 modern_window_heic.png
  xdotool windowfocus --sync "$win"
  xdotool key Right
  wait_title "Ormidon: b.jxl" >/dev/null || fail "the right arrow did not step to b.jxl"
  wait_colour "rgb(30,160,60)" 40000 modern_window_jxl.png
  xdotool key Right
  wait_title "Ormidon: c.avif" >/dev/null || fail "the right arrow did not step to c.avif"
  wait_colour "rgb(30,60,200)" 40000 modern_window_avif.png
  # The image list: the three thumbnails.
  xdotool mousemove --window "$win" 300 250 click 1
  xdotool key ctrl+Tab
  wait_colour "rgb(200,30,30)" 3000 modern_window_list.png
  wait_colour "rgb(30,160,60)" 3000 modern_window_list.png
  wait_colour "rgb(30,60,200)" 3000 modern_window_list.png
  sleep 0.3
  xdotool key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
export pictures=$work/pictures
fresh_home
mkdir -p "$pictures"
echo '{ fillList = 1; }' > "$HOME/Library/Preferences/zel.pref"
convert -size 640x480 "xc:rgb(200,30,30)" "$work/red.jpg"
convert -size 480x640 "xc:rgb(30,160,60)" "$work/green.jpg"
convert -size 640x400 "xc:rgb(30,60,200)" "$work/blue.jpg"
heif-enc -q 90 "$work/red.jpg" -o "$pictures/a.heic" >/dev/null
cjxl "$work/green.jpg" "$pictures/b.jxl" >/dev/null 2>&1
heif-enc -A -q 90 "$work/blue.jpg" -o "$pictures/c.avif" >/dev/null

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
