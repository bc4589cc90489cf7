#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Rotation angles of the double-precision arcsine, and the constants of the arccosine.

With a = |x| and r = sqrt(1 - a^2), the cell is k = round(128 (a - r)), -128 <= k <= 128, and its
angle asin(k/(128 sqrt 2)) + pi/4 the one for which a - r is k/128 exactly.
"""
import mpmath
import tablegen

CELLS = 128
mpmath.mp.prec = 200


def angle(k):
    if k == -CELLS:
        return mpmath.mpf(0)
    if k == CELLS:
        return mpmath.pi / 2
    return mpmath.asin(mpmath.mpf(k) / (CELLS * mpmath.sqrt(2))) + mpmath.pi / 4


def halves(value):
    """Two doubles whose sum is the value to 106 bits."""
    high = tablegen.rounded(value, 53)
    if abs(high) < mpmath.mpf(2) ** -190:  # the acute end, exactly
        high = value = mpmath.mpf(0)
    return f"{float(high).hex()}, {tablegen.double(value - high)}"


def cosine(k):
    return mpmath.mpf(0) if k == CELLS else mpmath.cos(angle(k))


def minus_sine(k):
    return -mpmath.sin(angle(k))


def whole(value):
    return tablegen.exact_pair(value)[1:-1]


largest = max(abs(angle(k + 1) - angle(k)) for k in range(-CELLS, CELLS)) / 2
edges = [abs(mpmath.asin((mpmath.mpf(k) + mpmath.mpf(s) / 2) / (CELLS * mpmath.sqrt(2)))
             + mpmath.pi / 4 - angle(k))
         for k in range(-CELLS, CELLS + 1) for s in (-1, 1) if abs(2 * k + s) < 2 * CELLS]
v = mpmath.sin(max(edges))
series = v + v**3 / 6 + 3 * v**5 / 40 + 15 * v**7 / 336

body = "\n".join([
    f"// |v| at most {mpmath.nstr(v, 5)}; asin v by its series to v^7 has a relative error of at most",
    f"// {mpmath.nstr(abs(series / mpmath.asin(v) - 1), 4)}.",
    "struct Rotation {",
    "  double cosine[2], minus_sine[2];  // rounded to 64 bits, in two doubles",
    "  double angle[2];",
    "};",
    f"static const Rotation kRotation[{2 * CELLS + 1}] = {{",
    *[f"    {{{{{whole(cosine(k))}}}, {{{whole(minus_sine(k))}}}, {{{halves(angle(k))}}}}},"
      for k in range(-CELLS, CELLS + 1)],
    "};",
    "struct Pair {",
    "  double high, low;",
    "};",
    "// pi/2 less and plus the angle, for the arccosine of positive and negative numbers.",
    f"static const Pair kComplement[2][{2 * CELLS + 1}] = {{",
    *[line for sign in (-1, 1) for line in
      ["    {", *[f"        {{{halves(mpmath.pi / 2 + sign * angle(k))}}},"
                 for k in range(-CELLS, CELLS + 1)], "    },"]],
    "};",
    "static const double kSeries[3] = {  // of v^7, v^5, v^3",
    *[f"    {tablegen.double(mpmath.mpf(n) / d)}," for n, d in ((15, 336), (3, 40), (1, 6))],
    "};"])
tablegen.main("kernels/trig/generated/asin_64f_table.h", __file__, body)
