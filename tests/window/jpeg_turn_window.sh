#!/usr/bin/env bash
# Lossless JPEG turns in a real X server: opens a photograph (red on the left, blue on the
# right, with a camera's EXIF), turns it right with Ctrl+R, answers the question with Return
# (Rotate), and checks the file on disk (decoded, it is the original turned a quarter clockwise;
# the camera data is still there) and the screenshot (red now above blue, the picture upright).
# Ctrl+L then turns it back without asking again. Screenshots are kept as jpeg_turn_window*.png
# in the given folder for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

# Prints "rx ry bx by w h": the centres of the red and of the blue pixels of the screenshot's
# window area, and the size of the box that holds both.
colour_layout() {
  convert "$1" -crop "${4}x${5}+${2}+${3}" -depth 8 rgb:- | python3 -c '
import sys
w, h = int(sys.argv[1]), int(sys.argv[2])
d = sys.stdin.buffer.read()
red, blue = [0, 0, 0], [0, 0, 0]
xs, ys = [], []
for y in range(h):
    row = d[3 * w * y: 3 * w * (y + 1)]
    for x in range(w):
        r, g, b = row[3 * x], row[3 * x + 1], row[3 * x + 2]
        c = red if (r > 200 and g < 60 and b < 60) else blue if (b > 200 and r < 60 and g < 60) else None
        if c is not None:
            c[0] += x; c[1] += y; c[2] += 1; xs.append(x); ys.append(y)
if not red[2] or not blue[2]:
    print("none"); sys.exit()
print(red[0] // red[2], red[1] // red[2], blue[0] // blue[2], blue[1] // blue[2],
      max(xs) - min(xs) + 1, max(ys) - min(ys) + 1)
' "$4" "$5"
}

run_in_x() {
  "$app" --no-splash "$pictures/photo.jpg" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: photo.jpg") || fail "no window titled 'Ormidon: photo.jpg'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  xdotool windowfocus --sync "$win"
  eval "$(xdotool getwindowgeometry --shell "$win")"
  import -window root "$shots/jpeg_turn_window_before.png"
  read -r rx ry bx by w h <<<"$(colour_layout "$shots/jpeg_turn_window_before.png" "$X" "$Y" "$WIDTH" "$HEIGHT")"
  [ "$rx" != none ] || fail "no red and blue picture in the window"
  [ "$rx" -lt "$bx" ] && [ "$w" -gt "$h" ] || fail "before the turn: red $rx,$ry blue $bx,$by box ${w}x$h"

  xdotool key ctrl+r
  question=$(wait_title "Ormidon") || {
    import -window root "$shots/jpeg_turn_window_failed.png"
    fail "ctrl+r on a JPEG asked nothing"
  }
  sleep 0.3
  import -window root "$shots/jpeg_turn_window_question.png"
  xdotool windowfocus --sync "$question" key Return # the default button: Rotate
  wait_size "$pictures/photo.jpg" "320 640" # the file turned

  # On disk: the original turned a quarter clockwise, up to the inverse DCT's rounding.
  differ=$(compare -metric AE -fuzz 2% "$pictures/photo.jpg" "$work/expected_right.png" null: 2>&1 || true)
  [ "$differ" = 0 ] || fail "the turned file differs from the original turned right in $differ pixels"
  [ "$(exiv2 -q -K Exif.Image.Make -Pv "$pictures/photo.jpg")" = Testmaker ] || fail "the camera's make was lost"
  [ "$(exiv2 -q -K Exif.GPSInfo.GPSLatitudeRef -Pv "$pictures/photo.jpg")" = N ] || fail "the place was lost"
  [ -z "$(ls -A "$pictures" | grep -v '^photo.jpg$')" ] || fail "files left beside the photo: $(ls -A "$pictures")"

  sleep 0.5
  import -window root "$shots/jpeg_turn_window_after.png"
  read -r rx ry bx by w h <<<"$(colour_layout "$shots/jpeg_turn_window_after.png" "$X" "$Y" "$WIDTH" "$HEIGHT")"
  [ "$rx" != none ] || fail "no picture in the window after the turn"
  [ "$ry" -lt "$by" ] && [ "$h" -gt "$w" ] || fail "after the turn: red $rx,$ry blue $bx,$by box ${w}x$h"

  # Turned back with Ctrl+L, not asked again this session.
  xdotool windowfocus --sync "$win" key ctrl+l
  wait_size "$pictures/photo.jpg" "640 320" # ctrl+l turned it back
  [ "$(xdotool search --onlyvisible --name '^Ormidon$' | wc -l)" = 0 ] || fail "ctrl+l asked again"
  differ=$(compare -metric AE "$pictures/photo.jpg" "$work/original.png" null: 2>&1 || true)
  [ "$differ" = 0 ] || fail "right then left is not the original picture: $differ pixels differ"

  xdotool key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
export pictures=$work/pictures
fresh_home
mkdir -p "$pictures"
convert -size 320x320 xc:red xc:blue +append -quality 95 -sampling-factor 2x2 "$pictures/photo.jpg"
exiv2 -q -M"set Exif.Image.Make Testmaker" -M"set Exif.GPSInfo.GPSLatitudeRef N" "$pictures/photo.jpg"
convert "$pictures/photo.jpg" "$work/original.png"
convert "$pictures/photo.jpg" -rotate 90 "$work/expected_right.png"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
