# SPDX-License-Identifier: MIT
"""The series that corrects the seeds of the extended square root: the binomial series of
((1 + e)^(-1/2) - 1) / e."""
import mpmath
from mpmath import mpf

from root_seeds import root_seeds
from shared import header

TERMS = 7
ends, seeds = root_seeds()

# A seed stands for m up to 1/512 away, y = m or 2 m, where seed sqrt(y) - 1 is largest at an end.
e = max(abs(seeds[i] * seeds[i] * y - 1)
        for half in (1, 2) for i in range(256 * half - 256, 256 * half + 1)
        for y in (ends[i] - mpf(half) / 512, ends[i] + mpf(half) / 512) if half <= y <= 2 * half)
at_points = max(abs(seed * mpmath.sqrt(y) - 1) for y, seed in zip(ends, seeds))
# The omitted terms are below the next one times 1 / (1 - |e|).
omitted = abs(mpmath.binomial(mpf(-1) / 2, TERMS + 1)) * e ** (TERMS + 1) / (1 - e)

header.main("extended/generated/sqrtl_table.h", [
    f"// Relative error of a seed at its own point: at most {header.digits(at_points, 3)}.",
    f"// Residue |e| over a seed's interval: at most {header.digits(e)}; what the series omits of the root:",
    f"// at most {header.digits(omitted, 3)}.",
    *header.array(f"double kSeries[{TERMS}]",
                  [header.double(mpmath.binomial(mpf(-1) / 2, k)) for k in range(1, TERMS + 1)]),
])
