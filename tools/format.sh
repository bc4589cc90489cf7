#!/bin/sh
# SPDX-License-Identifier: MIT
# Lay out every C and C++ file of the tree; with --check only name those that are not.
set -eu
cd "$(dirname "$0")/.."
command -v clang-format >/dev/null || {
  echo "format: clang-format is missing: apt-get install clang-format" >&2
  exit 1
}
files() { find . \( -path ./build -o -path ./.git \) -prune -o -name '*.[ch]' -print0 -o -name '*.[ch]pp' -print0; }
if [ "${1-}" = --check ]; then
  files | xargs -0 clang-format --dry-run --Werror
else
  files | xargs -0 clang-format -i
fi
