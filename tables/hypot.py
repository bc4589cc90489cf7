#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Seeds of the hypotenuse's square root: 1/sqrt(M) at the left end of each interval, short.

One coupled Newton step takes the relative error e of the reciprocal root to about 1.5 e^2.
"""
import mpmath
import tablegen

SHORT = 2**11  # seeds are multiples of 1/2048


def left_end(i):
    return (1 + mpmath.mpf(i % 256) / 256) * 2 ** (i // 256)


seeds = [mpmath.nint(SHORT / mpmath.sqrt(left_end(i))) / SHORT for i in range(512)]


# seed sqrt(M) - 1 is monotonic in M: its largest size in an interval is at one of the ends.
worst = max(abs(seed * mpmath.sqrt(m) - 1)
            for i, seed in enumerate(seeds)
            for m in (left_end(i), left_end(i) + mpmath.mpf(2) ** (i // 256) / 256))

body = "\n".join([
    f"// Relative error of the seeds as 1/sqrt(M), 1 <= M < 4: at most {mpmath.nstr(worst, 4)}.",
    "static const struct {",
    "  double seed[512];        // 256 parity + the top eight fraction bits",
    "  double parity[2];        // by which the significand is multiplied",
    "  double half, splitter;   // 2^27 + 1",
    "} _noxdSqrtHATab = {",
    "    {",
    *[f"        {tablegen.double(seed)}," for seed in seeds],
    "    },",
    "    {1.0, 2.0},",
    "    0.5,",
    "    0x1.0000002p+27,",
    "};",
])
tablegen.main("kernels/arith/generated/hypot_table.h", __file__, body)
