# SPDX-License-Identifier: MIT
"""Polynomials by interpolation at the Chebyshev nodes, for tables of cells."""
import mpmath
import tablegen


def fit(function, low, high, degree):
    """Coefficients of the interpolating polynomial, lowest first."""
    count = degree + 1
    nodes = [(low + high + (high - low) * mpmath.cos(mpmath.pi * (2 * i + 1) / (2 * count))) / 2
             for i in range(count)]
    powers = mpmath.matrix(count, count)
    for i, node in enumerate(nodes):
        for j in range(count):
            powers[i, j] = node**j
    return list(mpmath.lu_solve(powers, mpmath.matrix([function(node) for node in nodes])))


def quotient(function, slope):
    """(function(r) - 1) / r of a function that is 1 at 0; there, but for rounding, its slope."""
    return lambda r: (function(r) - 1) / r if abs(r) > 1e-30 else slope


def value(coefficients, x):
    """Of a polynomial with its lowest coefficient first."""
    return mpmath.polyval(list(reversed(coefficients)), x)


def points(low, high, count=16):
    """Where errors are measured: the ends, and evenly between."""
    return [low + (high - low) * i / count for i in range(count + 1)]


def single(value):
    """C literal of the single nearest the value."""
    return float(tablegen.rounded(value, 24)).hex() + "f"


def stored(values, bits):
    """The values as a table with these significant bits holds them."""
    return [tablegen.rounded(v, b) for v, b in zip(values, bits)]
