#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Hyperbolic cosine and sine at points near the multiples of 1/64, and terms of their series.

The points are singles moved by up to 2^-9 to where the cosine is a double as good as exactly.
"""
import mpmath
import tablegen

CELLS = 64
LAST = 23 * CELLS
MOVE, ENOUGH = mpmath.mpf(2)**-9, 2.0**-64
HALF = mpmath.mpf(1) / (2 * CELLS) + MOVE
FIXED = 200  # fraction bits of the search


def fixed(value):
    return int(mpmath.nint(mpmath.ldexp(value, FIXED)))


def off(cosine):
    """Distance from the nearest double, relative."""
    drop = cosine.bit_length() - 53
    rest = cosine & ((1 << drop) - 1)
    return min(rest, (1 << drop) - rest) / cosine


def point(j):
    """Searches outwards by cosh(x + s) = 2 cosh(s) cosh(x) - cosh(x - s)."""
    centre = mpmath.mpf(j) / CELLS
    step = mpmath.ldexp(1, -19 if centre + MOVE >= 16 else -20)  # so the point is a single
    twice, start = 2 * fixed(mpmath.cosh(step)), fixed(mpmath.cosh(centre))
    best = (off(start), centre)
    sides = [[direction, start, fixed(mpmath.cosh(centre + direction * step))]
             for direction in (1, -1)]
    for k in range(1, int(MOVE / step) + 1):
        for side in sides:
            if best[0] < ENOUGH:
                return best[1]
            direction, before, here = side
            best = min(best, (off(here), centre + direction * k * step))
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


def worst(function):
    return mpmath.nstr(max(abs(function(HALF * i / 1024)) for i in range(1, 1025)), 4)


def terms(values):
    return [tablegen.rounded(value, 53) for value in values]


F = lambda n: 1 / mpmath.factorial(n)
COSH_LONG, SINH_LONG = terms([F(2), F(4), F(6)]), terms([F(3), F(5), F(7)])
COSH_SHORT, SINH_SHORT = (terms(even_out(F(6), [F(2), F(4)])), terms(even_out(F(7), [F(3), F(5)])))


def cosh_error(c):
    return worst(lambda r: (1 + r**2 * mpmath.polyval(c[::-1], r**2)) / mpmath.cosh(r) - 1)


def sinh_error(s):
    return worst(lambda r: (1 + r**2 * mpmath.polyval(s[::-1], r**2)) * r / mpmath.sinh(r) - 1)


def literals(values):
    return "{" + ", ".join(tablegen.double(value) for value in values) + "}"


def row(x):
    cosine, sine = mpmath.cosh(x), mpmath.sinh(x)
    low = sine - tablegen.rounded(sine, 53)
    return (f"    {{{tablegen.double(cosine)}, {tablegen.double(sine)}, {float(x).hex()}f, "
            f"{float(tablegen.rounded(low, 24)).hex()}f}},")


points = [point(j) for j in range(LAST + 1)]
assert all(tablegen.rounded(x, 24) == x for x in points)
inexact = max(abs(tablegen.rounded(mpmath.cosh(x), 53) / mpmath.cosh(x) - 1) for x in points)

ln2_high = mpmath.ldexp(mpmath.floor(mpmath.ldexp(mpmath.log(2), 40)), -40)
body = "\n".join([
    f"// cosh r - 1 = r^2 (c[0] + c[1] r^2 + ...), error {cosh_error(COSH_LONG)} with three terms,",
    f"// {cosh_error(COSH_SHORT)} with two; sinh r / r - 1 likewise, {sinh_error(SINH_LONG)} and",
    f"// {sinh_error(SINH_SHORT)}, for |r| <= 1/128 + 2^-9.",
    f"static const double kCoshLong[3] = {literals(COSH_LONG)};",
    f"static const double kSinhLong[3] = {literals(SINH_LONG)};",
    f"static const double kCoshShort[2] = {literals(COSH_SHORT)};",
    f"static const double kSinhShort[2] = {literals(SINH_SHORT)};",
    "",
    "// ln(2) with 40 fraction bits and the rest, 1/ln(2).",
    f"static const double kLn2High = {tablegen.double(ln2_high)};",
    f"static const double kLn2Low = {tablegen.double(mpmath.log(2) - ln2_high)};",
    f"static const double kLog2E = {tablegen.double(1 / mpmath.log(2))};",
    "",
    f"// cosh x is off by at most {mpmath.nstr(inexact, 4)} of itself, sinh x + sinh_low by 2^-78.",
    "// One copy in the library, inline, for both functions.",
    "struct DoubleCell {",
    "  double cosh, sinh;",
    "  float x, sinh_low;",
    "};",
    f"inline const DoubleCell kDoubleCell[{LAST + 1}] = {{",
    *[row(x) for x in points],
    "};",
])
tablegen.main("kernels/hyper/generated/hyperbolic_64f_table.h", __file__, body)
