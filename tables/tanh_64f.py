# SPDX-License-Identifier: MIT
"""Hyperbolic tangent of the multiples of 1/64 in two parts, and four terms of its series."""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS = 64
LAST = 1220  # 19.0625: from 19.061546 on the result is 1
HALF = mpf(1) / (2 * CELLS)


def row(x):
    high, low = header.parts(mpmath.tanh(x), (53, 24))
    return header.braced([header.double(high), header.single(low), header.single(x)])


series = fits.stored(mpmath.taylor(mpmath.tanh, 0, 7)[3::2], 53)
error = fits.worst(lambda r: (1 + r**2 * fits.value(series, r**2)) * r / mpmath.tanh(r) - 1 if r else r,
                   mpf(0), HALF, 1024)

header.main("kernels/hyper/generated/tanh_64f_table.h", [
    "// tanh r = r + r^3 (t[0] + t[1] r^2 + t[2] r^4), |r| <= 1/128: relative error"
    f" {header.digits(error)}.",
    f"inline constexpr double kSeries[3] = {header.doubles(series)};",
    "",
    "// tanh x in two parts.",
    "struct Cell {",
    "  double high;",
    "  float low, x;",
    "};",
    *header.array(f"Cell kCell[{LAST + 1}]", [row(mpf(j) / CELLS) for j in range(LAST + 1)]),
])
