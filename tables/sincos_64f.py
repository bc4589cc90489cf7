#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table and polynomials of the double-precision sine and cosine at once.

x = n pi/128 + r, |r| <= pi/256. A table holds sin(n pi/128) to extended precision over a turn and a
quarter, so that the cosine stands 64 entries on. Of r, polynomials in u = r^2 give
  sin r = r (1 + u s(u)),  1 - cos r = u c(u).
"""
import mpmath
import tablegen

STEP = mpmath.pi / 128
U = (STEP / 2) ** 2


def s(u):
    r = mpmath.sqrt(u)
    return (mpmath.sin(r) / r - 1) / u


def c(u):
    return 2 * mpmath.sin(mpmath.sqrt(u) / 2) ** 2 / u


def rounded_fit(function, count):
    """`count` doubles, each rounded before the others are fitted anew at the same nodes."""
    # The zeros of a Chebyshev polynomial, the least of them moved to 0, where the factor u is.
    zeros = [mpmath.cos((2 * k + 1) * mpmath.pi / (2 * count + 2)) for k in range(count + 1)]
    nodes = [U * (zero - zeros[-1]) / (1 - zeros[-1]) for zero in zeros[:-1]]
    coefficients = []
    for known in range(count):
        matrix = mpmath.matrix([[u**(p + 1) for p in range(known, count)] for u in nodes])
        values = [u * (function(u) - value_at(coefficients, u)) for u in nodes]
        fit = mpmath.lu_solve(matrix, mpmath.matrix(values))
        coefficients.append(tablegen.rounded(fit[0], 53))
    return coefficients


def value_at(coefficients, u):
    return sum(coefficient * u**p for p, coefficient in enumerate(coefficients))


def error(function, coefficients):
    """Largest error of u times the polynomial: relative to sin r, absolute for 1 - cos r."""
    return max(abs(u * (function(u) - value_at(coefficients, u)))
               for u in (U * k / 512 for k in range(1, 513)))


def sine(j):
    if j == 0:
        return "{-0.0, -0.0}"  # keeps the sign of a zero argument
    return "{0.0, 0.0}" if j % 128 == 0 else tablegen.exact_pair(mpmath.sin(j * STEP))


FITS = [("s53", s, rounded_fit(s, 3)), ("c53", c, rounded_fit(c, 3)),
        ("s50", s, rounded_fit(s, 2)), ("c50", c, rounded_fit(c, 2))]

# The step in three parts, of which the first two times 23 bits of n are exact. They are all
# positive: zero times a negative one would turn a negative zero argument positive.
p1 = mpmath.mpf(STEP, prec=41, rounding="d")
p2 = mpmath.mpf(STEP - p1, prec=41, rounding="d")
p3 = mpmath.mpf(STEP - p1 - p2, prec=53, rounding="d")

body = "\n".join([
    "struct Pair {",
    "  double high, low;",
    "};",
    "",
    *[f"// {name}: error {mpmath.nstr(error(function, fit), 3)}, relative to sin r"
      if name[0] == "s" else f"// {name}: error {mpmath.nstr(error(function, fit), 3)} in 1 - cos r"
      for name, function, fit in FITS],
    f"// Error of p1 + p2 + p3: {mpmath.nstr(p1 + p2 + p3 - STEP, 3)}.",
    "alignas(64) static const struct {",
    "  double inv_step;    // 128/pi",
    "  double p1, p2, p3;  // pi/128 in parts of 41, 41 and 53 bits",
    *[f"  double {name}[{len(fit)}];" for name, function, fit in FITS],
    "  Pair sine[320];     // sin(j pi/128), four entries a cache line",
    "  float one;",
    "} static_const_table = {",
    f"    {tablegen.double(1 / STEP)},",
    *[f"    {tablegen.double(p)}," for p in (p1, p2, p3)],
    *["    {" + ", ".join(tablegen.double(value) for value in fit) + "},"
      for name, function, fit in FITS],
    "    {",
    *[f"        {sine(j)}," for j in range(320)],
    "    },",
    "    1.0f,",
    "};",
])
tablegen.main("kernels/trig/generated/sincos_64f_table.h", __file__, body)
