#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision decimal logarithm, made like that of the natural one."""
import mpmath

import ln_32f
from shared import header

header.main("kernels/explog/generated/log10_32f_table.h",
            ln_32f.body(1 / mpmath.log(10), "log10(2)"), [ln_32f.FRAME])
