#!/bin/sh
# SPDX-License-Identifier: MIT
# Measure the errors of every function, keep the largest in accuracy/figures.json and renew what the
# documents say of them. What is done stays done: after an interruption the same command goes on.
# Usage: tools/accuracy.sh PROGRAM-FOLDER FIGURES-FOLDER [luxvm accuracy options]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$1
figures=$2
shift 2
mkdir -p "$figures"
broken=0
for type in 32f 64f 32fc 64fc; do
  rm -f "$figures/accuracy_$type.json"
  "$bin/luxvm" accuracy "luxs*_${type}_*" "luxs*_$type" "$@" \
    --json "$figures/accuracy_$type.json" --record "$root/accuracy/figures.json" || broken=1
  [ -e "$figures/accuracy_$type.json" ] || exit 1
done
python3 "$root/tools/figures.py" --write
exit $broken
