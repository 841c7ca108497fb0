# Shared by the real-window tests: sourced, not run.

fail() { echo "FAIL: $*"; exit 1; }

wait_title() { # prints the id of a window whose title is exactly $1, once there is one
  for _ in $(seq "${2:-100}"); do # tenths of a second
    id=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n1 || true)
    [ -n "$id" ] && { echo "$id"; return 0; }
    sleep 0.1
  done
  return 1
}

size_of() { identify -format '%w %h' "$1" 2>/dev/null || true; }

wait_size() { # waits up to 20 s until the picture $1 reads back as $2 (width height)
  for _ in $(seq 200); do [ "$(size_of "$1")" = "$2" ] && return 0; sleep 0.1; done
  fail "$(basename "$1") reads back as '$(size_of "$1")', not '$2'"
}

expect_exit() { # after Ctrl+Q: the program (pid $1) ends within ten seconds, with status 0; $2 names the run
  local pid=$1 run=${2:-}
  for _ in $(seq 100); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
  kill -0 "$pid" 2>/dev/null && fail "ctrl+q did not quit${run:+ the $run}"
  wait "$pid" || fail "${run:-the program} ended with status $?"
}

fresh_home() { # the program gets a home of its own under $work: config, cache and runtime folders
  export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_CACHE_HOME=$work/home/.cache
  export XDG_RUNTIME_DIR=$work/run
  mkdir -p "$HOME/Library/Preferences" "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR"
  chmod 700 "$XDG_RUNTIME_DIR"
  unset XDG_DESKTOP_DIR QT_QPA_PLATFORM DESKTOP_STARTUP_ID XDG_ACTIVATION_TOKEN
}

crop() { # screenshot x y w h: the crop's grey bytes
  convert "$1" -crop "${4}x${5}+${2}+${3}" -colorspace gray -depth 8 gray:-
}

run_inside_or_make_work() { # inside the X server: the script's run_in_x, then its end; outside:
  # a fresh $work for the run, removed when the script ends
  if [ "$inside" = inside ]; then
    run_in_x
    exit 0
  fi
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  export work
}
