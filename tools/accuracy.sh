#!/bin/sh
# SPDX-License-Identifier: MIT
# Measure the errors of every function and renew docs/accuracy.md and its plots. What is done
# stays done: after an interruption the same command goes on.
# Usage: tools/accuracy.sh PROGRAM-FOLDER FIGURES-FOLDER [luxvm accuracy options]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$1
figures=$2
shift 2
mkdir -p "$figures" "$root/docs/plots"
broken=0
measured=
for type in 32f 64f 32fc 64fc; do
  "$bin/luxvm" list "luxs*_$type" >/dev/null 2>&1 || "$bin/luxvm" list "luxs*_${type}_*" >/dev/null 2>&1 || continue
  "$bin/luxvm" accuracy "luxs*_${type}_*" "luxs*_$type" "$@" \
    --json "$figures/accuracy_$type.json" --plot "$root/docs/plots/accuracy_$type.svg" || broken=1
  [ -e "$figures/accuracy_$type.json" ] || exit 1
  measured="$measured $figures/accuracy_$type.json"
done
# shellcheck disable=SC2086  # a list of files, in a folder without blanks in its name
python3 "$root/tools/accuracy_page.py" "$root/docs/accuracy.md" $measured
exit $broken
