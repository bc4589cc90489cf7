#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table and polynomials of the extended-precision sine and cosine.

x = n pi/128 + r, |r| <= pi/256. A table holds sin(j pi/128) over a turn and a quarter as two
doubles, of which the second goes 53 bits beyond the first. Of r, polynomials in u = r^2 give
  sin r = r (1 + u s(u)),  cos r = 1 + u c(u).
"""
import mpmath
import tablegen

STEP = mpmath.pi / 128
U = (STEP / 2)**2


def s(u):
    r = mpmath.sqrt(u)
    return (mpmath.sin(r) / r - 1) / u


def c(u):
    return -2 * mpmath.sin(mpmath.sqrt(u) / 2)**2 / u


def rounded_fit(function, count):
    """`count` doubles, each rounded before the others are fitted anew at the same nodes."""
    # The zeros of a Chebyshev polynomial, the least of them moved to 0, where the factor u is.
    zeros = [mpmath.cos((2 * k + 1) * mpmath.pi / (2 * count + 2)) for k in range(count + 1)]
    nodes = [U * (zero - zeros[-1]) / (1 - zeros[-1]) for zero in zeros[:-1]]
    coefficients = []
    for known in range(count):
        some = nodes[:count - known]
        matrix = mpmath.matrix([[u**p for p in range(known, count)] for u in some])
        values = [function(u) - value_at(coefficients, u) for u in some]
        coefficients.append(tablegen.rounded(mpmath.lu_solve(matrix, mpmath.matrix(values))[0], 53))
    return coefficients


def value_at(coefficients, u):
    return sum(coefficient * u**p for p, coefficient in enumerate(coefficients))


def error(function, coefficients):
    """Largest error of u times the polynomial: relative to sin r, absolute for cos r."""
    return max(abs(u * (function(u) - value_at(coefficients, u)))
               for u in (U * k / 512 for k in range(1, 513)))


def sine(j):
    value = 0 if j % 128 == 0 else mpmath.sin(j * STEP)
    first = tablegen.rounded(value, 53)
    return f"{{{tablegen.double(first)}, {tablegen.double(value - first)}}}"


s_fit, c_fit = rounded_fit(s, 3), rounded_fit(c, 3)

# The first two times 23 bits of n are exact.
p1 = mpmath.mpf(STEP, prec=41, rounding="d")
p2 = mpmath.mpf(STEP - p1, prec=41, rounding="d")
p3 = mpmath.mpf(STEP - p1 - p2, prec=53, rounding="d")

# floor(2^16640 2/pi): noxreduce_pi04l takes 288 bits from at most 2^-16351 of it on.
WORDS = 520
with mpmath.workprec(32 * WORDS + 64):
    inverse = int(mpmath.floor(mpmath.ldexp(2 / mpmath.pi, 32 * WORDS)))
digits = [f"0x{inverse >> 32 * (WORDS - 1 - i) & 0xFFFFFFFF:08x}" for i in range(WORDS)]
degree = mpmath.mpf(mpmath.pi / 180, prec=32, rounding="d")
half_pi = int(mpmath.floor(mpmath.ldexp(mpmath.pi / 2, 127)))

body = "\n".join([
    "#include <stdint.h>",
    "",
    f"// sin r: error {mpmath.nstr(error(s, s_fit), 3)}, relative; cos r:"
    f" {mpmath.nstr(error(c, c_fit), 3)}",
    f"// Error of p1 + p2 + p3: {mpmath.nstr(p1 + p2 + p3 - STEP, 3)}.",
    "struct TrigTable {",
    "  double inv_step;      // 128/pi",
    "  double p1, p2, p3;    // pi/128 in parts of 41, 41 and 53 bits",
    "  double s[3];",
    "  double c[3];",
    "  double sine[320][2];  // sin(j pi/128)",
    "};",
    "alignas(64) inline constexpr TrigTable _nox_trig_table = {",
    *[f"    {tablegen.double(value)}," for value in (1 / STEP, p1, p2, p3)],
    *["    {" + ", ".join(tablegen.double(value) for value in fit) + "}," for fit in (s_fit, c_fit)],
    "    {",
    *[f"        {sine(j)}," for j in range(320)],
    "    },",
    "};",
    "",
    "// pi/180 in parts of 32 and 53 bits.",
    "inline constexpr double _nox_degree[2] = {"
    f"{tablegen.double(degree)}, {tablegen.double(mpmath.pi / 180 - degree)}}};",
    "",
    "// pi/2 in words, lowest first, the uppermost bit worth 1.",
    "inline constexpr uint32_t _nox_half_pi[4] = {"
    + ", ".join(f"0x{half_pi >> 32 * i & 0xFFFFFFFF:08x}" for i in range(4)) + "};",
    "",
    "// 2/pi in words, the first worth 2^-32.",
    f"inline constexpr uint32_t _nox_inverse_half_pi[{WORDS}] = {{",
    *["    " + ", ".join(digits[i:i + 8]) + "," for i in range(0, WORDS, 8)],
    "};",
])
tablegen.main("extended/generated/trig_table.h", __file__, body)
