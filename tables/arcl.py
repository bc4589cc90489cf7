# SPDX-License-Identifier: MIT
"""Polynomials of the extended arc sine and inverse hyperbolic sine near 0.

f(s)/s = 1 + z P(z) for either, with z = s^2 in [0, 1/4].
"""
import mpmath
from mpmath import mpf

from shared import fits, header

TERMS, LARGEST = 18, mpf(1) / 4


def rest(function, sign):
    """(function(s)/s - 1) / z, by its series where the quotient cancels."""
    def value(z):
        if z < mpf(2) ** -20:
            return sign * sum(mpmath.binomial(2 * k + 2, k + 1) * (sign * z / 4) ** k / 4 / (2 * k + 3)
                              for k in range(16))
        s = mpmath.sqrt(z)
        return (function(s) / s - 1) / z
    return value


def polynomial(name, what, function, sign):
    exact = rest(function, sign)
    terms = fits.stored(mpmath.chebyfit(exact, [0, LARGEST], TERMS)[::-1], 64)
    error = fits.worst(lambda z: z * (fits.value(terms, z) - exact(z)), mpf(0), LARGEST)
    return [f"// {what}(s)/s = 1 + z P(z), z = s^2 <= 1/4, from the constant on; relative"
            " error of the sum at", f"// most {header.digits(error, 3)} (2001 points).",
            *header.array(f"long double {name}[{TERMS}]", map(header.extended, terms))]


header.main("extended/generated/arcl_table.h", [
    *polynomial("kArcSine", "asin", mpmath.asin, 1), "",
    *polynomial("kAreaSine", "asinh", mpmath.asinh, -1)])
