#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""log1p for the single-precision inverse hyperbolic functions: cubics and packed polynomials.

x87 part: 1 + s = 2^e (1 + u), a cubic in u for each 1/512 of 0 <= u < 1. The first one has no
constant and keeps the relative error. Packed part: ln m = 2 t + t^3 P(t^2), t = (m - 1) / (m + 1).
"""
import mpmath
import tablegen
from pow_fit import as_double, as_single, fit, poly, short, worst

CELLS, EXPONENTS = 512, 64
HALF = mpmath.mpf(1) / (2 * CELLS)


def moved(coefficients, distance):
    """The coefficients of p(x - distance)."""
    return mpmath.taylor(lambda x: poly(coefficients, x - distance), 0, len(coefficients) - 1)


def ratio(u):
    return mpmath.log1p(u) / u if u else mpmath.mpf(1)


first = [mpmath.mpf(0)] + [as_double(c) for c in moved(fit(lambda v: ratio(v + HALF), 3, HALF), HALF)]
first_error = worst(lambda v: poly(first[1:], v + HALF) / ratio(v + HALF) - 1, HALF)


def cubic(i):
    middle = (2 * i + 1) * HALF
    terms = fit(lambda v: mpmath.log1p(middle + v), 4, HALF)
    return [as_double(c) for c in moved(terms, middle)]


cubics = [cubic(i) for i in range(1, CELLS)]


def error_of(i, v):
    u = (2 * i + 1) * HALF + v
    return poly(cubics[i - 1], u) / mpmath.log1p(u) - 1


# The error is a quartic's: its extrema are at the ends and near those of the Chebyshev polynomial.
error = max(abs(error_of(i, HALF * mpmath.cos(mpmath.pi * k / 16)))
            for i in range(1, CELLS) for k in range(17))

T2 = (3 - 2 * mpmath.sqrt(2))**2


def tail(t2):
    t = mpmath.sqrt(t2)
    return (2 * mpmath.atanh(t) - 2 * t) / t**3 if t2 > 0 else mpmath.mpf(2) / 3


def packed(count):
    terms = moved(fit(lambda v: tail(v + T2 / 2), count, T2 / 2), T2 / 2)
    terms = [as_single(c) for c in terms]
    wrong = worst(lambda v: (poly(terms, v + T2 / 2) / tail(v + T2 / 2) - 1) * (v + T2 / 2) / 3, T2 / 2)
    return terms[::-1], wrong


def exponent(e):
    scale = mpmath.ldexp(1, -e)
    return f"{{{tablegen.double(scale)}, {tablegen.double(scale - 1)}, {tablegen.double(e * mpmath.log(2))}}}"


def singles(values):
    return ", ".join(float(v).hex() + "f" for v in values)


long_terms, long_error = packed(3)
short_terms, short_error = packed(1)

body = "\n".join([
    "struct Cubic {",
    "  double c3, c2, c1, c0;",
    "};",
    f"// ln(1 + u), i/512 <= u <= (i+1)/512: relative error {short(error)}, in the first {short(first_error)}.",
    f"static const Cubic kCubic[{CELLS}] = {{",
    *[f"    {{{', '.join(tablegen.double(value) for value in c[::-1])}}}," for c in [first] + cubics],
    "};",
    "struct Exponent {",
    "  double scale, offset, log;  // 2^-e, 2^-e - 1, e ln 2",
    "};",
    f"static const Exponent kExponent[{EXPONENTS}] = {{",
    *[f"    {exponent(e)}," for e in range(EXPONENTS)],
    "};",
    f"static const double kLn2 = {tablegen.double(mpmath.log(2))};",
    f"// P, the highest power first: relative error of the logarithm {short(long_error)}.",
    f"static const float kLong[3] = {{{singles(long_terms)}}};",
    f"// The same: {short(short_error)}.",
    f"static const float kShort[1] = {{{singles(short_terms)}}};",
])
tablegen.main("kernels/hyper/generated/log1p_32f_table.h", __file__, body)
