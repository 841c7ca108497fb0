#!/usr/bin/env bash
# View > Information in a real X server: Ctrl+I shows the panel at the window's right with the
# camera's data of a photograph, the arrow keys step to a picture without camera data and the
# panel follows, Ctrl+I hides it and the picture is drawn exactly as before it was shown. The
# panel's state is kept: a second start shows it again. Screenshots are kept as
# info_window*.png in the given folder for a person to look at.
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
inside=${3:-}

source "$(dirname "$0")/x_helpers.sh"

# How many grey levels a crop of the screenshot holds: 1 for a plain area, many for text.
levels() { # screenshot x y w h
  convert "$1" -crop "${4}x${5}+${2}+${3}" -colorspace gray -format %k info:
}

shown_setting() {
  grep -s '^shown=' "$XDG_CONFIG_HOME/Ormidon/viewer.ini" | cut -d= -f2 || true
}

start_window() { # the program with camera.jpg; prints nothing, sets pid and win
  "$app" --no-splash "$pictures/camera.jpg" >>"$work/app.log" 2>&1 &
  pid=$!
  win=$(wait_title "Ormidon: camera.jpg") || fail "no window titled 'Ormidon: camera.jpg'"
  xdotool windowsize "$win" 1100 700
  sleep 0.5
  xdotool windowfocus --sync "$win"
  sleep 0.3
  eval "$(xdotool getwindowgeometry --shell "$win")"
}

run_in_x() {
  start_window
  # The window's right part, where the panel goes, and a patch of the picture's area.
  px=$((X + WIDTH - 230)) py=$((Y + 60)) pw=220 ph=300
  import -window root "$shots/info_window_hidden.png"
  [ "$(shown_setting)" != true ] || fail "the panel is marked shown before it was"

  xdotool key ctrl+i
  sleep 1
  import -window root "$shots/info_window_camera.png"
  [ "$(shown_setting)" = true ] || fail "Ctrl+I did not show the panel (viewer.ini: $(shown_setting))"
  cmp -s <(crop "$shots/info_window_hidden.png" $px $py $pw $ph) \
         <(crop "$shots/info_window_camera.png" $px $py $pw $ph) &&
    fail "Ctrl+I drew nothing at the window's right"
  [ "$(levels "$shots/info_window_camera.png" $px $py $pw $ph)" -gt 8 ] ||
    fail "the panel shows no text"

  # The next picture (no camera data): the panel follows, with fewer rows.
  xdotool key Right
  wait_title "Ormidon: plain.png" >/dev/null || fail "Right did not step to plain.png"
  sleep 1
  import -window root "$shots/info_window_plain.png"
  cmp -s <(crop "$shots/info_window_camera.png" $px $py $pw $ph) \
         <(crop "$shots/info_window_plain.png" $px $py $pw $ph) &&
    fail "the panel did not follow the arrow key"

  # Back to the photograph: the same rows as the first time.
  xdotool key Left
  wait_title "Ormidon: camera.jpg" >/dev/null || fail "Left did not step back"
  sleep 1
  import -window root "$shots/info_window_camera_again.png"
  cmp -s <(crop "$shots/info_window_camera.png" $px $py $pw $ph) \
         <(crop "$shots/info_window_camera_again.png" $px $py $pw $ph) ||
    fail "the photograph's information differs the second time"

  # Hidden again: the window is drawn as before the panel was shown, picture included.
  xdotool key ctrl+i
  sleep 1
  import -window root "$shots/info_window_hidden_again.png"
  [ "$(shown_setting)" = false ] || fail "Ctrl+I did not hide the panel"
  cmp -s <(crop "$shots/info_window_hidden.png" $X $Y $WIDTH $((HEIGHT - 150))) \
         <(crop "$shots/info_window_hidden_again.png" $X $Y $WIDTH $((HEIGHT - 150))) ||
    fail "the picture is not drawn as before the panel was shown"

  # Shown at the next start.
  xdotool key ctrl+i
  sleep 0.5
  xdotool key ctrl+q
  expect_exit "$pid" "first run"
  start_window
  sleep 1
  import -window root "$shots/info_window_restarted.png"
  # The frame comes back where the window manager put it: the panel is found from the window.
  cmp -s <(crop "$shots/info_window_camera.png" $px $py $pw $ph) \
         <(crop "$shots/info_window_restarted.png" $((X + WIDTH - 230)) $((Y + 60)) $pw $ph) ||
    fail "the panel is not shown, as it was left, at the next start"
  xdotool key ctrl+q
  expect_exit "$pid" "second run"
}

run_inside_or_make_work
export pictures=$work/pictures
fresh_home
mkdir -p "$pictures"
export LANG=C.UTF-8 LC_ALL=C.UTF-8 LANGUAGE=
convert -size 1200x800 gradient:orange-navy "$pictures/camera.jpg"
exiv2 -k \
  -M"set Exif.Image.Make Ascii Canon" \
  -M"set Exif.Image.Model Ascii Canon EOS 5D Mark IV" \
  -M"set Exif.Photo.LensModel Ascii EF24-70mm f/2.8L II USM" \
  -M"set Exif.Photo.ExposureTime Rational 1/250" \
  -M"set Exif.Photo.FNumber Rational 28/10" \
  -M"set Exif.Photo.ISOSpeedRatings Short 400" \
  -M"set Exif.Photo.FocalLength Rational 50/1" \
  -M"set Exif.Photo.FocalLengthIn35mmFilm Short 50" \
  -M"set Exif.Photo.DateTimeOriginal Ascii 2024:05:17 14:03:21" \
  -M"set Exif.GPSInfo.GPSLatitudeRef Ascii S" \
  -M"set Exif.GPSInfo.GPSLatitude Rational 33/1 51/1 2484/100" \
  -M"set Exif.GPSInfo.GPSLongitudeRef Ascii E" \
  -M"set Exif.GPSInfo.GPSLongitude Rational 151/1 12/1 5436/100" \
  "$pictures/camera.jpg"
convert -size 900x600 gradient:seagreen-white "$pictures/plain.png"

xvfb-run -a -s "-screen 0 1280x1024x24" bash "$0" "$app" "$shots" inside || {
  echo "--- program output"; cat "$work/app.log"; exit 1; }
echo "1 passed, 0 failed"
