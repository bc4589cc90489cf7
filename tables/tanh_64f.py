#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Hyperbolic tangent of the multiples of 1/64 in two parts, and four terms of its series."""
import mpmath
import tablegen

CELLS = 64
LAST = 1220  # 19.0625: from 19.061546 on the result is 1
HALF = mpmath.mpf(1) / (2 * CELLS)


def row(j):
    value = mpmath.tanh(mpmath.mpf(j) / CELLS)
    high = tablegen.rounded(value, 53)
    low = float(tablegen.rounded(value - high, 24)).hex()
    return f"    {{{tablegen.double(high)}, {low}f, {float(mpmath.mpf(j) / CELLS).hex()}f}},"


series = [tablegen.rounded(c, 53) for c in mpmath.taylor(mpmath.tanh, 0, 7)[3::2]]
error = max(
    abs((1 + r**2 * mpmath.polyval(series[::-1], r**2)) * r / mpmath.tanh(r) - 1)
    for r in (HALF * i / 1024 for i in range(1, 1025)))

body = "\n".join([
    f"// tanh r = r + r^3 (t[0] + t[1] r^2 + t[2] r^4), |r| <= 1/128: relative error "
    f"{mpmath.nstr(error, 4)}.",
    f"static const double kSeries[3] = {{{', '.join(tablegen.double(c) for c in series)}}};",
    "",
    "// tanh x in two parts.",
    "struct Cell {",
    "  double high;",
    "  float low, x;",
    "};",
    f"static const Cell kCell[{LAST + 1}] = {{",
    *[row(j) for j in range(LAST + 1)],
    "};",
])
tablegen.main("kernels/hyper/generated/tanh_64f_table.h", __file__, body)
