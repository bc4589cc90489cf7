# SPDX-License-Identifier: MIT
"""Polynomials and constants of the packed complex functions of single precision."""
import mpmath
from mpmath import mpf

from shared import fits, header

HALF_LN2, HALF_PI = mpmath.log(2) / 2, mpmath.pi / 2
S_BOUND = (mpmath.sqrt(2) - 1) / (mpmath.sqrt(2) + 1)  # of (m - 1)/(m + 1), m from sqrt(1/2) on


def odd_rest(function):
    """(function(x)/x - 1) / x^2 in w = x^2 of an odd function."""
    return lambda w: (function(mpmath.sqrt(w)) / mpmath.sqrt(w) - 1) / w


def odd_fit(function, bound, count):
    """Coefficients, and the relative error of x + x^3 P(x^2) with singles on 0 < x <= bound."""
    nodes = fits.nodes_with_zero(mpf(bound)**2, count)
    coefficients = fits.stored(fits.interpolated(odd_rest(function), nodes), 24)
    error = fits.worst(
        lambda x: (x + x**3 * fits.value(coefficients, x**2)) / function(x) - 1 if x else x,
        mpf(0), mpf(bound))
    return coefficients, header.digits(error)


def exp_rest(r):
    return (mpmath.expm1(r) - r) / r**2 if abs(r) > 1e-30 else mpf(1) / 2


EXP = fits.stored(fits.fit(exp_rest, -HALF_LN2, HALF_LN2, 5), 24)
EXP_ERROR = header.digits(fits.worst(
    lambda r: (1 + r + r**2 * fits.value(EXP, r)) / mpmath.exp(r) - 1, -HALF_LN2, HALF_LN2))
SINH, SINH_ERROR = odd_fit(mpmath.sinh, 1, 4)
SINE, SINE_ERROR = odd_fit(mpmath.sin, HALF_PI, 5)


def sine_square(x):
    return mpmath.sin(mpmath.sqrt(x))**2


# In w = r^2 as sine and the others are in r.
SINE_SQUARE = fits.stored(fits.interpolated(
    lambda w: (sine_square(w) / w - 1) / w, fits.nodes_with_zero((HALF_PI / 2)**2, 4)), 24)
SINE_SQUARE_ERROR = header.digits(fits.worst(
    lambda w: (w + w**2 * fits.value(SINE_SQUARE, w)) / sine_square(w) - 1 if w else w, mpf(0),
    (HALF_PI / 2)**2))
ATANH, ATANH_ERROR = odd_fit(mpmath.atanh, S_BOUND, 3)
LONG_ATANH, LONG_ATANH_ERROR = odd_fit(mpmath.atanh, mpf(1) / 3, 5)
ATAN, ATAN_ERROR = odd_fit(mpmath.atan, 1, 9)


def coefficients(name, values):
    """Highest power first."""
    return f"inline constexpr float {name}[{len(values)}] = {header.singles(values[::-1])};"


def parts(name, value, widths):
    return (f"inline constexpr float {name}[{len(widths)}] = "
            f"{header.singles(header.parts(value, widths))};")


header.main("complex/generated/complex_32f_table.h", [
    "// Polynomials, highest power first, with the relative errors of what they are part of.",
    "//",
    f"// e^r = 1 + (r + r^2 P(r)), |r| <= ln2/2: {EXP_ERROR}.",
    coefficients("kExpTail", EXP),
    f"// sinh x = x + x^3 P(x^2), |x| <= 1: {SINH_ERROR}.",
    coefficients("kSinhTail", SINH),
    f"// sin r = r + r^3 P(r^2), |r| <= pi/2: {SINE_ERROR}.",
    coefficients("kSineTail", SINE),
    f"// sin^2 r = w + w^2 P(w), w = r^2, |r| <= pi/4: {SINE_SQUARE_ERROR}.",
    coefficients("kSineSquareTail", SINE_SQUARE),
    f"// atanh s = s + s^3 P(s^2), |s| <= 0.1716: {ATANH_ERROR}.",
    coefficients("kAtanhTail", ATANH),
    f"// The same, |s| <= 1/3: {LONG_ATANH_ERROR}.",
    coefficients("kLongAtanhTail", LONG_ATANH),
    f"// atan t = t + t^3 P(t^2), |t| <= 1: {ATAN_ERROR}.",
    coefficients("kAtanTail", ATAN),
    "",
    "// In parts of 16 bits, whose products with eight bits are exact, and what these leave.",
    parts("kLn2", mpmath.log(2), (16, 24)),
    parts("kPi", mpmath.pi, (16, 16, 24)),
    parts("kHalfPi", HALF_PI, (24, 24)),
    f"inline constexpr float kInverseLn2 = {header.single(1 / mpmath.log(2))};",
    f"inline constexpr float kInversePi = {header.single(1 / mpmath.pi)};",
    f"inline constexpr float kLog10E = {header.single(1 / mpmath.log(10))};",
])
