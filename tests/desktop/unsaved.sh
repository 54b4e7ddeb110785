#!/bin/sh
# Ends a running desktop that has unsaved work by each of the signals; the next start must offer it. Then the same by
# SIGKILL, which leaves what the signal before has kept.
# usage: unsaved.sh TELLURIX
set -eu
program=$1
home=$(mktemp -d)
xvfb= desktop=
cleanup() {
  [ -z "$desktop" ] || kill -9 "$desktop" 2>/dev/null || true
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

shown() { xwininfo -root -tree 2>/dev/null | grep -q "$1"; }
await() {
  for _ in $(seq 300); do shown "$1" && return 0; sleep 0.1; done
  echo "$2"
  exit 1
}
copies() { find "$home/config/tellurix/Recovery" -name "*.tlw" 2>/dev/null | wc -l; }
end() {
  kill "-$1" "$desktop"
  status=0
  wait "$desktop" || status=$?
  desktop=
  [ "$status" = "$2" ] || { echo "ended with $status, not $2"; exit 1; }
}

# A copy sent by a spreadsheet program counts as unsaved from the start.
printf 'a,b\n1,2\n' >"$home/~excel.csv"
"$program" "$home/~excel.csv" &
desktop=$!
await '"Tellurix"' "no window came up"
sleep 1.5  # past the Opening screen
end TERM 143
[ "$(copies)" = 1 ] || { echo "SIGTERM kept $(copies) copies"; exit 1; }

for signal in HUP KILL; do
  "$program" &
  desktop=$!
  await '"Unsaved Work' "nothing was offered before SIG$signal"
  case $signal in HUP) end HUP 129 ;; KILL) end KILL 137 ;; esac
  [ "$(copies)" = 1 ] || { echo "SIG$signal left $(copies) copies"; exit 1; }
done
echo "unsaved work is kept and offered"
