#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables and polynomials of the extended and the complex power.

log2(1 + z) around 257 reciprocals, the angle around 65 slopes, 2^r beside the powers of 2 that the
exponential has, sine and cosine between 128 angles of the circle. Angles are counted in right angles.
The logarithms and angles stand in three doubles, which serve the short computation (two of them) and
the long one.
"""
import mpmath
import tablegen
from pow_fit import as_double, exp2_ratio, fit, log2_ratio, poly, short, worst

CELLS, SLOPES, POWERS, CIRCLE = 256, 64, 256, 128
RIGHT = mpmath.pi / 2


def fit_even(function, count, half_width):
    """Coefficients in x^2 of the even polynomial that agrees at the 2 count Chebyshev nodes."""
    nodes = [half_width * mpmath.cos(mpmath.pi * (2 * i + 1) / (4 * count)) for i in range(count)]
    powers = mpmath.matrix([[node ** (2 * j) for j in range(count)] for node in nodes])
    return list(mpmath.lu_solve(powers, mpmath.matrix([function(node) for node in nodes])))


def poly_even(coefficients, x):
    return poly(coefficients, x * x)


def split(value):
    high = as_double(value)
    return high, as_double(value - high)


def literal(value):
    return float(value).hex()


def pair(value):
    high, low = split(value)
    return f"{{{literal(high)}, {literal(low)}}}"


def three(value, fraction_bits):
    """Three doubles, the first a multiple of 2^-fraction_bits, so that whole numbers add exactly."""
    scaled = mpmath.nint(mpmath.ldexp(value, fraction_bits))
    high = mpmath.ldexp(scaled, -fraction_bits) + mpmath.mpf(0)
    middle, low = split(value - high)
    return f"{literal(high)}, {literal(middle)}, {literal(low)}"


def two_part(value):
    high = tablegen.rounded(value, 64)
    return f"{{{tablegen.extended(high)}, {tablegen.extended(value - high)}}}"


reciprocals = [tablegen.rounded(1 / (1 + mpmath.mpf(i) / CELLS), 11) for i in range(CELLS + 1)]
cell_width = max(
    abs((1 + (i + side) / mpmath.mpf(CELLS)) * reciprocals[i] - 1)
    for i in range(CELLS + 1)
    for side in (mpmath.mpf(-1) / 2, mpmath.mpf(1) / 2)
    if 0 <= i + side <= CELLS)
log_terms = fit(log2_ratio, 6, cell_width)
c0 = split(log_terms[0])
c = [as_double(term) for term in log_terms[1:]]
log_error = worst(lambda z: poly([sum(c0)] + c, z) / log2_ratio(z) - 1, cell_width)

# The slope is chosen by a rounded quotient: a little wider than half a step.
slope_width = mpmath.mpf("0.00782")


def angle_ratio(s):
    return mpmath.atan(s) / s / RIGHT if s else 1 / RIGHT


angle_terms = fit_even(angle_ratio, 4, slope_width)
a0 = split(angle_terms[0])
a = [as_double(term) for term in angle_terms[1:]]
angle_error = worst(lambda s: poly_even([sum(a0)] + a, s) / angle_ratio(s) - 1, slope_width)

half_step = mpmath.mpf(1) / (2 * POWERS)
e0, *e = fit(exp2_ratio, 5, half_step)
e0, e = split(e0), [as_double(term) for term in e]
exp_error = worst(lambda r: (1 + r * poly([sum(e0)] + e, r)) / mpmath.power(2, r) - 1, half_step)

half_angle = mpmath.mpf(2) / CIRCLE


def sine_ratio(d):
    return mpmath.sin(d * RIGHT) / d if d else RIGHT


def cosine_ratio(d):
    return (mpmath.cos(d * RIGHT) - 1) / d**2 if d else -RIGHT**2 / 2


s0, *s = fit_even(sine_ratio, 4, half_angle)
s0, s = split(s0), [as_double(term) for term in s]
k = [as_double(term) for term in fit_even(cosine_ratio, 4, half_angle)]
sine_error = worst(lambda d: poly_even([sum(s0)] + s, d) / sine_ratio(d) - 1, half_angle)
cosine_error = worst(
    lambda d: (1 + d * d * poly_even(k, d)) / mpmath.cos(d * RIGHT) - 1, half_angle)


def sine(j):
    """Exact on the axes."""
    j %= CIRCLE
    return mpmath.mpf([0, 1, 0, -1][4 * j // CIRCLE]) if 4 * j % CIRCLE == 0 else \
        mpmath.sin(4 * j * RIGHT / CIRCLE)


def coefficients(values):
    return "{" + ", ".join(literal(value) for value in reversed(values)) + "}"


body = "\n".join([
    '#include "extended/two_part.h"',
    "",
    f"// log2(1 + z), |z| <= {short(cell_width)}: relative error {short(log_error)}.",
    f"// atan(s) in right angles, |s| <= {short(slope_width)}: relative error {short(angle_error)}.",
    f"// 2^r, |r| <= 2^-9: relative error {short(exp_error)}.",
    f"// Sine and cosine of d right angles, |d| <= 2^-6: relative errors {short(sine_error)} and",
    f"// {short(cosine_error)}.",
    "struct PowerTable {",
    "  struct {",
    "    double high, middle, low;  // log2(1 / reciprocal), high a multiple of 2^-40",
    "    double reciprocal;         // near 1 / (1 + i/256), 11 bits",
    f"  }} cell[{CELLS + 1}];",
    "  struct {",
    "    double high, middle, low;  // atan(i / 64) in right angles, high a multiple of 2^-40",
    f"  }} slope[{SLOPES + 1}];",
    f"  DoublePair sine[{CIRCLE}];   // of j / 32 right angles",
    "  double c[5];              // log2(1 + z): c5 to c1, c0 in two parts",
    "  double c0_high, c0_low;",
    "  double a[3];  // angle: a3 to a1, a0 in two parts",
    "  double a0_high, a0_low;",
    "  double e[4];  // 2^r: e4 to e1, e0 in two parts",
    "  double e0_high, e0_low;",
    "  double s[3];  // sine: s3 to s1, s0 in two parts",
    "  double s0_high, s0_low;",
    "  double k[4];  // cosine less 1: k3 to k0",
    "  DoublePair right_angle_log2_e;       // (pi/2) / ln 2, and once more to 128 bits",
    "  DoublePair ln2_by_right_angle;       // ln 2 / (pi/2)",
    "  TwoPart long_right_angle_log2_e;",
    "  TwoPart long_ln2_by_right_angle;",
    "  TwoPart log2_e;      // 1 / ln 2",
    "  TwoPart radian;      // 1 / (pi/2)",
    "  TwoPart inverse[8];  // 1/k, from k = 0 on, which stands for nothing",
    "};",
    "// One copy serves all kernels.",
    "inline constexpr PowerTable power_table = {",
    "    {",
    *[f"        {{{three(-mpmath.log(r, 2), 40)}, {literal(r)}}}," for r in reciprocals],
    "    },",
    "    {",
    *[f"        {{{three(mpmath.atan(mpmath.mpf(i) / SLOPES) / RIGHT, 40)}}},"
      for i in range(SLOPES + 1)],
    "    },",
    "    {",
    *[f"        {pair(sine(j))}," for j in range(CIRCLE)],
    "    },",
    f"    {coefficients(c)},",
    f"    {literal(c0[0])}, {literal(c0[1])},",
    f"    {coefficients(a)},",
    f"    {literal(a0[0])}, {literal(a0[1])},",
    f"    {coefficients(e)},",
    f"    {literal(e0[0])}, {literal(e0[1])},",
    f"    {coefficients(s)},",
    f"    {literal(s0[0])}, {literal(s0[1])},",
    f"    {coefficients(k)},",
    f"    {pair(RIGHT / mpmath.log(2))},",
    f"    {pair(mpmath.log(2) / RIGHT)},",
    f"    {two_part(RIGHT / mpmath.log(2))},",
    f"    {two_part(mpmath.log(2) / RIGHT)},",
    f"    {two_part(1 / mpmath.log(2))},",
    f"    {two_part(1 / RIGHT)},",
    "    {",
    "        {0, 0},",
    *[f"        {two_part(mpmath.mpf(1) / j)}," for j in range(1, 8)],
    "    },",
    "};",
])
tablegen.main("extended/generated/power_table.h", __file__, body)
