#!/usr/bin/env bash
# Converts in a real X server through the window's real buttons and shortcuts: starts on a
# folder of pictures, steps with the arrow keys right after launch (nothing clicked first),
# checks in screenshots that a wide and a tall picture are drawn fitted and centred in the
# view, converts the current picture with the Convert button and with Ctrl+E, answers the
# overwrite question both ways (Yes replaces; Escape keeps the old file byte for byte), and
# converts the whole folder with the Convert All button (a Yes and a Skip on the way) and with
# Ctrl+Shift+E. Every file written is read back. The screenshots are kept as
# convert_window*.png in the given folder for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

magenta="rgb(230,30,200)"


click_at() { # clicks at x y of the main window
  xdotool mousemove --window "$win" "$1" "$2" click 1
}

picture_box() { # width height x y of the magenta area of the screenshot $1
  local box
  box=$(convert "$1" -fill black +opaque "$magenta" -trim -format '%w %h %X %Y' info:)
  echo "${box//+/}"
}

near() { [ $(($1 - $2)) -le "$3" ] && [ $(($2 - $1)) -le "$3" ]; }

answer() { # waits for the overwrite question and presses the keys $@ in it
  local question
  question=$(wait_title "Ormidon" 150) || {
    import -window root "$shots/convert_window_failed.png"
    fail "no overwrite question"
  }
  sleep 0.3
  xdotool windowfocus --sync "$question" key "$@"
  for _ in $(seq 50); do
    [ -z "$(xdotool search --onlyvisible --name '^Ormidon$' 2>/dev/null)" ] && break
    sleep 0.1
  done
  # A bare X server has no window manager to give the keyboard back to the main window.
  xdotool windowfocus --sync "$win"
}

run_in_x() {
  "$app" --no-splash "$pictures/a.png" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: a.png") || fail "no window titled 'Ormidon: a.png'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  # The keys step through the folder from the start, without a click into the window.
  xdotool windowfocus --sync "$win"
  xdotool key Right
  wait_title "Ormidon: b.jpg" >/dev/null || fail "Right after launch did not step to b.jpg"
  xdotool key Right
  wait_title "Ormidon: c.png" >/dev/null || fail "the second Right did not step to c.png"
  sleep 0.5
  import -window root "$shots/convert_window_tall.png"
  xdotool key Left Left
  wait_title "Ormidon: a.png" >/dev/null || fail "Left, Left did not step back to a.png"
  sleep 0.5
  import -window root "$shots/convert_window_wide.png"

  # The wide picture (4:1) fills the view's width, the tall one (1:4) its height; both keep
  # their shape and sit on the view's centre, inside the window.
  read -r ww wh wx wy <<<"$(picture_box "$shots/convert_window_wide.png")"
  read -r tw th tx ty <<<"$(picture_box "$shots/convert_window_tall.png")"
  echo "wide picture drawn at ${ww}x${wh}+${wx}+${wy}, tall at ${tw}x${th}+${tx}+${ty}"
  near "$ww" $((4 * wh)) 6 || fail "the wide picture is drawn ${ww}x${wh}, not 4:1"
  near "$th" $((4 * tw)) 6 || fail "the tall picture is drawn ${tw}x${th}, not 1:4"
  [ "$ww" -gt 400 ] && [ "$th" -gt 400 ] || fail "the pictures are not fitted to the view"
  near $((wx + ww / 2)) $((tx + tw / 2)) 2 || fail "the pictures are not centred alike across"
  near $((wy + wh / 2)) $((ty + th / 2)) 2 || fail "the pictures are not centred alike down"
  read -r winx winy <<<"$(xdotool getwindowgeometry "$win" | awk '/Position/ {sub(",", " ", $2); print $2}')"
  [ "$wx" -ge "$winx" ] && [ $((wx + ww)) -le $((winx + 900)) ] && [ "$ty" -ge "$winy" ] &&
    [ $((ty + th)) -le $((winy + 700)) ] || fail "the view is not inside the window"

  # The Convert button (below the view, in the 900 x 700 window) writes the current picture.
  click_at 480 630
  wait_size "$dest/a.TIFF" "800 200"
  [ "$(convert "$dest/a.TIFF" -format '%[pixel:p{400,100}]' info:)" = "srgb(230,30,200)" ] ||
    fail "a.TIFF does not hold the magenta picture"
  # Ctrl+E converts the next one.
  xdotool key Right
  wait_title "Ormidon: b.jpg" >/dev/null || fail "Right did not step to b.jpg"
  xdotool key ctrl+e
  wait_size "$dest/b.TIFF" "640 480"

  # The overwrite question, answered Yes (the first button; Skip has the focus): replaced.
  convert -size 10x10 xc:black "$dest/b.TIFF"
  xdotool key ctrl+e
  sleep 0.5
  import -window root "$shots/convert_window_question.png"
  answer shift+Tab space
  wait_size "$dest/b.TIFF" "640 480"
  # Answered with Escape: the old file stays byte for byte.
  convert -size 12x12 xc:black "$dest/b.TIFF"
  cp "$dest/b.TIFF" "$work/b.kept"
  xdotool key ctrl+e
  answer Escape
  sleep 1
  cmp -s "$dest/b.TIFF" "$work/b.kept" || fail "Escape did not keep b.TIFF as it was"

  # The Convert All button: a.TIFF and b.TIFF exist; Yes replaces a.TIFF, Skip (Return on the
  # focused default button) keeps b.TIFF; c and d are new.
  convert -size 10x10 xc:black "$dest/a.TIFF"
  click_at 565 630
  answer shift+Tab space
  answer Return
  wait_size "$dest/d.TIFF" "480 360"
  wait_size "$dest/c.TIFF" "200 800"
  wait_size "$dest/a.TIFF" "800 200"
  cmp -s "$dest/b.TIFF" "$work/b.kept" || fail "Skip in Convert All did not keep b.TIFF"
  [ ! -e "$dest/notes.TIFF" ] || fail "Convert All converted the text file"

  # Ctrl+Shift+E converts the folder again into an empty destination: no question.
  rm -f "$dest"/*.TIFF
  xdotool key ctrl+shift+e
  wait_size "$dest/d.TIFF" "480 360"
  wait_size "$dest/a.TIFF" "800 200"
  wait_size "$dest/b.TIFF" "640 480"
  wait_size "$dest/c.TIFF" "200 800"
  [ -z "$(xdotool search --onlyvisible --name '^Ormidon$' 2>/dev/null)" ] ||
    fail "Convert All into an empty folder asked a question"
  import -window root "$shots/convert_window_done.png"

  xdotool key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
export pictures=$work/pictures dest=$work/home/Desktop
fresh_home
mkdir -p "$pictures"
unset LANGUAGE
export LANG=C.UTF-8 LC_ALL=C.UTF-8
export ORMIDON_WIDGET_DIALOGS=1 # a bare X server has no desktop to show its own dialogs
convert -size 800x200 "xc:$magenta" "$pictures/a.png"
convert -size 640x480 gradient:red-blue -quality 90 "$pictures/b.jpg"
convert -size 200x800 "xc:$magenta" "$pictures/c.png"
convert -size 480x360 gradient:yellow-green -quality 90 "$pictures/d.jpg"
echo "not a picture" >"$pictures/notes.txt"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
