#!/bin/sh
# Ends a running desktop that has unsaved work by each of the signals; the next start must offer it. Then the same by
# SIGKILL, which leaves what the signal before has kept.
# usage: unsaved.sh TELLURIX
set -eu
program=$1
. "$(dirname "$0")/display.sh"

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
settled
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
