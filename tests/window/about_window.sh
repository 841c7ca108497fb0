#!/usr/bin/env bash
# Drives Ormidon's about splash and help in a real X server: launched without --no-splash with a
# file named on the command line, the splash shows centred, a key closes it and the file opens
# right after it; F1 then shows the help window at its front page and Escape closes it.
# Screenshots are kept as about_window_splash.png and about_window_help.png in the given folder
# for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

wait_gone() { # waits up to 3 s until no visible window's title starts with $1
  for _ in $(seq 30); do
    xdotool search --onlyvisible --name "^$1" >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  return 1
}

run_in_x() {
  "$app" "$pictures/c.png" >"$work/app.log" 2>&1 &
  pid=$!
  splash=$(wait_title "About Ormidon") || fail "no about splash at launch"
  sleep 0.5
  import -window root "$shots/about_window_splash.png"
  # Centred on the 1280 x 1024 screen.
  eval "$(xdotool getwindowgeometry --shell "$splash")"
  [ $((X + WIDTH / 2 - 640)) -le 1 ] && [ $((640 - X - WIDTH / 2)) -le 1 ] \
    || fail "the splash is not centred across: x $X, width $WIDTH"
  [ $((Y + HEIGHT / 2 - 512)) -le 1 ] && [ $((512 - Y - HEIGHT / 2)) -le 1 ] \
    || fail "the splash is not centred down: y $Y, height $HEIGHT"
  # The file named on the command line waits for the splash.
  xdotool search --onlyvisible --name "^Ormidon: c.png\$" >/dev/null 2>&1 \
    && fail "the file opened before the splash closed"
  xdotool mousemove --window "$splash" 20 250 windowfocus --sync "$splash" key space
  wait_gone "About Ormidon\$" || fail "a key press did not close the splash"
  main=$(wait_title "Ormidon: c.png") || fail "the file named at launch did not open after the splash"

  xdotool mousemove --window "$main" 300 250 click 1 key F1
  help=$(wait_title "Ormidon Help: Ormidon Help") || fail "F1 showed no help window"
  sleep 0.5
  import -window root "$shots/about_window_help.png"
  xdotool windowfocus --sync "$help" key Escape
  wait_gone "Ormidon Help" || fail "Escape did not close the help window"

  xdotool mousemove --window "$main" 300 250 click 1 key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
export pictures=$work/pictures
fresh_home
mkdir -p "$pictures"
convert -size 300x200 xc:orange "$pictures/c.png"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
