#!/bin/sh
# Opens a real window on a display of its own, hands a second file over to it, and closes it.
# usage: smoke.sh TELLURIX SOURCE_DIR
set -eu
program=$1
source=$2
home=$(mktemp -d)
xvfb= desktop=
cleanup() {
  [ -z "$desktop" ] || kill "$desktop" 2>/dev/null || true
  [ -z "$xvfb" ] || kill "$xvfb" 2>/dev/null || true
  rm -rf "$home"
}
trap cleanup EXIT
export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_RUNTIME_DIR="$home/run"
mkdir -m 0700 "$XDG_RUNTIME_DIR"

Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$home/display" 2>/dev/null &
xvfb=$!
for _ in $(seq 100); do [ -s "$home/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$home/display")
export DISPLAY
unset QT_QPA_PLATFORM

"$program" "$source/Data/sleep.csv" &
desktop=$!
shown() { xwininfo -root -tree 2>/dev/null | grep -q "$1"; }
for _ in $(seq 150); do shown '"Tellurix' && break; sleep 0.1; done
shown '"Tellurix' || { echo "no window came up"; exit 1; }
[ "$(stat -c %a "$XDG_RUNTIME_DIR/TellurixDDE")" = 700 ] || { echo "the link socket is not the user's own"; exit 1; }

# A second start hands its file over and ends.
timeout 20 "$program" "$source/Data/sleep.csv" || { echo "the second start did not hand over"; exit 1; }
kill -0 "$desktop" || { echo "the first window is gone"; exit 1; }
[ -z "${TELLURIX_PICTURES:-}" ] || { sleep 1; xwd -root | convert xwd:- "$TELLURIX_PICTURES/0-real.png"; }
echo "a window came up and took the file of a second start"
