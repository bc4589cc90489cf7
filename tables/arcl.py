#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Polynomials of the extended arc sine and inverse hyperbolic sine near 0.

f(s)/s = 1 + z P(z) for either, with z = s^2 in [0, 1/4].
"""
import mpmath
import tablegen
from mpmath import mpf

TERMS = 18
LARGEST = mpf(1) / 4


def rest(function, sign):
    """(function(s)/s - 1) / z, by its series where the quotient cancels."""
    def value(z):
        if z < mpf(2) ** -20:
            return sign * sum(mpmath.binomial(2 * k + 2, k + 1) * (sign * z / 4) ** k / 4 / (2 * k + 3)
                              for k in range(16))
        s = mpmath.sqrt(z)
        return (function(s) / s - 1) / z
    return value


def fit(function, sign):
    exact = rest(function, sign)
    powers = mpmath.chebyfit(exact, [0, LARGEST], TERMS)[::-1]
    literals = [tablegen.extended(c) for c in powers]
    rounded = [tablegen.rounded(c, 64) for c in powers]
    error = max(abs(z * (mpmath.polyval(rounded[::-1], z) - exact(z)))
                for z in (LARGEST * k / 2000 for k in range(2001)))
    return literals, error


body = []
for function, sign, name, what in (
        (mpmath.asin, 1, "kArcSine", "asin(s)/s = 1 + z P(z)"),
        (mpmath.asinh, -1, "kAreaSine", "asinh(s)/s = 1 + z P(z)")):
    literals, error = fit(function, sign)
    body.append(tablegen.array(
        "long double", name, literals,
        f"{what}, z = s^2 <= 1/4, from the constant on; relative error of the sum at most "
        f"{mpmath.nstr(error, 3)} (2001 points)."))
tablegen.main("extended/generated/arcl_table.h", __file__, "\n\n".join(body))
