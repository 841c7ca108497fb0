#!/usr/bin/env bash
# Ormidon on a Wayland compositor (weston's headless backend, drawing with pixman): the first
# window comes up where the compositor places it, with the picture drawn; a second launch
# carrying an XDG_ACTIVATION_TOKEN hands its file over and ends, and the running window shows
# that file. Screenshots are kept as wayland_window*.png in the given folder for a person to
# look at. (This weston offers no xdg-activation, so whether the compositor honours the token
# cannot be seen here; the token reaching the window is covered by tst_WindowActivation.)
set -euo pipefail
app=${1:?path to the ormidon binary}
shots=${2:-$PWD}
source "$(dirname "$0")/x_helpers.sh" # fresh_home; fail is redefined below to show the log

fail() { echo "FAIL: $*"; [ -f "$work/app.log" ] && { echo "--- program output"; tail -n 20 "$work/app.log"; }; exit 1; }

work=$(mktemp -d)
cleanup() {
  [ -n "${app_pid:-}" ] && kill "$app_pid" 2>/dev/null || true
  [ -n "${weston_pid:-}" ] && kill "$weston_pid" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
fresh_home
mkdir -p "$work/pictures"
unset DISPLAY
magenta="rgb(230,30,200)"
convert -size 800x200 "xc:$magenta" "$work/pictures/a.png"
convert -size 200x800 "xc:$magenta" "$work/pictures/c.png"

weston --backend=headless-backend.so --use-pixman --socket=wayland-ormidon --width=1280 \
  --height=1024 --debug --idle-time=0 >"$work/weston.log" 2>&1 &
weston_pid=$!
for _ in $(seq 100); do [ -S "$XDG_RUNTIME_DIR/wayland-ormidon" ] && break; sleep 0.1; done
[ -S "$XDG_RUNTIME_DIR/wayland-ormidon" ] || fail "weston did not start: $(tail -n 5 "$work/weston.log")"
export WAYLAND_DISPLAY=wayland-ormidon QT_QPA_PLATFORM=wayland

screenshot() { # $1: the name to keep it under
  rm -f "$work"/wayland-screenshot-*.png
  (cd "$work" && timeout 10 weston-screenshooter) || fail "weston-screenshooter failed"
  mv "$work"/wayland-screenshot-*.png "$shots/$1"
}

picture_box() { # width height of the magenta area of the screenshot $1
  convert "$1" -fill black +opaque "$magenta" -trim -format '%w %h' info: 2>/dev/null || echo 0 0
}

wait_shape() { # waits until the magenta picture is $1 (wide or tall); keeps the screenshot as $2
  for _ in $(seq 30); do
    screenshot "$2"
    read -r w h <<<"$(picture_box "$shots/$2")"
    case $1 in
    wide) [ "$w" -gt 300 ] && [ $((w - 4 * h)) -le 6 ] && [ $((4 * h - w)) -le 6 ] && return 0 ;;
    tall) [ "$h" -gt 300 ] && [ $((h - 4 * w)) -le 6 ] && [ $((4 * w - h)) -le 6 ] && return 0 ;;
    esac
    sleep 0.5
  done
  fail "no $1 picture in $2 (magenta area ${w}x${h})"
}

"$app" --no-splash "$work/pictures/a.png" >"$work/app.log" 2>&1 &
app_pid=$!
wait_shape wide wayland_window.png
XDG_ACTIVATION_TOKEN=token-from-the-launcher timeout 10 "$app" --no-splash "$work/pictures/c.png" \
  >>"$work/app.log" 2>&1 || fail "the second launch did not hand over and end"
wait_shape tall wayland_window_handed.png
kill -0 "$app_pid" 2>/dev/null || fail "the running window ended"
echo "1 passed, 0 failed"
