# Sourced by the tests that open real windows: a home and a display of their own, both gone at the end. Leave the process
# number of the desktop in $desktop while it runs.
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
# Without a reset, which turns those away who come just when the last window has gone.
Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp -noreset 3>"$home/display" 2>/dev/null &
xvfb=$!
for _ in $(seq 100); do [ -s "$home/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$home/display")
export DISPLAY
unset QT_QPA_PLATFORM

# Whether a window is there whose entry in the tree of windows holds the words; await ends the test with a text when it
# does not come.
shown() { xwininfo -root -tree 2>/dev/null | grep -q "$1"; }
await() {
  for _ in $(seq 300); do shown "$1" && return 0; sleep 0.1; done
  echo "$2"
  exit 1
}

# Waits until the desktop has been at rest for a second, by the processor time that it has used.
settled() {
  before=
  for _ in $(seq 60); do
    now=$(cut -d ' ' -f 14,15 "/proc/$desktop/stat")
    [ "$now" != "$before" ] || return 0
    before=$now
    sleep 1
  done
  echo "the desktop never came to rest"
  exit 1
}
