#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Cells of the double-precision arctangent.

The 32 cells of a binade from 2^-8 to 2^8 turn the point (1, q) back by the angle of (d, n), which
lies within the cell and is short enough for exact products; one cell below and one above turn it by
nothing and by pi/2.
"""
import mpmath
import tablegen

LOWEST, HIGHEST, PER_BINADE = -8, 8, 32
mpmath.mp.prec = 200


def turns():
    """n, d, and the tangents at the cell's ends."""
    yield mpmath.mpf(0), mpmath.mpf(1), mpmath.mpf(0), mpmath.ldexp(1, LOWEST)
    for exponent in range(LOWEST, HIGHEST):
        for i in range(PER_BINADE):
            low = mpmath.ldexp(1 + mpmath.mpf(i) / PER_BINADE, exponent)
            high = mpmath.ldexp(1 + mpmath.mpf(i + 1) / PER_BINADE, exponent)
            middle = mpmath.tan((mpmath.atan(low) + mpmath.atan(high)) / 2)
            yield tablegen.rounded(middle, 11), mpmath.mpf(1), low, high
    yield mpmath.mpf(1), mpmath.mpf(0), mpmath.ldexp(1, HIGHEST), mpmath.inf


def halves(value):
    high = tablegen.rounded(value, 53)
    return f"{{{float(high).hex()}, {tablegen.double(value - high)}}}"


def angle(n, d):
    return mpmath.atan2(n, d)


worst, relative = mpmath.mpf(0), mpmath.mpf(0)
rows = []
for n, d, low, high in turns():
    ends = [mpmath.atan(low), mpmath.pi / 2 if high == mpmath.inf else mpmath.atan(high)]
    for end in ends:
        t = mpmath.tan(abs(end - angle(n, d)))
        worst = max(worst, t)
        result = end if n else t
        series = t - t**3 / 3 + t**5 / 5 - t**7 / 7
        relative = max(relative, abs(series - mpmath.atan(t)) / result if result else 0)
    rows.append(f"    {{{float(n).hex()}f, {float(d).hex()}f, {{{halves(angle(n, d))}, "
                f"{halves(mpmath.pi - angle(n, d))}}}}},")

body = "\n".join([
    f"// |t| at most {mpmath.nstr(worst, 5)}; the series to t^7 moves a result by at most "
    f"{mpmath.nstr(relative, 4)} of it.",
    "struct Pair {",
    "  double high, low;",
    "};",
    "struct Cell {",
    "  float n, d;",
    "  Pair angle[2];  // of (d, n), and pi less it",
    "};",
    f"static const Cell kCell[{len(rows)}] = {{",
    *rows,
    "};",
    "static const double kSeries[3] = {  // of t^7, t^5, t^3",
    *[f"    {tablegen.double(mpmath.mpf(n) / d)}," for n, d in ((-1, 7), (1, 5), (-1, 3))],
    "};"])
tablegen.main("kernels/trig/generated/atan_64f_table.h", __file__, body)
