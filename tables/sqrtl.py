#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the extended square root: short seeds for 1/sqrt, and the series that corrects them.

A seed is the exact value rounded to a multiple of 2^-11, so its square has at most 22 bits. The
coefficients are those of the binomial series of ((1 + e)^(-1/2) - 1) / e.
"""
import mpmath
import tablegen
from mpmath import mpf


def seed(value):
    return mpmath.nint(mpmath.ldexp(1 / mpmath.sqrt(value), 11)) / 2048


significands = [1 + mpf(j) / 256 for j in range(257)]
seeds = [seed(m) for m in significands] + [seed(2 * m) for m in significands[1:]]
# j = 256 of the even half and j = 0 of the odd half are one entry.
assert seeds[256] == mpf(0.70703125) and len(seeds) == 513
series = [mpmath.binomial(mpf(-1) / 2, k) for k in range(1, 8)]

# An index stands for m up to 1/512 away, where r sqrt(y) - 1 is largest at an end.
errors = [abs(s * mpmath.sqrt(y * (1 + p)) - 1)
          for p in (0, 1) for j, y in enumerate(significands)
          for s in [seeds[256 * p + j]]]
residues = [abs(s * s * (m + d) * (1 + p) - 1)
            for p in (0, 1) for j, m in enumerate(significands)
            for d in (mpf(-1) / 512, mpf(1) / 512)
            if 1 <= m + d <= 2
            for s in [seeds[256 * p + j]]]
e = max(residues)
# The series' omitted terms are below its next term times 1 / (1 - |e|).
omitted = abs(mpmath.binomial(mpf(-1) / 2, 8)) * e ** 8 / (1 - e)

body = "\n".join([
    f"// Relative error of a seed at its own point: at most {mpmath.nstr(max(errors), 3)}.",
    f"// Residue |e| over a seed's whole interval: at most {mpmath.nstr(e, 4)}; what the series omits of"
    f" the root: at most {mpmath.nstr(omitted, 3)}.",
    tablegen.array("double", "_constants",
                   [tablegen.double(c) for c in seeds + series],
                   "Seeds for 1/sqrt(1 + j/256), then for 1/sqrt(2 + j/128), then the series from -1/2 on."),
])
tablegen.main("extended/generated/sqrtl_table.h", __file__, body)
