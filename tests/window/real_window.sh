#!/usr/bin/env bash
# Drives Ormidon in a real X server: opens a picture from the command line, steps to the next
# one with the arrow key pressed right after launch, converts it with the menu shortcut from the
# view and from inside each text field, hands a file over from a second launch (with its
# startup id, which the running window is activated with), quits, and
# checks the files and the preferences the run left behind. Screenshots of the window are kept
# as real_window*.png in the given folder for a person to look at.
# A second run, with the fill-list box on, fills the "Image List" tab for a folder of squares,
# checks that they show in the screenshot (real_window_list.png) and opens one with a click.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

wait_file() { # waits up to 10 s for a non-empty file
  for _ in $(seq 100); do [ -s "$1" ] && return 0; sleep 0.1; done
  return 1
}

click_field() { # clicks into the window at x y and lets the click land
  xdotool mousemove --window "$win" "$1" "$2" click 1
  sleep 0.3
}

run_in_x() {
  "$app" --no-splash "$pictures/a.png" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: a.png") || fail "no window titled 'Ormidon: a.png'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  # The window gets the keyboard as a window manager would give it, and nothing is clicked:
  # the first Right steps to the next image (not to the "Image List" tab).
  xdotool windowfocus --sync "$win"
  xdotool key Right
  wait_title "Ormidon: b.png" >/dev/null || {
    import -window root "$shots/real_window_failed.png"
    fail "the right arrow right after launch did not step to b.png"
  }
  sleep 0.5
  import -window root "$shots/real_window.png"
  # Convert the current picture with the menu shortcut into the default destination.
  xdotool key ctrl+e
  wait_file "$HOME/Desktop/b.TIFF" || fail "ctrl+e wrote no $HOME/Desktop/b.TIFF"

  # Ctrl+E from inside each text field. The fields sit where the 900 x 700 window lays them
  # out; a Right typed into a field moves its text cursor, so an unchanged title shows that the
  # field, not the view, has the keyboard.
  # The angle field: 45, Return, Ctrl+E gives the turned picture.
  rm -f "$HOME/Desktop/b.TIFF"
  click_field 436 602
  xdotool key End BackSpace BackSpace BackSpace BackSpace
  xdotool type 45
  xdotool key Return
  xdotool key ctrl+e
  wait_file "$HOME/Desktop/b.TIFF" || fail "ctrl+e from the angle field wrote no b.TIFF"
  size=$(identify -format '%w %h' "$HOME/Desktop/b.TIFF")
  [ "$size" != "480 640" ] && [ "${size%% *}" -gt 700 ] || fail "b.TIFF at 45 degrees is $size"
  xdotool key End BackSpace BackSpace BackSpace BackSpace
  xdotool type 0
  xdotool key Return
  for field in "source 289 575" "destination 761 46" "resolution 780 74"; do
    set -- $field
    rm -f "$HOME/Desktop/b.TIFF"
    click_field "$2" "$3"
    xdotool key Right
    sleep 0.3
    [ -n "$(xdotool search --onlyvisible --name '^Ormidon: b.png$')" ] \
      || fail "the $1 field did not take the keyboard (Right stepped the picture)"
    xdotool key ctrl+e
    wait_file "$HOME/Desktop/b.TIFF" || {
      import -window root "$shots/real_window_failed.png"
      fail "ctrl+e from the $1 field wrote no b.TIFF"
    }
  done
  import -window root "$shots/real_window_fields.png"
  # Convert All writes every image of the folder, the text file skipped; b.TIFF exists, so
  # the batch asks once about it, and Skip keeps it.
  before=$(stat -c %Y.%s "$HOME/Desktop/b.TIFF")
  sleep 1
  xdotool key ctrl+shift+e
  question=$(wait_title "Ormidon") || {
    import -window root "$shots/real_window_failed.png"
    fail "Convert All did not ask before replacing b.TIFF"
  }
  sleep 0.3
  import -window root "$shots/real_window_question.png"
  xdotool windowfocus --sync "$question" key Escape
  for _ in $(seq 150); do [ -s "$HOME/Desktop/c.TIFF" ] && break; sleep 0.1; done
  for f in a c; do [ -s "$HOME/Desktop/$f.TIFF" ] || fail "Convert All wrote no $f.TIFF"; done
  [ ! -e "$HOME/Desktop/b2.TIFF" ] || fail "Convert All converted the text file"
  [ "$(stat -c %Y.%s "$HOME/Desktop/b.TIFF")" = "$before" ] || fail "Skip replaced b.TIFF"
  sleep 0.5
  # A second launch hands its file to the running window and ends at once.
  # The keyboard is in the resolution field; the handed-over picture gives it back to the view,
  # so Left steps from c.png to b.png and Right back to c.png.
  # It was started as a launcher starts it, with a startup id: the running window takes that
  # launch's time as its user time and ends the launcher's startup notification.
  DESKTOP_STARTUP_ID="launcher-4711_TIME424242" timeout 10 "$app" --no-splash "$pictures/c.png" ||
    fail "the second launch did not end"
  [ "$(xdotool search --onlyvisible --name "^Ormidon: " | wc -l)" = 1 ] || fail "a second window opened"
  sleep 0.3
  xprop -id "$win" _NET_WM_USER_TIME | grep -q '= 424242$' ||
    fail "the launch's time is not the window's user time: $(xprop -id "$win" _NET_WM_USER_TIME)"
  xprop -id "$win" _NET_STARTUP_ID | grep -q '"launcher-4711_TIME424242"' ||
    fail "the window does not name the launch: $(xprop -id "$win" _NET_STARTUP_ID)"
  sleep 0.5
  xdotool key Left
  wait_title "Ormidon: b.png" >/dev/null || fail "Left after the hand-over did not step to b.png"
  xdotool key Right
  wait_title "Ormidon: c.png" >/dev/null || fail "Right after the hand-over did not step to c.png"
  sleep 0.3
  # A larger picture: Right pressed while it converts waits for the conversion, and is then
  # handled, never lost; the output is the picture that was shown at Ctrl+E.
  timeout 10 "$app" --no-splash "$large/big.jpg" || fail "the third launch did not end"
  sleep 0.5
  xdotool key ctrl+e Right
  wait_title "Ormidon: next.png" 600 >/dev/null || {
    import -window root "$shots/real_window_failed.png"
    fail "Right pressed during a conversion was lost"
  }
  wait_file "$HOME/Desktop/big.TIFF" || fail "ctrl+e wrote no big.TIFF"
  identify -format '%w %h\n' "$HOME/Desktop/big.TIFF" | grep -q '^4000 3000$' \
    || fail "big.TIFF is not the 4000 x 3000 picture"
  xdotool key ctrl+q
  expect_exit "$pid"
}

# The number of pixels of colour $2 in the picture $1.
count_colour() {
  convert "$1" -fill black +opaque "$2" -fill white -opaque "$2" -colorspace gray \
    -format '%[fx:int(mean*w*h+0.5)]' info:
}

run_list_in_x() {
  "$app" --no-splash "$squares/sq00.png" >"$work/app_list.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: sq00.png") || fail "no window titled 'Ormidon: sq00.png'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  # Into the picture (inside the tab view), then to the next tab with the keyboard.
  xdotool mousemove --window "$win" 300 250 click 1
  xdotool key ctrl+Tab
  green=0
  for _ in $(seq 50); do
    import -window root "$shots/real_window_list.png"
    green=$(count_colour "$shots/real_window_list.png" "$green_rgb")
    [ "$green" -ge $((12 * 6400)) ] && break
    sleep 0.2
  done
  [ "$green" -ge $((12 * 6400)) ] || fail "the Image List tab shows $green green pixels, not 12 cells"
  # The green cells are the even squares, 80 x 80 each on a 90-point pitch: the first one's
  # corner is the corner of the green area; the second green one (sq02) lies 180 to its right.
  corner=$(convert "$shots/real_window_list.png" -fill black +opaque "$green_rgb" -trim \
    -format '%X %Y' info:)
  read -r gx gy <<<"${corner//+/}"
  xdotool mousemove "$((gx + 180 + 40))" "$((gy + 40))" click 1
  wait_title "Ormidon: sq02.png" >/dev/null || fail "a click on the third cell did not open sq02.png"
  sleep 0.3
  xdotool key ctrl+q
  expect_exit "$pid" "list run"
}

if [ "$inside" = list ]; then
  run_list_in_x
  exit 0
fi
run_inside_or_make_work
export pictures=$work/pictures large=$work/large
fresh_home
mkdir -p "$pictures" "$large"
export ORMIDON_WIDGET_DIALOGS=1 # a bare X server has no desktop to show its own dialogs
convert -size 640x480 gradient:red-blue "$pictures/a.png"
convert -size 480x640 gradient:yellow-green "$pictures/b.png"
convert -size 300x200 xc:orange "$pictures/c.png"
echo "not a picture" > "$pictures/b2.txt"
convert -size 4000x3000 gradient:white-purple -density 72 -units PixelsPerInch "$large/big.jpg"
convert -size 200x100 xc:teal "$large/next.png"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }

pref=$HOME/Library/Preferences/zel.pref
[ -f "$pref" ] || fail "no preferences file at $pref"
grep -q "next.png" "$pref" || fail "the picture shown last is not the saved source: $(cat "$pref")"
identify -format '%w %h\n' "$HOME/Desktop/b.TIFF" | grep -q '^480 640$' \
  || fail "b.TIFF is not 480 x 640"

# The image list: 24 squares, the even ones green, the odd ones orange, with the box on.
export squares=$work/squares green_rgb="rgb(20,180,60)"
mkdir -p "$squares"
for i in $(seq 0 23); do
  colour=$([ $((i % 2)) = 0 ] && echo "$green_rgb" || echo "rgb(240,140,20)")
  convert -size 200x200 "xc:$colour" "$squares/$(printf 'sq%02d' "$i").png"
done
sed -i -E 's/(fillList *= *)[^;]*;/\11;/' "$pref"
grep -q 'fillList = 1;' "$pref" || fail "could not turn the fill-list box on: $(cat "$pref")"
xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" list || {
  echo "--- program output"; cat "$work/app_list.log"; exit 1; }
ls "$HOME/.cache/thumbnails/normal" | grep -q '\.png$' || fail "no thumbnails in the shared cache"
echo "1 passed, 0 failed"
