#!/usr/bin/env bash
# Stepping through a folder of large JPEGs with the arrow keys in a real X server, while the
# pictures beside the current one are decoded ahead: each step shows the right picture (its
# colour in a screenshot, its name in the title), a file rewritten on disk while its old pixels
# were held is shown as it is now, stepping back works, and an undecodable file at the end is
# refused as ever. Screenshots are kept as step_window*.png in the given folder for a person to
# look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

# The mean colour of a 200 x 200 patch of screenshot $1 at $2,$3 as "r g b" (0..255).
patch_colour() {
  convert "$1" -crop "200x200+$2+$3" -scale 1x1\! -depth 8 txt:- |
    sed -n 's/.*(\([0-9.]*\),\([0-9.]*\),\([0-9.]*\).*/\1 \2 \3/p' | awk '{ printf "%d %d %d\n", $1, $2, $3 }'
}

# True when "r g b" $1 is within 40 of each channel of "r g b" $2.
near() {
  python3 -c 'import sys; a = list(map(int, sys.argv[1].split())); b = list(map(int, sys.argv[2].split())); sys.exit(0 if all(abs(x - y) <= 40 for x, y in zip(a, b)) else 1)' "$1" "$2"
}

# Presses $1, waits for the title "Ormidon: $2", and checks the colour "$3" in screenshot $4.
step_to() {
  xdotool key "$1"
  wait_title "Ormidon: $2" 100 >/dev/null || fail "$1 did not show $2"
  sleep 0.7 # the repaint, and the look-around for the next step
  # On a loaded machine the repaint can come later: look again for up to three seconds.
  local seen tries=0
  while :; do
    import -window root "$shots/step_window_$4.png"
    seen=$(patch_colour "$shots/step_window_$4.png" "$cx" "$cy")
    near "$seen" "$3" && break
    tries=$((tries + 1))
    [ "$tries" -lt 10 ] || fail "after $1 to $2 the picture is $seen, not $3"
    sleep 0.3
  done
}

run_in_x() {
  "$app" --no-splash "$pictures/p1.jpg" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: p1.jpg") || fail "no window titled 'Ormidon: p1.jpg'"
  xdotool windowsize "$win" 900 700
  sleep 0.7
  xdotool windowfocus --sync "$win"
  eval "$(xdotool getwindowgeometry --shell "$win")"
  cx=$((X + WIDTH / 2 - 100)) cy=$((Y + 120))
  import -window root "$shots/step_window_p1.png"
  near "$(patch_colour "$shots/step_window_p1.png" $cx $cy)" "255 0 0" || fail "p1 is not red"

  step_to Right p2.jpg "0 160 0" p2
  step_to Right p3.jpg "0 0 255" p3
  # p4 has been decoded ahead by now; it is rewritten in another colour, and must be shown so.
  convert -size 3000x2000 xc:'rgb(255,255,0)' -quality 92 "$pictures/p4.tmp.jpg"
  mv "$pictures/p4.tmp.jpg" "$pictures/p4.jpg"
  step_to Right p4.jpg "255 255 0" p4_rewritten
  step_to Left p3.jpg "0 0 255" back_p3
  step_to Right p4.jpg "255 255 0" p4_again
  step_to Right p5.jpg "255 0 255" p5
  # The last file is no picture: named in the title, nothing drawn, the size field empty.
  xdotool key Right
  wait_title "Ormidon: p6.jpg" 100 >/dev/null || fail "Right did not step to p6.jpg"
  sleep 0.7
  local tries=0
  while :; do
    import -window root "$shots/step_window_p6_undecodable.png"
    seen=$(patch_colour "$shots/step_window_p6_undecodable.png" "$cx" "$cy")
    near "$seen" "255 0 255" || break
    tries=$((tries + 1))
    [ "$tries" -lt 10 ] || fail "the undecodable file left the previous picture on screen"
    sleep 0.3
  done
  kill -0 "$pid" || fail "the program ended at the undecodable file"

  xdotool key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
export pictures=$work/pictures
fresh_home
mkdir -p "$pictures"
# Six-megapixel pictures: large enough to be drawn from a scaled copy.
n=1
for colour in 'rgb(255,0,0)' 'rgb(0,160,0)' 'rgb(0,0,255)' 'rgb(0,255,255)' 'rgb(255,0,255)'; do
  convert -size 3000x2000 xc:"$colour" -quality 92 "$pictures/p$n.jpg"
  n=$((n + 1))
done
printf '\377\330\377\340 no picture follows' >"$pictures/p6.jpg"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
