#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the double-precision decimal logarithm, made like that of the natural one."""
import mpmath

import ln_64f
from shared import header

MAIN = [0.4342944819032518, -0.21714724095162394, 0.1447648272952198, -0.10857361406657776,
        0.08685572868109508, -0.07166003704762237]
NEAR_ONE = [0.4342944819032518, -0.2171472409516259, 0.14476482730108395, -0.10857362047581295,
            0.08685889638065036, -0.07238241365054197]
header.main("kernels/explog/generated/log10_64f_table.h",
            ln_64f.body(1 / mpmath.log(10), MAIN, NEAR_ONE), [ln_64f.FRAME])
