#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables and polynomials of the extended and the complex power.

log2(1 + z) around 257 reciprocals, the angle around 65 slopes, 2^r beside the powers of 2 that the
exponential has, sine and cosine between 128 angles of the circle. Angles are counted in right angles.
The logarithms and angles stand in three doubles, which serve the short computation (two of them) and
the long one.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, SLOPES, POWERS, CIRCLE = 256, 64, 256, 128
RIGHT = mpmath.pi / 2


def doubles_of(value):
    return header.doubles(header.two_doubles(value))


def three(value, fraction_bits):
    """Three doubles, the first a multiple of 2^-fraction_bits, so that whole numbers add exactly."""
    high = header.multiple(value, -fraction_bits)
    return [high, *header.two_doubles(value - high)]


def two_part(value):
    return header.braced(map(header.extended, header.parts(value, (64, 64))))


class Polynomial:
    """Of x, or of x^2 if even; the lowest coefficient in two doubles, the others in one."""

    def __init__(self, function, half_width, count, even=False):
        terms = (fits.fit_even(function, half_width, count) if even else
                 fits.fit(function, -half_width, half_width, count))
        self.lowest = header.two_doubles(terms[0])
        self.others = fits.stored(terms[1:], 53)
        self.used = [sum(self.lowest)] + self.others
        self.even = even

    def value(self, x):
        return fits.value(self.used, x * x if self.even else x)

    def lines(self):
        return [f"    {header.doubles(self.others[::-1])},",
                f"    {header.doubles(self.lowest)[1:-1]},"]


def error(approximation, function, half_width):
    return header.digits(
        fits.worst(lambda x: approximation(x) / function(x) - 1, -half_width, half_width))


reciprocals = fits.reciprocals(CELLS, 11, CELLS + 1)
cell_width = fits.reciprocal_reach(reciprocals, CELLS, 0, CELLS)
logarithm = Polynomial(fits.log2_ratio, cell_width, 6)

# The slope is chosen by a rounded quotient: a little wider than half a step.
slope_width = mpf("0.00782")
angle_ratio = fits.over_argument(lambda s: mpmath.atan(s) / RIGHT, 1 / RIGHT)
angle = Polynomial(angle_ratio, slope_width, 4, even=True)

half_step = mpf(1) / (2 * POWERS)
power = Polynomial(fits.exp2_ratio, half_step, 5)

half_angle = mpf(2) / CIRCLE
sine_ratio = fits.over_argument(lambda d: mpmath.sin(d * RIGHT), RIGHT)
sine = Polynomial(sine_ratio, half_angle, 4, even=True)


def cosine_ratio(d):
    return (mpmath.cos(d * RIGHT) - 1) / d**2 if d else -RIGHT**2 / 2


cosine = fits.stored(fits.fit_even(cosine_ratio, half_angle, 4), 53)


def cosine_of(d):
    return 1 + d * d * fits.value(cosine, d * d)


def sine_of(j):
    """Exact on the axes."""
    j %= CIRCLE
    return mpf([0, 1, 0, -1][4 * j // CIRCLE]) if 4 * j % CIRCLE == 0 else \
        mpmath.sin(4 * j * RIGHT / CIRCLE)


header.main("extended/generated/power_table.h", [
    f"// log2(1 + z), |z| <= {header.digits(cell_width)}: relative error"
    f" {error(logarithm.value, fits.log2_ratio, cell_width)}.",
    f"// atan(s) in right angles, |s| <= {header.digits(slope_width)}: relative error"
    f" {error(angle.value, angle_ratio, slope_width)}.",
    "// 2^r, |r| <= 2^-9: relative error"
    f" {error(lambda r: 1 + r * power.value(r), lambda r: mpmath.power(2, r), half_step)}.",
    "// Sine and cosine of d right angles, |d| <= 2^-6: relative errors"
    f" {error(sine.value, sine_ratio, half_angle)} and",
    f"// {error(cosine_of, lambda d: mpmath.cos(d * RIGHT), half_angle)}.",
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
    "alignas(64) inline constexpr PowerTable power_table = {",
    *header.block([header.doubles((*three(-mpmath.log(r, 2), 40), r)) for r in reciprocals]),
    *header.block([header.doubles(three(mpmath.atan(mpf(i) / SLOPES) / RIGHT, 40))
                   for i in range(SLOPES + 1)]),
    *header.block([doubles_of(sine_of(j)) for j in range(CIRCLE)]),
    *logarithm.lines(), *angle.lines(), *power.lines(), *sine.lines(),
    f"    {header.doubles(cosine[::-1])},",
    f"    {doubles_of(RIGHT / fits.LN2)},",
    f"    {doubles_of(fits.LN2 / RIGHT)},",
    *[f"    {two_part(value)}," for value in
      (RIGHT / fits.LN2, fits.LN2 / RIGHT, 1 / fits.LN2, 1 / RIGHT)],
    *header.block(["{0, 0}", *[two_part(mpf(1) / j) for j in range(1, 8)]]),
    "};",
], ["extended/two_part.h"])
