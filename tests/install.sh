#!/bin/sh
# Installs into a folder of its own and runs what stands there, with nothing of the source tree in reach.
# usage: install.sh BUILD_DIR
set -eu
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
unset TELLURIX_HOME LD_LIBRARY_PATH
cmake --install "$1" --prefix "$prefix/first" >"$prefix/log" || { cat "$prefix/log"; exit 1; }
# It is moved after that: nothing may know its place.
mv "$prefix/first" "$prefix/tree"
cd "$prefix"
export HOME="$prefix/home" XDG_CONFIG_HOME="$prefix/config" XDG_RUNTIME_DIR="$prefix/run"
mkdir "$HOME"
mkdir -m 0700 "$XDG_RUNTIME_DIR"
tree/bin/tellurix-cli run tree/share/tellurix/Data/examples/first-analysis.tlx --report - >report
grep -q "4.062128" report || { cat report; exit 1; }
[ -x tree/bin/tellurix ] || { echo "runs on the command line; no desktop was built"; exit 0; }
for file in applications/tellurix.desktop mime/packages/tellurix.xml icons/hicolor/scalable/apps/tellurix.svg; do
  [ -s "tree/share/$file" ] || { echo "$file is missing"; exit 1; }
done
QT_QPA_PLATFORM=offscreen tree/bin/tellurix &
desktop=$!
for _ in $(seq 100); do grep -q "^R1=0" config/tellurix/Tellurix.ini 2>/dev/null && break; sleep 0.1; done
kill "$desktop"
wait "$desktop" || true
grep -q "^R1=0" config/tellurix/Tellurix.ini || { echo "the desktop wrote no settings"; exit 1; }
for file in Tellurix.tlw data/test.tlw; do
  cmp "config/tellurix/$file" "tree/share/tellurix/Data/$(basename "$file")"
done
echo "the installed tree runs"
