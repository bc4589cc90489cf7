# SPDX-License-Identifier: MIT
"""Rotation angles of the double-precision arcsine, and the constants of the arccosine.

With a = |x| and r = sqrt(1 - a^2), the cell is k = round(128 (a - r)), -128 <= k <= 128, and its
angle asin(k/(128 sqrt 2)) + pi/4 the one for which a - r is k/128 exactly.
"""
import mpmath
from mpmath import mpf

from shared import header

CELLS = 128
ALL = range(-CELLS, CELLS + 1)


def at(k):
    """The angle where a - r is k/128; the ends are exact."""
    if abs(k) == CELLS:
        return mpf(0) if k < 0 else mpmath.pi / 2
    return mpmath.asin(mpf(k) / (CELLS * mpmath.sqrt(2))) + mpmath.pi / 4


def halves(value):
    return header.doubles([mpf(0)] * 2 if abs(value) < mpf(2)**-190 else header.two_doubles(value))


def rotation(k):
    cosine = mpf(0) if k == CELLS else mpmath.cos(at(k))
    pairs = [header.exact_pair(value) for value in (cosine, -mpmath.sin(at(k)))]
    return header.braced([*map(header.doubles, pairs), halves(at(k))])


v = mpmath.sin(max(abs(at(k + mpf(side) / 2) - at(k))
                   for k in ALL for side in (-1, 1) if abs(2 * k + side) < 2 * CELLS))
SERIES = [mpf(15) / 336, mpf(3) / 40, mpf(1) / 6]
error = (v + v**3 * mpmath.polyval(SERIES, v**2)) / mpmath.asin(v) - 1

header.main("kernels/trig/generated/asin_64f_table.h", [
    f"// |v| at most {header.digits(v, 5)}; asin v by its series to v^7 has a relative error of at most",
    f"// {header.digits(abs(error))}.",
    "struct Rotation {",
    "  double cosine[2], minus_sine[2];  // rounded to 64 bits, in two doubles",
    "  double angle[2];",
    "};",
    *header.array(f"Rotation kRotation[{len(ALL)}]", map(rotation, ALL)),
    "struct Pair {",
    "  double high, low;",
    "};",
    "// pi/2 less and plus the angle, for the arccosine of positive and negative numbers.",
    f"alignas(64) inline constexpr Pair kComplement[2][{len(ALL)}] = {{",
    *[line for sign in (-1, 1)
      for line in header.block([halves(mpmath.pi / 2 + sign * at(k)) for k in ALL])],
    "};",
    f"inline constexpr double kSeries[3] = {header.doubles(SERIES)};  // of v^7, v^5, v^3",
])
