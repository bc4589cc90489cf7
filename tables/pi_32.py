#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the functions that reduce by pi/32: sines of its multiples and series on |z| <= pi/64."""
import mpmath
import tablegen
from mpmath import mpf, pi

HALF = pi / 64


def parts(value, bits):
    """The value as a sum of doubles, all but the last of `bits` significant bits."""
    out = []
    for width in bits:
        out.append(tablegen.rounded(value, width))
        value -= out[-1]
    return out


def tangent_fit(terms):
    """(tan z - z) / z^3 in z^2, by interpolation at Chebyshev nodes."""
    nodes = [(HALF * mpmath.cos(pi * (2 * i + 1) / (4 * terms))) ** 2 for i in range(terms)]
    values = [(mpmath.tan(mpmath.sqrt(t)) / mpmath.sqrt(t) - 1) / t for t in nodes]
    powers = mpmath.matrix([[t**i for i in range(terms)] for t in nodes])
    fit = mpmath.lu_solve(powers, mpmath.matrix(values))
    return [tablegen.rounded(c, 53) for c in fit]


def tangent_error(fit):
    def error(z):
        return (z + sum(c * z ** (2 * i + 3) for i, c in enumerate(fit))) / mpmath.tan(z) - 1
    return max(abs(error(HALF * k / 1000)) for k in range(1, 1001))


TANGENT = tangent_fit(5)
SHORT_TANGENT = tangent_fit(4)
STEP = parts(pi / 32, [43, 43, 53])
remainder = abs(sum(STEP) - pi / 32)


def literals(values):
    return "{" + ", ".join(tablegen.double(v) for v in values) + "}"


body = "\n".join([
    "struct Pair {",
    "  double high, low;  // the sum is the value to 64 bits",
    "};",
    "",
    "static const struct {",
    "  Pair sine[80];  // of j pi/32; the cosine of j is the sine of j + 16",
    "  double steps;       // 32/pi",
    f"  double step[3];     // pi/32 in parts of 43, 43, 53 bits, but for {mpmath.nstr(remainder, 3)}",
    "  Pair unit[2];   // pi/32 2^-26 and its negative",
    "  double sine3[4];    // Taylor: z^3 to z^9",
    "  double cosine2[4];  // z^2 to z^8",
    f"  double tangent3[5]; // z^3 to z^11; relative error of the tangent "
    f"{mpmath.nstr(tangent_error(TANGENT), 3)}",
    f"  double short_tangent3[4]; // z^3 to z^9; {mpmath.nstr(tangent_error(SHORT_TANGENT), 3)}",
    "} pi_32_table = {",
    "    {",
    "        {-0x0.0p+0, -0x0.0p+0},  // so that the tangent keeps the sign of a zero",
    *[f"        {tablegen.exact_pair(mpmath.sinpi(mpf(j) / 32))}," for j in range(1, 80)],
    "    },",
    f"    {tablegen.double(32 / pi)},",
    f"    {literals(STEP)},",
    f"    {{{tablegen.exact_pair(pi / 2**31)}, {tablegen.exact_pair(-pi / 2**31)}}},",
    f"    {literals(mpf((-1) ** k) / mpmath.factorial(2 * k + 1) for k in range(1, 5))},",
    f"    {literals(mpf((-1) ** k) / mpmath.factorial(2 * k) for k in range(1, 5))},",
    f"    {literals(TANGENT)},",
    f"    {literals(SHORT_TANGENT)},",
    "};",
])
tablegen.main("kernels/trig/generated/pi_32_table.h", __file__, body)
