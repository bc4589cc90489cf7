# SPDX-License-Identifier: MIT
"""What the two generators of the powers share: polynomials through Chebyshev nodes."""
import mpmath

import tablegen


def log2_ratio(z):
    """log2(1 + z) / z"""
    return mpmath.log1p(z) / mpmath.log(2) / z if z else 1 / mpmath.log(2)


def exp2_ratio(r):
    """(2^r - 1) / r"""
    return mpmath.expm1(r * mpmath.log(2)) / r if r else mpmath.log(2)


def fit(function, count, half_width):
    """Coefficients, lowest first, of the polynomial that agrees at the `count` Chebyshev nodes."""
    nodes = [half_width * mpmath.cos(mpmath.pi * (2 * i + 1) / (2 * count)) for i in range(count)]
    powers = mpmath.matrix([[node**j for j in range(count)] for node in nodes])
    return list(mpmath.lu_solve(powers, mpmath.matrix([function(node) for node in nodes])))


def worst(error, half_width):
    """Largest magnitude on 2001 points, which find the few smooth extrema to a part in 1e5."""
    return max(abs(error(half_width * i / 1000)) for i in range(-1000, 1001))


def poly(coefficients, x):
    return mpmath.polyval(coefficients[::-1], x)


def as_double(value):
    return mpmath.mpf(float(tablegen.rounded(value, 53)))


def as_single(value):
    return mpmath.mpf(float(tablegen.rounded(value, 24)))


def short(value):
    return mpmath.nstr(value, 4)
