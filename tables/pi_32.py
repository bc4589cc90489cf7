#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the functions that reduce by pi/32: sines of its multiples and series on |z| <= pi/64."""
import mpmath
from mpmath import mpf, pi

from shared import fits, header

HALF = pi / 64


def tangent(terms):
    """(tan z - z) / z^3 in z^2, and the relative error of the tangent."""
    cubic = lambda z: (mpmath.tan(z) / z - 1) / z**2
    fit = fits.stored(fits.fit_even(cubic, HALF, terms), 53)
    error = lambda z: (1 + z**2 * fits.value(fit, z**2)) * z / mpmath.tan(z) - 1 if z else z
    return header.doubles(fit), header.digits(fits.worst(error, mpf(0), HALF, 1000), 3)


(long_tangent, long_error), (short_tangent, short_error) = tangent(5), tangent(4)
step = header.parts(pi / 32, (43, 43, 53))


def pair(value):
    return header.doubles(header.exact_pair(value))


def series(first):
    """Taylor, from this factorial on."""
    return header.doubles(mpf((-1)**k) / mpmath.factorial(2 * k + first) for k in range(1, 5))


header.main("kernels/trig/generated/pi_32_table.h", [
    "struct Pair {",
    "  double high, low;  // the sum is the value to 64 bits",
    "};",
    "",
    "alignas(64) inline constexpr struct Table {",
    "  Pair sine[80];  // of j pi/32; the cosine of j is the sine of j + 16",
    "  double steps;       // 32/pi",
    f"  double step[3];     // pi/32 in parts of 43, 43, 53 bits, but for"
    f" {header.digits(abs(sum(step) - pi / 32), 3)}",
    "  Pair unit[2];   // pi/32 2^-26 and its negative",
    "  double sine3[4];    // Taylor: z^3 to z^9",
    "  double cosine2[4];  // z^2 to z^8",
    f"  double tangent3[5]; // z^3 to z^11, |z| <= pi/64; relative error of the tangent {long_error}",
    f"  double short_tangent3[4]; // z^3 to z^9; {short_error}",
    "} pi_32_table = {",
    *header.block(["{-0.0, -0.0}", *[pair(mpmath.sinpi(mpf(j) / 32)) for j in range(1, 80)]],
                  "the first lets the tangent keep the sign of a zero"),
    f"    {header.double(32 / pi)},",
    f"    {header.doubles(step)},",
    f"    {{{pair(pi / 2**31)}, {pair(-pi / 2**31)}}},",
    f"    {series(1)},",
    f"    {series(0)},",
    f"    {long_tangent},",
    f"    {short_tangent},",
    "};",
])
