#!/bin/sh
# SPDX-License-Identifier: MIT
#
# run_examples.sh BIN_DIR: the examples with 100,000 elements, beside libm. Fails where a difference is
# above the bound that the example states.
set -eu
if [ $# -ne 1 ] || [ ! -x "$1/option_prices_c" ]; then
  echo "usage: run_examples.sh BIN_DIR (the directory that holds option_prices_c)" >&2
  exit 2
fi
status=0
for example in option_prices great_circle oscillators; do
  for language in c cpp f90; do
    program=$1/${example}_$language
    if [ -x "$program" ]; then
      "$program" || status=1
    else
      echo "${example}.$language: not built, there is no gfortran that builds 32-bit programs"
    fi
  done
done
exit $status
