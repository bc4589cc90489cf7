#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision decimal logarithm, made like that of the natural one."""
import ln_32f
import mpmath
import tablegen

tablegen.main("kernels/explog/generated/log10_32f_table.h", __file__,
              ln_32f.body(1 / mpmath.log(10), "log10(2)"))
