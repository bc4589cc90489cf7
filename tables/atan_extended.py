#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table and series of the extended arctangent.

j/64 as a float; the angle of (64, j) in each of four octants, as a double and the rest; and two odd
polynomials r + r^3 P(r^2), P by interpolation at Chebyshev points in r^2. The bound of an error
holds everywhere: a polynomial of degree n is at most 1 / cos(pi n / (2 N)) times its largest value
at N Chebyshev points.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

STEPS, TERMS, POINTS = 64, 14, 400
# What j/64 stands for reaches half a step to both sides; 2^-19 more, since octants are told apart
# by 20 bits of the significands.
reach = mpf(1) / (2 * STEPS) + mpf(2)**-19
square = reach**2


def odd(degree):
    """Coefficients of P, and the bound of the relative error of the whole."""
    series = fits.stored(fits.fit(
        lambda w: (mpmath.atan(mpmath.sqrt(w)) / mpmath.sqrt(w) - 1) / w, mpf(0), square, degree + 1), 53)
    difference = [mpf((-1)**k) / (2 * k + 1) for k in range(TERMS)]
    for k, value in enumerate([mpf(1)] + series):
        difference[k] -= value
    error = max(abs(fits.value(difference, w)) for w in fits.chebyshev_nodes(mpf(0), square, POINTS))
    error /= mpmath.cos(mpmath.pi * TERMS / (2 * POINTS)) * mpmath.atan(reach) / reach
    return series, error + square**TERMS


def pair(angle):
    return header.doubles(header.two_doubles(angle))


pi = +mpmath.pi
angles = [mpmath.atan(mpf(j) / STEPS) for j in range(STEPS + 1)]
octants = [angles, [pi / 2 - a for a in angles], [pi - a for a in angles], [pi / 2 + a for a in angles]]
degrees = [mpmath.nint(a) if j in (0, STEPS) else a
           for j, a in enumerate(a * 180 / pi for a in angles)]
(quick, quick_error), (careful, careful_error) = odd(2), odd(3)
header.main("extended/generated/atan_table.h", [
    f"// |r| at most {header.digits(reach, 6)}, where the series' relative errors are below"
    f" {header.digits(quick_error)} and {header.digits(careful_error)}.",
    "struct Angle {",
    "  double high, low;",
    "};",
    "struct ExtendedAngles {",
    "  float tangent[65];    // j/64",
    "  double quick[3];      // of r^3 to r^7",
    "  double careful[4];    // of r^3 to r^9",
    "  Angle angle[4][65];   // a = atan(j/64), pi/2 - a, pi - a, pi/2 + a",
    "  Angle degrees[65];    // a in degrees, 0 and 45 exactly",
    "  Angle degree;         // 180/pi, the first part with 32 bits",
    "};",
    "alignas(64) inline constexpr ExtendedAngles kAtan = {",
    *header.block([header.single(mpf(j) / STEPS) for j in range(STEPS + 1)]),
    f"    {header.doubles(quick)},",
    f"    {header.doubles(careful)},",
    "    {",
    *[line for octant in octants for line in header.block(map(pair, octant), indent=8)],
    "    },",
    *header.block(map(pair, degrees)),
    f"    {header.doubles(header.parts(180 / pi, (32, 53)))},",
    "};",
])
