# SPDX-License-Identifier: MIT
"""log1p for the single-precision inverse hyperbolic functions: cubics and packed polynomials.

x87 part: 1 + s = 2^e (1 + u), a cubic in u for each 1/512 of 0 <= u < 1. The first one has no
constant and keeps the relative error. Packed part: ln m = 2 t + t^3 P(t^2), t = (m - 1) / (m + 1).
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, EXPONENTS = 512, 64
T2 = (3 - 2 * mpmath.sqrt(2))**2  # largest t^2
ratio = fits.over_argument(mpmath.log1p, mpf(1))


def cubic(i):
    low, high = mpf(i) / CELLS, mpf(i + 1) / CELLS
    terms = fits.fit_shifted(mpmath.log1p, low, high, 4) if i else [mpf(0)] + fits.fit_shifted(
        ratio, low, high, 3)
    return fits.stored(terms, 53)


cubics = [cubic(i) for i in range(CELLS)]


def error_of(i):
    """A quartic's: its extrema are at the ends and near those of the Chebyshev polynomial."""
    places = [(2 * i + 1 + mpmath.cos(mpmath.pi * k / 16)) / (2 * CELLS) for k in range(17)]
    if i == 0:
        return max(abs(fits.value(cubics[0][1:], u) / ratio(u) - 1) for u in places)
    return max(abs(fits.value(cubics[i], u) / mpmath.log1p(u) - 1) for u in places)


def tail(t2):
    t = mpmath.sqrt(t2)
    return (2 * mpmath.atanh(t) - 2 * t) / t**3 if t2 > 0 else mpf(2) / 3


def packed(name, count):
    terms = fits.stored(fits.fit_shifted(tail, mpf(0), T2, count), 24)
    error = fits.worst(lambda t2: (fits.value(terms, t2) / tail(t2) - 1) * t2 / 3, mpf(0), T2)
    return [f"// P, the highest power first: relative error of the logarithm {header.digits(error)}.",
            f"inline constexpr float {name}[{count}] = {header.singles(terms[::-1])};"]


def exponent(e):
    scale = mpmath.ldexp(1, -e)
    return header.doubles((scale, scale - 1, e * fits.LN2))


header.main("kernels/hyper/generated/log1p_32f_table.h", [
    "struct Cubic {",
    "  double c3, c2, c1, c0;",
    "};",
    "// ln(1 + u), i/512 <= u <= (i+1)/512: relative error"
    f" {header.digits(max(map(error_of, range(1, CELLS))))}, in the first {header.digits(error_of(0))}.",
    *header.array(f"Cubic kCubic[{CELLS}]", [header.doubles(c[::-1]) for c in cubics]),
    "struct Exponent {",
    "  double scale, offset, log;  // 2^-e, 2^-e - 1, e ln 2",
    "};",
    *header.array(f"Exponent kExponent[{EXPONENTS}]", map(exponent, range(EXPONENTS))),
    f"inline constexpr double kLn2 = {header.double(fits.LN2)};",
    *packed("kLong", 3), *packed("kShort", 1),
])
