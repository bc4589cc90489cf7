#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the double-precision reciprocal cube root, made like that of the cube root."""
import cbrt_64f
import mpmath
import tablegen

tablegen.main("kernels/roots/generated/invcbrt_64f_table.h", __file__,
              cbrt_64f.body(-mpmath.mpf(1) / 3, 1))
