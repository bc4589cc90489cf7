# SPDX-License-Identifier: MIT
"""Polynomials of the wide steps of the error functions."""
import mpmath
from mpmath import mpf

from shared import fits, header

SHIFT = mpf(8)           # the variable z = x^2 is taken from the middle of its range
NEAR = mpf(3)
LAST = mpf("9.19455")    # results are normal up to there


def ratio(t):
    """erf(x) / x, t = x^2 - SHIFT."""
    x = mpmath.sqrt(t + SHIFT)
    return mpmath.erf(x) / x if x else 2 / mpmath.sqrt(mpmath.pi)


def scaled(t):
    """(a + NEAR) e^(a^2) erfc(a), t = (a - NEAR) / (a + NEAR)."""
    a = NEAR * (1 + t) / (1 - t)
    return (a + NEAR) * mpmath.exp(a * a) * mpmath.erfc(a)


body = []
for name, function, text, low, high, count in (
        ("kWideErf", ratio, f"erf(x) / x in t = x^2 - {int(SHIFT)}", -SHIFT, SHIFT, 22),
        ("kWideErfc", scaled, f"(a + {int(NEAR)}) e^(a^2) erfc(a) in t = (a - {int(NEAR)}) / (a + {int(NEAR)})", -mpf(1),
         (LAST - NEAR) / (LAST + NEAR), 14)):
    terms = fits.stored(fits.fit(function, low, high, count), 53)
    error = fits.worst(lambda t: fits.value(terms, t) / function(t) - 1, low, high, 400)
    body += [f"// {text}, from {mpmath.nstr(low, 4)} to {mpmath.nstr(high, 4)}, highest power first.",
             f"// Relative error at most {header.digits(error)}.",
             f"inline constexpr double {name}[{count}] = {header.doubles(terms[::-1])};"]
header.main("kernels/erf/generated/wide_erf_32f_table.h", body)
