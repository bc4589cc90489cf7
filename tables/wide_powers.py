# SPDX-License-Identifier: MIT
"""Polynomials of the wide steps for powers and logarithms."""
import mpmath
from mpmath import mpf

from shared import fits, header

LN2 = fits.LN2
# Of s^2. k is chosen from quotients that are a little off.
LAST = (3 - mpmath.sqrt(8))**2 * mpf("1.006")


def of_root(function, slope):
    """function(u) / u of an odd function, in z = u^2."""
    def ratio(z):
        u = mpmath.sqrt(z)
        return function(u) / u if u else slope
    return ratio


atanh = of_root(mpmath.atanh, mpf(1))
body = []
for name, function, text, low, high, count in (
        ("kWideAtanh", atanh, "atanh(s) / s in z = s^2", mpf(0), LAST, 5),
        ("kWideLog", lambda z: 2 * atanh(z), "ln((1 + s) / (1 - s)) / s in z = s^2",
         mpf(0), LAST, 5),
        ("kWideLog2", lambda z: 2 * atanh(z) / LN2, "log2((1 + s) / (1 - s)) / s in z = s^2",
         mpf(0), LAST, 6),
        ("kWideExp2", lambda r: mpf(2)**r, "2^r", -mpf(1) / 2, mpf(1) / 2, 9),
        ("kWideCosh", lambda z: mpmath.cosh(LN2 * mpmath.sqrt(z)), "(2^r + 2^-r) / 2 in z = r^2",
         mpf(0), mpf(1) / 4, 5),
        ("kWideSinh", of_root(lambda r: mpmath.sinh(LN2 * r), LN2), "(2^r - 2^-r) / 2r in z = r^2",
         mpf(0), mpf(1) / 4, 4)):
    terms = fits.stored(fits.fit(function, low, high, count), 53)
    error = fits.worst(lambda z: fits.value(terms, z) / function(z) - 1, low, high, 400)
    body += [f"// {text}, from {mpmath.nstr(low, 4)} to {mpmath.nstr(high, 4)}, highest power first.",
             f"// Relative error at most {header.digits(error)}.",
             f"inline constexpr double {name}[{count}] = {header.doubles(terms[::-1])};"]
header.main("core/generated/wide_powers_table.h", body)
