# SPDX-License-Identifier: MIT
"""Table and polynomials of the extended-precision exponential.

x = n ln2/256 + r, |r| <= ln2/512. A table holds 2^(j/256) as two doubles, of which the second goes
53 bits beyond the first. Of r, for e^r alone and for e^r and e^-r at once,
  e^r = 1 + r + r^2 (1/2 + r (c3 + r (c4 + r c5))),
  cosh r = 1 + r^2 (1/2 + e4 r^2),  sinh r = r + r^3 (o3 + o5 r^2).
"""
import mpmath
from mpmath import mpf

from shared import fits, header

STEP = fits.LN2 / 256
HALF = STEP / 2


def fit(function, places):
    """At these parts of the interval; as coefficients get rounded, at the first ones that are left."""
    nodes = [HALF * mpf(place) for place in places]
    return fits.one_after_another(function, len(nodes), lambda known: nodes[:len(nodes) - known])


def even(r):
    return (2 * mpmath.sinh(r / 2)**2 - r * r / 2) / r**4


def odd(r):
    return (mpmath.sinh(r) - r) / r**3


def exponential(r):
    return (mpmath.expm1(r) - r - r * r / 2) / r**3


def of_square(function):
    return lambda u: function(mpmath.sqrt(u))


# Errors weigh with r^3, so the fit is exact near the ends of the interval, where they count.
e_fit = fit(exponential, ("-0.93", "0.93", "0.65"))
even_fit = [header.rounded(even(HALF * mpf("0.9")), 53)]
squares = [(HALF * mpf(x))**2 for x in ("0.97", "0.72")]
odd_fit = fits.one_after_another(of_square(odd), 2, lambda known: squares[:2 - known])


def error(power, function, terms, variable):
    return header.digits(fits.worst(
        lambda r: r**power * (function(r) - fits.value(terms, variable(r))) if r else r, -HALF, HALF), 3)


# The first part times 22 bits of n is exact.
high = header.cut(STEP, 41)
low = header.rounded(STEP - high, 53)

header.main("extended/generated/exp_table.h", [
    f"// e^r: error {error(3, exponential, e_fit, lambda r: r)}; cosh r:"
    f" {error(4, even, even_fit, lambda r: r * r)};"
    f" sinh r: {error(2, odd, odd_fit, lambda r: r * r)}, relative, |r| <= ln2/512.",
    f"// Error of the step's parts: {header.digits(high + low - STEP, 3)}.",
    "struct ExpTable {",
    "  double inv_step;         // 256/ln2",
    "  double high, low;        // ln2/256 in parts of 41 and 53 bits",
    "  double c3, c4, c5;",
    "  double e4, o3, o5;",
    "  double power[256][2];    // 2^(j/256)",
    "};",
    "alignas(64) inline constexpr ExpTable _nox_exp_table = {",
    *[f"    {header.double(value)}," for value in
      (1 / STEP, high, low, *e_fit, *even_fit, *odd_fit)],
    *header.block([header.doubles(header.two_doubles(mpmath.power(2, mpf(j) / 256)))
                   for j in range(256)]),
    "};",
])
