# SPDX-License-Identifier: MIT
"""Cubics of the single-precision error function by cells, in doubles and in singles."""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, SINGLE_CELLS, LAST = 128, 32, 4
ratio = fits.over_argument(mpmath.erf, 2 / mpmath.sqrt(mpmath.pi))


def table(per_unit, bits, around_centre):
    """Rows, and the errors of the cubics and of their two lowest terms. In the first of doubles the
    constant is the ratio at 0, rounded: subnormal results are rounded by it."""
    rows, cubic, linear = [], mpf(0), mpf(0)
    for k in range(per_unit * LAST + 1):
        low, high = max(mpf(2 * k - 1) / (2 * per_unit), mpf(0)), mpf(2 * k + 1) / (2 * per_unit)
        centre = mpf(k) / per_unit if around_centre else mpf(0)
        if k or around_centre:
            terms = fits.fit(lambda r: ratio(centre + r), low - centre, high - centre, 4)
        else:
            at_zero = header.rounded(ratio(mpf(0)), bits)
            terms = [at_zero, *fits.fit(lambda r: (ratio(r) - at_zero) / r, low, high, 3)]
        row = fits.stored(terms, bits)
        for u in fits.points(low, high):
            cubic = max(cubic, abs(fits.value(row, u - centre) / ratio(u) - 1))
            linear = max(linear, abs(fits.value(row[:2], u - centre) / ratio(u) - 1))
        rows.append(row)
    return rows, header.digits(cubic), header.digits(linear)


doubles, worst, _ = table(CELLS, 53, False)
singles, single_worst, linear_worst = table(SINGLE_CELLS, 24, True)

header.main("kernels/erf/generated/erf_32f_table.h", [
    f"// erf(u) / u by cells of width 1/{CELLS}, k = round({CELLS} u). Relative error at most {worst}.",
    "struct Cubic {",
    "  double c3, c2, c1, c0;",
    "};",
    *header.array(f"Cubic kCubic[{len(doubles)}]", [header.doubles(row[::-1]) for row in doubles]),
    f"// erf(u) / u by cells of width 1/{SINGLE_CELLS}, c0 + c1 r + c2 r^2 + c3 r^3, "
    f"r = u - k/{SINGLE_CELLS}. Relative error at",
    f"// most {single_worst}, of c0 + c1 r at most {linear_worst}.",
    "struct Row {",
    "  float c[4];",
    "};",
    *header.array(f"Row kRow[{len(singles)}]", [f"{{{header.singles(row)}}}" for row in singles]),
])
