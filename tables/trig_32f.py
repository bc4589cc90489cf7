# SPDX-License-Identifier: MIT
"""Periods and polynomials of the single-precision sine, cosine and tangent.

Results depend on the last bits of the coefficients, so these stay as they once were fitted; what
they are worth is measured here, as they stand for A24 and rounded to singles for A21 and A11.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

HALF_PI, QUARTER_PI = mpmath.pi / 2, mpmath.pi / 4


def numbers(*literals):
    """Lowest power first."""
    return [mpf(float.fromhex(literal)) for literal in literals]


SINE = numbers("0x1.000000089705fp+0", "-0x1.55554ae8ba1bdp-3", "0x1.110ee64cd0933p-7",
               "-0x1.9f75e2c166f94p-13", "0x1.5e0a329a17541p-19")
SHORT_SINE = numbers("-0x1.55554527af34p-3", "0x1.11073afce563fp-7", "-0x1.9943e0fbea90ap-13")
SHORT_COSINE = numbers("0x1.55554a115b568p-5", "-0x1.6c0c33a81bd97p-10", "0x1.99eb9c49f772ep-16")
NUMERATOR = numbers("-0x1.8867706ed6612p-4")
DENOMINATOR = numbers("-0x1.b76f5e7f08c11p-2", "0x1.3e66ea6aa37f2p-7")


def errors(approximation, function, bound, *tables):
    """Largest relative errors on 0 < r <= bound, with doubles and with singles."""
    return " and ".join(
        header.digits(fits.worst(
            lambda r: approximation(r, *(fits.stored(table, bits) for table in tables)) / function(r) - 1
            if r else r, mpf(0), bound)) for bits in (53, 24))


def sine(r, terms):
    return r * fits.value(terms, r**2)


def short_sine(r, terms):
    return r + r**3 * fits.value(terms, r**2)


def short_cosine(r, terms):
    return 1 - r**2 / 2 + r**4 * fits.value(terms, r**2)


def tangent(r, numerator, denominator):
    return short_sine(r, numerator) / (1 + r**2 * fits.value(denominator, r**2))


def period(value):
    high = header.cut(value, 35)
    return header.doubles((1 / value, high, value - high))


header.main("kernels/trig/generated/trig_32f_table.h", [
    "// high ends with 18 zero bits, so that n high is exact.",
    "struct Period {",
    "  double inverse, high, low;",
    "};",
    f"inline constexpr Period kPi = {period(mpmath.pi)};",
    f"inline constexpr Period kHalfPi = {period(HALF_PI)};",
    f"inline constexpr double kPiOver2 = {header.double(HALF_PI)};  // rounded once",
    "",
    "// Polynomials in r^2, lowest power first, with their relative errors as they stand and with",
    "// coefficients rounded to singles.",
    "//",
    f"// sin r = r P, |r| <= pi/2: {errors(sine, mpmath.sin, HALF_PI, SINE)}.",
    f"inline constexpr double kSine[5] = {header.doubles(SINE)};",
    f"// sin r = r + r^3 P, |r| <= pi/4: {errors(short_sine, mpmath.sin, QUARTER_PI, SHORT_SINE)}.",
    f"inline constexpr double kShortSine[3] = {header.doubles(SHORT_SINE)};",
    "// cos r = 1 - r^2/2 + r^4 P, |r| <= pi/4:"
    f" {errors(short_cosine, mpmath.cos, QUARTER_PI, SHORT_COSINE)}.",
    f"inline constexpr double kShortCosine[3] = {header.doubles(SHORT_COSINE)};",
    "// tan r = (r + r^3 T) / (1 + r^2 U), |r| <= pi/4:",
    f"// {errors(tangent, mpmath.tan, QUARTER_PI, NUMERATOR, DENOMINATOR)}.",
    f"inline constexpr double kT[1] = {header.doubles(NUMERATOR)};",
    f"inline constexpr double kU[2] = {header.doubles(DENOMINATOR)};",
])
