#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Hyperbolic cosine and sine of the multiples of 1/32, and two terms of each series."""
import mpmath
import tablegen

CELLS = 32
LAST = 2861  # holds the last argument whose results are finite, 89.41598
HALF = mpmath.mpf(1) / (2 * CELLS)


def single(value):
    return float(tablegen.rounded(value, 24)).hex() + "f"


def second_term(tail):
    """The c that evens out c z + tail z^2 - (true terms), z = r^2, both ways on |r| <= HALF: what
    a fixed leading term leaves."""
    return tail * HALF**2 * 2 * (mpmath.sqrt(2) - 1)


COSH2 = tablegen.rounded(mpmath.mpf(1) / 2 + second_term(mpmath.mpf(1) / 24), 24)
SINH3 = tablegen.rounded(mpmath.mpf(1) / 6 + second_term(mpmath.mpf(1) / 120), 24)


def worst(function):
    return mpmath.nstr(max(abs(function(HALF * i / 1024)) for i in range(1, 1025)), 4)


points = [mpmath.mpf(j) / CELLS for j in range(LAST + 1)]
body = "\n".join([
    f"// j = round({CELLS} x), r = x - j/{CELLS}: cosh r = 1 + c2 r^2, relative error "
    f"{worst(lambda r: (1 + COSH2 * r**2) / mpmath.cosh(r) - 1)};",
    f"// sinh r = r + s3 r^3, relative error "
    f"{worst(lambda r: (r + SINH3 * r**3) / mpmath.sinh(r) - 1)}.",
    f"constexpr float kC2 = {single(COSH2)}, kS3OverC2 = {single(SINH3 / COSH2)};",
    "",
    "// One copy in the library, inline, for both functions.",
    "struct SingleCell {",
    "  double cosh, sinh;",
    "};",
    f"inline const SingleCell kSingleCell[{LAST + 1}] = {{",
    *[f"    {{{tablegen.double(mpmath.cosh(x))}, {tablegen.double(mpmath.sinh(x))}}}," for x in points],
    "};",
    "",
    "// Halves, so that the largest are finite singles too.",
    "struct SingleHalves {",
    "  float cosh, sinh;",
    "};",
    f"inline const SingleHalves kSingleHalves[{LAST + 1}] = {{",
    *[f"    {{{single(mpmath.cosh(x) / 2)}, {single(mpmath.sinh(x) / 2)}}}," for x in points],
    "};",
])
tablegen.main("kernels/hyper/generated/hyperbolic_32f_table.h", __file__, body)
