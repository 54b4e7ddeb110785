#!/bin/sh
# Opens a real window on a display of its own, hands a second file over to it, and closes it.
# usage: smoke.sh TELLURIX SOURCE_DIR
set -eu
program=$1
source=$2
. "$(dirname "$0")/display.sh"

"$program" "$source/Data/sleep.csv" &
desktop=$!
await '"Tellurix' "no window came up"
[ "$(stat -c %a "$XDG_RUNTIME_DIR/TellurixDDE")" = 700 ] || { echo "the link socket is not the user's own"; exit 1; }

# A second start hands its file over and ends.
timeout 20 "$program" "$source/Data/sleep.csv" || { echo "the second start did not hand over"; exit 1; }
kill -0 "$desktop" || { echo "the first window is gone"; exit 1; }
[ -z "${TELLURIX_PICTURES:-}" ] || { sleep 1; xwd -root | convert xwd:- "$TELLURIX_PICTURES/0-real.png"; }
echo "a window came up and took the file of a second start"
