#!/bin/sh
# SPDX-License-Identifier: MIT
# Measure every built function and replace the table of docs/performance.md.
# Usage: tools/performance.sh PROGRAM-FOLDER [luxbench options]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$1
shift
table=$(mktemp)
trap 'rm -f "$table" "$table.page"' EXIT
"$bin/luxbench" --compare --markdown "$table" "$@"
page=$root/docs/performance.md
sed '/^<!-- figures -->$/q' "$page" >"$table.page"
{
  echo
  echo "Command: \`luxbench --compare${*:+ $*}\`."
  cat "$table"
} >>"$table.page"
cp "$table.page" "$page"
