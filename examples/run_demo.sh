#!/bin/sh
# SPDX-License-Identifier: MIT
#
# run_demo.sh BIN_DIR: the standard atmosphere through the library, beside libm.
set -eu
if [ $# -ne 1 ] || [ ! -x "$1/luxvm" ]; then
  echo "usage: run_demo.sh BIN_DIR (the directory that holds luxvm)" >&2
  exit 2
fi
bin=$1
data=$(dirname "$0")/data/atmosphere.csv
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

# One thread: on so few rows, starting the others would be most of the time shown.
# demo FUNCTION TYPE EXPORT COLUMN_NAME COLUMN_NUMBER
demo() {
  echo
  echo "luxvm apply $3 --column $4"
  tail -n +2 "$data" | cut -d, -f"$5" > "$work/arguments.txt"
  "$bin/luxvm" apply "$3" --threads 1 --in "$data" --column "$4" --out "$work/results.txt" 2> "$work/summary" ||
    { cat "$work/summary" >&2; exit 1; }
  sed 's/^/  /' "$work/summary"
  "$bin/compare_libm" "$1" "$2" "$work/arguments.txt" "$work/results.txt"
}

echo "The U.S. Standard Atmosphere 1976, sea level to 84 km ($(basename "$data"), see data/README.md)."
echo "exp(exponent) is the air pressure as a share of that at sea level."
demo exp 64f luxsExp_64f_A53 exponent 3
demo exp 32f luxsExp_32f_A24 exponent 3
demo inv 64f luxsInv_64f_A53 temperature_K 2
demo floor 32f luxsFloor_32f temperature_K 2
