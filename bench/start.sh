#!/bin/sh
# How long a start takes: tellurix-cli with nothing to do, and the desktop to its Opening screen on a display of its own.
# The least of several starts, in milliseconds.
# usage: start.sh BIN_DIR
set -eu
bin=$1
home=$(mktemp -d)
xvfb=
cleanup() {
  [ -z "$xvfb" ] || kill "$xvfb" 2>/dev/null || true
  rm -rf "$home"
}
trap cleanup EXIT
export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_RUNTIME_DIR="$home/run"
mkdir -m 0700 "$XDG_RUNTIME_DIR"
now() { date +%s%N; }
least() { sort -n | head -1 | awk '{ printf "%.1f ms\n", $1 / 1e6 }'; }

printf 'tellurix-cli, an empty script   '
: >"$home/empty.tlx"
for _ in $(seq 20); do
  began=$(now)
  "$bin/tellurix-cli" run "$home/empty.tlx"
  echo $(($(now) - began))
done | least

Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$home/display" 2>/dev/null &
xvfb=$!
while [ ! -s "$home/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$home/display")
export DISPLAY
unset QT_QPA_PLATFORM
printf 'desktop to its Opening screen   '
for _ in $(seq 5); do
  began=$(now)
  "$bin/tellurix" 2>/dev/null &
  desktop=$!
  until xwininfo -root -tree 2>/dev/null | grep -q "(\"tellurix\" .* 520x300"; do :; done
  echo $(($(now) - began))
  kill "$desktop"
  wait "$desktop" 2>/dev/null || true
done | least
