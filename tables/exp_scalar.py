#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table and polynomials of the extended-precision exponential.

x = n ln2/256 + r, |r| <= ln2/512. A table holds 2^(j/256) as two doubles, of which the second goes
53 bits beyond the first. Of r, for e^r alone and for e^r and e^-r at once,
  e^r = 1 + r + r^2 (1/2 + r (c3 + r (c4 + r c5))),
  cosh r = 1 + r^2 (1/2 + e4 r^2),  sinh r = r + r^3 (o3 + o5 r^2).
"""
import mpmath
import tablegen

STEP = mpmath.log(2) / 256
HALF = STEP / 2


def nodes(count):
    return [HALF * mpmath.cos((2 * k + 1) * mpmath.pi / (2 * count)) for k in range(count)]


def rounded_fit(function, count, points):
    """`count` doubles, each rounded before the others are fitted anew at the same points."""
    coefficients = []
    for known in range(count):
        some = points[:count - known] if known else points
        matrix = mpmath.matrix([[x**p for p in range(known, count)] for x in some])
        values = [function(x) - value_at(coefficients, x) for x in some]
        fit = mpmath.lu_solve(matrix, mpmath.matrix(values))
        coefficients.append(tablegen.rounded(fit[0], 53))
    return coefficients


def value_at(coefficients, x):
    return sum(coefficient * x**p for p, coefficient in enumerate(coefficients))


def exponential(r):
    return (mpmath.expm1(r) - r - r * r / 2) / r**3


def even(u):
    return (2 * mpmath.sinh(mpmath.sqrt(u) / 2)**2 - u / 2) / u**2


def odd(u):
    r = mpmath.sqrt(u)
    return (mpmath.sinh(r) - r) / (r * u)


# Errors weigh with r^3, so the fit is exact near the ends of the interval, where they count.
e_fit = rounded_fit(exponential, 3, [HALF * mpmath.mpf(x) for x in ("-0.93", "0.93", "0.65")])
even_fit = rounded_fit(even, 1, [(HALF * mpmath.mpf("0.9"))**2])
odd_fit = rounded_fit(odd, 2, [(HALF * mpmath.mpf(x))**2 for x in ("0.97", "0.72")])

grid = [HALF * k / 1000 for k in range(-1000, 1001) if k]
e_error = max(abs(r**3 * (exponential(r) - value_at(e_fit, r))) for r in grid)
even_error = max(abs(r**4 * (even(r * r) - even_fit[0])) for r in grid)
odd_error = max(abs(r**2 * (odd(r * r) - value_at(odd_fit, r * r))) for r in grid)

# The first part times 22 bits of n is exact.
high = mpmath.mpf(STEP, prec=41, rounding="d")
low = tablegen.rounded(STEP - high, 53)


def power(j):
    value = mpmath.power(2, mpmath.mpf(j) / 256)
    first = tablegen.rounded(value, 53)
    return f"{{{tablegen.double(first)}, {tablegen.double(value - first)}}}"


body = "\n".join([
    f"// e^r: error {mpmath.nstr(e_error, 3)}; cosh r: {mpmath.nstr(even_error, 3)};"
    f" sinh r: {mpmath.nstr(odd_error, 3)}, relative",
    f"// Error of the step's parts: {mpmath.nstr(high + low - STEP, 3)}.",
    "struct ExpTable {",
    "  double inv_step;         // 256/ln2",
    "  double high, low;        // ln2/256 in parts of 41 and 53 bits",
    "  double c3, c4, c5;",
    "  double e4, o3, o5;",
    "  double power[256][2];    // 2^(j/256)",
    "};",
    "alignas(64) inline constexpr ExpTable _nox_exp_table = {",
    *[f"    {tablegen.double(value)}," for value in
      (1 / STEP, high, low, *e_fit, *even_fit, *odd_fit)],
    "    {",
    *[f"        {power(j)}," for j in range(256)],
    "    },",
    "};",
])
tablegen.main("extended/generated/exp_table.h", __file__, body)
