#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table and series of the extended arctangent.

j/64 as a float; the angle of (64, j) in each of four octants, as a double and the rest; and two odd
polynomials r + r^3 P(r^2), P by interpolation at Chebyshev points in r^2. The bound of an error
holds everywhere: a polynomial of degree n is at most 1 / cos(pi n / (2 N)) times its largest value
at N Chebyshev points.
"""
import mpmath
import tablegen
from mpmath import mpf

STEPS, TERMS, POINTS = 64, 14, 400
# What j/64 stands for reaches half a step to both sides; 2^-19 more, since octants are told apart
# by 20 bits of the significands.
reach = mpf(1) / (2 * STEPS) + mpf(2)**-19
square = reach**2



def odd(degree):
    """Coefficients of P, and the bound of the relative error of the whole."""
    def in_square(u):
        return square * (1 + u) / 2
    nodes = [in_square(mpmath.cos(mpmath.pi * (2 * k + 1) / (2 * (degree + 1))))
             for k in range(degree + 1)]
    matrix = mpmath.matrix([[w**k for k in range(degree + 1)] for w in nodes])
    values = mpmath.matrix([(mpmath.atan(mpmath.sqrt(w)) / mpmath.sqrt(w) - 1) / w for w in nodes])
    solution = mpmath.lu_solve(matrix, values)
    series = [float(tablegen.rounded(solution[k], 53)) for k in range(degree + 1)]
    difference = [mpf((-1)**k) / (2 * k + 1) for k in range(TERMS)]
    for k, value in enumerate([1.0] + series):
        difference[k] -= value
    error = max(abs(mpmath.polyval(difference[::-1],
                                   in_square(mpmath.cos(mpmath.pi * (2 * k + 1) / (2 * POINTS)))))
                for k in range(POINTS))
    error /= mpmath.cos(mpmath.pi * TERMS / (2 * POINTS)) * mpmath.atan(reach) / reach
    return series, error + square**TERMS


def pair(angle):
    high = tablegen.rounded(angle, 53)
    return f"{{{tablegen.double(high)}, {tablegen.double(angle - high)}}}"


pi = +mpmath.pi
angles = [mpmath.atan(mpf(j) / STEPS) for j in range(STEPS + 1)]
octants = [angles, [pi / 2 - a for a in angles], [pi - a for a in angles], [pi / 2 + a for a in angles]]
degrees = [mpmath.nint(a) if j in (0, STEPS) else a
           for j, a in enumerate(a * 180 / pi for a in angles)]
degree = tablegen.rounded(180 / pi, 32)
(quick, quick_error), (careful, careful_error) = odd(2), odd(3)
body = "\n".join([
    f"// |r| at most {mpmath.nstr(reach, 6)}, where the series' relative errors are below"
    f" {mpmath.nstr(quick_error, 4)} and {mpmath.nstr(careful_error, 4)}.",
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
    "inline constexpr ExtendedAngles kAtan = {  // one copy serves all kernels",
    "    {" + ", ".join(f"{float(mpf(j) / STEPS).hex()}f" for j in range(STEPS + 1)) + "},",
    *[f"    {{{', '.join(value.hex() for value in series)}}}," for series in (quick, careful)],
    "    {",
    *["        {" + ",\n         ".join(pair(a) for a in octant) + "}," for octant in octants],
    "    },",
    "    {" + ",\n     ".join(pair(a) for a in degrees) + "},",
    f"    {{{tablegen.double(degree)}, {tablegen.double(180 / pi - degree)}}},",
    "};"])
tablegen.main("extended/generated/atan_table.h", __file__, body)
