#!/usr/bin/env bash
# The file actions in a real X server, driven by real key presses: Delete moves the shown
# picture to the XDG trash of a private HOME (the file under Trash/files, its .trashinfo under
# Trash/info) and the window steps to the next picture; Ctrl+Z brings the file back byte for
# byte; F2 opens the rename dialog, the typed name replaces the selected base name and the
# window shows the renamed picture. Screenshots are kept as files_window*.png in the given folder
# for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

# The colour of the middle of the screenshot's view area, as "r,g,b" from 0 to 255.
colour_at() { # screenshot x y
  convert "$1" -crop "1x1+$2+$3" -depth 8 -format '%[fx:int(255*r)],%[fx:int(255*g)],%[fx:int(255*b)]' info:
}

run_in_x() {
  "$app" --no-splash "$pictures/b.png" >"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: b.png") || fail "no window titled 'Ormidon: b.png'"
  xdotool windowsize "$win" 900 700
  sleep 0.5
  xdotool windowfocus --sync "$win"
  eval "$(xdotool getwindowgeometry --shell "$win")"
  cx=$((X + WIDTH / 2)) cy=$((Y + 200))
  import -window root "$shots/files_window_before.png"
  [ "$(colour_at "$shots/files_window_before.png" $cx $cy)" = "0,0,255" ] ||
    fail "b.png (blue) is not shown: $(colour_at "$shots/files_window_before.png" $cx $cy)"

  # Delete: into the trash, and on to the next picture (c.png, red).
  xdotool key Delete
  wait_title "Ormidon: c.png" 50 >/dev/null || fail "Delete did not step to c.png"
  [ ! -e "$pictures/b.png" ] || fail "b.png is still in its folder"
  cmp "$work/b.original" "$trash/files/b.png" || fail "the trashed file differs"
  [ -f "$trash/info/b.png.trashinfo" ] || fail "no b.png.trashinfo"
  grep -qx '\[Trash Info\]' "$trash/info/b.png.trashinfo" || fail "the info file has no header"
  grep -qx "Path=${pictures_encoded}/b.png" "$trash/info/b.png.trashinfo" ||
    fail "the info file's Path: $(cat "$trash/info/b.png.trashinfo")"
  grep -Eq '^DeletionDate=[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}$' \
    "$trash/info/b.png.trashinfo" || fail "the info file's DeletionDate"
  sleep 0.5
  import -window root "$shots/files_window_trashed.png"
  [ "$(colour_at "$shots/files_window_trashed.png" $cx $cy)" = "255,0,0" ] ||
    fail "c.png (red) is not shown after Delete"

  # Ctrl+Z: back where it was, byte for byte, and shown.
  xdotool key ctrl+z
  wait_title "Ormidon: b.png" 50 >/dev/null || fail "Ctrl+Z did not show b.png again"
  cmp "$work/b.original" "$pictures/b.png" || fail "the file put back differs"
  [ ! -e "$trash/files/b.png" ] && [ ! -e "$trash/info/b.png.trashinfo" ] ||
    fail "the trash still holds b.png"

  # F2: the rename dialog, with "b" selected; typing replaces it and Return renames.
  xdotool key F2
  dialog=$(wait_title "Rename" 50) || fail "F2 opened no rename dialog"
  sleep 0.3
  import -window root "$shots/files_window_rename.png"
  xdotool type --delay 50 "beach"
  xdotool key Return
  wait_title "Ormidon: beach.png" 50 >/dev/null || fail "the window does not show beach.png"
  [ ! -e "$pictures/b.png" ] && cmp "$work/b.original" "$pictures/beach.png" ||
    fail "b.png was not renamed to beach.png"
  sleep 0.5
  import -window root "$shots/files_window_renamed.png"
  [ "$(colour_at "$shots/files_window_renamed.png" $cx $cy)" = "0,0,255" ] ||
    fail "beach.png (blue) is not shown after the rename"

  # Without a window manager the keyboard does not go back by itself once the dialog closes.
  xdotool windowfocus --sync "$win"
  xdotool key ctrl+q
  expect_exit "$pid"
}

run_inside_or_make_work
# A folder name that needs percent-encoding in the .trashinfo.
export pictures="$work/my pictures" pictures_encoded="${work}/my%20pictures"
fresh_home
export XDG_DATA_HOME=$work/home/.local/share trash=$work/home/.local/share/Trash
mkdir -p "$pictures"
convert -size 640x480 xc:lime "$pictures/a.png"
convert -size 640x480 xc:blue "$pictures/b.png"
convert -size 640x480 xc:red "$pictures/c.png"
cp "$pictures/b.png" "$work/b.original"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
