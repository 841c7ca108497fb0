#!/usr/bin/env bash
# Zoom in a real X server: opens a picture of one-pixel black and white squares, shows it at
# actual size with the 1 key and checks in a screenshot that every screen pixel is one picture
# pixel (black and white alternating, nothing blended); Ctrl+wheel zooms in further (squares of
# several screen pixels), and 0 returns to the fitted picture, where the squares blend to grey.
# F11 shows the picture alone on black over the whole screen (1 zooms there too); Escape leaves.
# Screenshots are kept as view_window*.png in the given folder for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

# Prints "ok" when the grey crop on stdin (w x h bytes) alternates black and white pixel by
# pixel, else what it found.
check_board() {
  python3 -c '
import sys
w, h = int(sys.argv[1]), int(sys.argv[2])
data = sys.stdin.buffer.read()
assert len(data) == w * h, len(data)
bad = 0
for y in range(h):
    for x in range(w):
        p = data[y * w + x]
        if p not in (0, 255) or (x + 1 < w and data[y * w + x + 1] == p) or (y + 1 < h and data[(y + 1) * w + x] == p):
            bad += 1
print("ok" if bad == 0 else "%d of %d pixels are not a one-pixel checkerboard" % (bad, w * h))
' "$1" "$2"
}

# Prints the mean grey (0..255) of the crop on stdin.
mean_grey() {
  python3 -c 'import sys; d = sys.stdin.buffer.read(); print(sum(d) // len(d))'
}

run_in_x() {
  "$app" --no-splash "$pictures/board.png" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: board.png") || fail "no window titled 'Ormidon: board.png'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  xdotool windowfocus --sync "$win"
  eval "$(xdotool getwindowgeometry --shell "$win")"
  # A patch in the middle of the picture's area (the view fills the window's upper part).
  cx=$((X + WIDTH / 2 - 100)) cy=$((Y + 150))

  import -window root "$shots/view_window_fitted.png"
  grey=$(crop "$shots/view_window_fitted.png" $cx $cy 200 200 | mean_grey)
  [ "$grey" -gt 90 ] && [ "$grey" -lt 165 ] || fail "the fitted board is not a blend to grey: $grey"

  xdotool key 1
  sleep 0.5
  import -window root "$shots/view_window_actual.png"
  result=$(crop "$shots/view_window_actual.png" $cx $cy 200 200 | check_board 200 200)
  [ "$result" = ok ] || fail "at actual size: $result"

  # Ctrl+wheel up over the picture: larger squares, no longer one pixel each.
  xdotool mousemove $((cx + 100)) $((cy + 100)) keydown ctrl click 4 click 4 click 4 click 4 keyup ctrl
  sleep 0.5
  import -window root "$shots/view_window_zoomed.png"
  result=$(crop "$shots/view_window_zoomed.png" $cx $cy 200 200 | check_board 200 200)
  [ "$result" != ok ] || fail "Ctrl+wheel did not zoom in"
  # At 200 % (four notches double the size) each picture pixel is a square of 2 x 2 pure pixels.
  grey=$(crop "$shots/view_window_zoomed.png" $cx $cy 200 200 | mean_grey)
  [ "$grey" -gt 100 ] && [ "$grey" -lt 155 ] || fail "the zoomed board is not half white: $grey"
  colours=$(convert "$shots/view_window_zoomed.png" -crop "200x200+$cx+$cy" -colorspace gray \
    -format %k info:)
  [ "$colours" = 2 ] || fail "the zoomed board is smoothed ($colours grey levels), not pixels"

  xdotool key 0
  sleep 0.5
  import -window root "$shots/view_window_fit_again.png"
  cmp <(crop "$shots/view_window_fitted.png" $cx $cy 200 200) \
      <(crop "$shots/view_window_fit_again.png" $cx $cy 200 200) >/dev/null ||
    fail "0 did not return to the very fitted picture"

  # F11: the picture alone over the whole screen, on black; Escape goes back to the window.
  xdotool key F11
  for _ in $(seq 50); do
    [ "$(xdotool search --onlyvisible --name '^Ormidon: board.png$' | wc -l)" = 2 ] && break
    sleep 0.1
  done
  full=$(xdotool search --onlyvisible --name '^Ormidon: board.png$' | grep -v "^$win\$" | head -n1)
  [ -n "$full" ] || fail "F11 showed no full-screen window"
  sleep 0.5
  eval "$(xdotool getwindowgeometry --shell "$full")"
  [ "$WIDTH x $HEIGHT" = "1280 x 1024" ] || fail "the full-screen window is $WIDTH x $HEIGHT"
  import -window root "$shots/view_window_full_screen.png"
  # 2400 x 1800 fitted into 1280 x 1024 is 1280 x 960: black bands of 32 rows above and below.
  grey=$(crop "$shots/view_window_full_screen.png" 0 0 1280 30 | mean_grey)
  [ "$grey" = 0 ] || fail "the band above the full-screen picture is not black: $grey"
  grey=$(crop "$shots/view_window_full_screen.png" 540 400 200 200 | mean_grey)
  [ "$grey" -gt 90 ] && [ "$grey" -lt 165 ] || fail "no picture in full screen: $grey"
  # The zoom keys work there too.
  xdotool key 1
  sleep 0.5
  import -window root "$shots/view_window_full_screen_actual.png"
  result=$(crop "$shots/view_window_full_screen_actual.png" 540 400 200 200 | check_board 200 200)
  [ "$result" = ok ] || fail "at actual size in full screen: $result"
  xdotool key Escape
  for _ in $(seq 50); do
    [ "$(xdotool search --onlyvisible --name '^Ormidon: board.png$' | wc -l)" = 1 ] && break
    sleep 0.1
  done
  [ "$(xdotool search --onlyvisible --name '^Ormidon: board.png$' | wc -l)" = 1 ] ||
    fail "Escape did not leave full screen"
  sleep 0.3
  import -window root "$shots/view_window_left_full_screen.png"
  cmp <(crop "$shots/view_window_fitted.png" $cx $cy 200 200) \
      <(crop "$shots/view_window_left_full_screen.png" $cx $cy 200 200) >/dev/null ||
    fail "the window's picture changed after full screen"

  xdotool key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
export pictures=$work/pictures
fresh_home
mkdir -p "$pictures"
convert -size 2x2 xc:black -fill white -draw 'point 1,0' -draw 'point 0,1' "$work/tile.png"
convert -size 2400x1800 tile:"$work/tile.png" -type Grayscale "$pictures/board.png"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
