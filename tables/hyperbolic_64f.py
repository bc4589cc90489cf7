#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Hyperbolic cosine and sine at points near the multiples of 1/64, and terms of their series.

The points are singles moved by up to 2^-9 to where the cosine is a double as good as exactly.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS = 64
LAST = 23 * CELLS
MOVE, ENOUGH = mpf(2)**-9, 2.0**-64
HALF = mpf(1) / (2 * CELLS) + MOVE
FIXED = 200  # fraction bits of the search


def fixed(value):
    return int(mpmath.nint(mpmath.ldexp(value, FIXED)))


def distance(cosine):
    """From the nearest double, in units of 2^-FIXED."""
    drop = cosine.bit_length() - 53
    rest = cosine & ((1 << drop) - 1)
    return min(rest, (1 << drop) - rest)


def point(j):
    """Searches outwards by cosh(x + s) = 2 cosh(s) cosh(x) - cosh(x - s)."""
    centre = mpf(j) / CELLS
    step = mpmath.ldexp(1, -19 if centre + MOVE >= 16 else -20)  # so the point is a single
    twice, start = 2 * fixed(mpmath.cosh(step)), fixed(mpmath.cosh(centre))
    best = (distance(start) / start, centre)
    sides = [[direction, start, fixed(mpmath.cosh(centre + direction * step))]
             for direction in (1, -1)]
    for k in range(1, int(MOVE / step) + 1):
        for side in sides:
            if best[0] < ENOUGH:
                return best[1]
            direction, before, here = side
            off = distance(here) / here
            if off < best[0]:
                best = (off, centre + direction * k * step)
            side[1:] = here, (twice * here >> FIXED) - before
    return best[1]


def even_out(tail, powers):
    """Adds to a z + b z^2 what evens out the missing tail z^3 on 0 <= z <= HALF^2: the cubic of
    Chebyshev with its lowest zero at 0."""
    scale = (1 + mpmath.sqrt(3) / 2) / HALF**2
    # 4 x^3 - 3 x at x = scale z - sqrt(3)/2, divided by its leading term
    shift = mpmath.sqrt(3) / 2
    cubic, square, linear = 4 * scale**3, -12 * scale**2 * shift, (12 * shift**2 - 3) * scale
    return [powers[0] - tail * linear / cubic, powers[1] - tail * square / cubic]


def both(parity, powers):
    """Three terms of a series, two evened out for the rest, and the errors of either."""
    function = (mpmath.cosh, mpmath.sinh)[parity]
    out = []
    for terms in (powers, even_out(powers[2], powers[:2])):
        terms = fits.stored(terms, 53)
        error = fits.worst(lambda r: (1 + r**2 * fits.value(terms, r**2)) * r**parity / function(r) - 1
                           if r else r, mpf(0), HALF, 1024)
        out += [header.doubles(terms), header.digits(error)]
    return out


cosh_long, cosh_error, cosh_short, cosh_short_error = both(
    0, [1 / mpmath.factorial(n) for n in (2, 4, 6)])
sinh_long, sinh_error, sinh_short, sinh_short_error = both(
    1, [1 / mpmath.factorial(n) for n in (3, 5, 7)])


def row(x):
    cosine, sine = mpmath.cosh(x), mpmath.sinh(x)
    low = sine - header.rounded(sine, 53)
    return header.braced([header.double(cosine), header.double(sine), header.single(x),
                          header.single(low)])


points = [point(j) for j in range(LAST + 1)]
assert all(header.rounded(x, 24) == x for x in points)
inexact = max(abs(header.rounded(mpmath.cosh(x), 53) / mpmath.cosh(x) - 1) for x in points)
ln2_high = mpmath.ldexp(mpmath.floor(mpmath.ldexp(fits.LN2, 40)), -40)

header.main("kernels/hyper/generated/hyperbolic_64f_table.h", [
    f"// cosh r - 1 = r^2 (c[0] + c[1] r^2 + ...), error {cosh_error} with three terms,",
    f"// {cosh_short_error} with two; sinh r / r - 1 likewise, {sinh_error} and",
    f"// {sinh_short_error}, for |r| <= 1/128 + 2^-9.",
    f"inline constexpr double kCoshLong[3] = {cosh_long};",
    f"inline constexpr double kSinhLong[3] = {sinh_long};",
    f"inline constexpr double kCoshShort[2] = {cosh_short};",
    f"inline constexpr double kSinhShort[2] = {sinh_short};",
    "",
    "// ln(2) with 40 fraction bits and the rest, 1/ln(2).",
    f"inline constexpr double kLn2High = {header.double(ln2_high)};",
    f"inline constexpr double kLn2Low = {header.double(fits.LN2 - ln2_high)};",
    f"inline constexpr double kLog2E = {header.double(1 / fits.LN2)};",
    "",
    f"// cosh x is off by at most {header.digits(inexact)} of itself, sinh x + sinh_low by 2^-78.",
    "struct DoubleCell {",
    "  double cosh, sinh;",
    "  float x, sinh_low;",
    "};",
    *header.array(f"DoubleCell kDoubleCell[{LAST + 1}]", map(row, points)),
])
