#!/bin/sh
# Runs the peer scripts of this folder and those of our benchmarks that they name, in one go, and prints both times and
# their ratio: compare.sh SPEED_PROGRAM [SCRIPT...]. Every time is the least of several, of the processor, in milliseconds.
set -eu
speed=$1
shift
PEERS=$(cd "$(dirname "$0")" && pwd)
export PEERS
[ $# -gt 0 ] || set -- "$PEERS"/*.R

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for script in "$@"; do
  Rscript --vanilla "$script"
done > "$work/theirs"

names=$(cut -f 1 "$work/theirs" | paste -s -d '|')
"$speed" --benchmark_filter="^($names)\$" --benchmark_repetitions=5 --benchmark_format=csv > "$work/ours" 2> "$work/notes" ||
  { cat "$work/notes" >&2; exit 1; }

awk -F '\t' -v OFS='\t' '
  BEGIN {
    format = "%-32s %12s %12s %8s\n"
    printf format, "benchmark", "ours, ms", "theirs, ms", "ratio"
    per["ns"] = 1e-6; per["us"] = 1e-3; per["ms"] = 1; per["s"] = 1e3
  }
  NR == FNR {
    split($0, field, ",")
    name = field[1]
    gsub(/"/, "", name)
    time = field[4] * per[field[5]]
    if (!(name in ours) || time < ours[name]) ours[name] = time
    next
  }
  !($1 in ours) { printf format, $1, "missing", $2, "-"; failed = 1; next }
  { printf "%-32s %12.1f %12.1f %8.2f\n", $1, ours[$1], $2, $2 / ours[$1] }
  END { exit failed }
' "$work/ours" "$work/theirs"
