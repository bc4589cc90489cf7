#!/bin/sh
# SPDX-License-Identifier: MIT
# Lay out every C and C++ file that git knows; with --check only name those that are not.
set -eu
cd "$(dirname "$0")/.."
command -v clang-format >/dev/null || {
  echo "format: clang-format is missing: apt-get install clang-format" >&2
  exit 1
}
mode=-i
[ "${1-}" != --check ] || mode="--dry-run --Werror"
git ls-files -z '*.c' '*.cpp' '*.h' | xargs -0 clang-format $mode
