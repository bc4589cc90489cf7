# SPDX-License-Identifier: MIT
"""Polynomials of the wide steps of inverse trigonometric functions, in z = u^2."""
import mpmath
from mpmath import mpf

from shared import fits, header


def of_root(function):
    """function(u) / u of an odd function, in z; 1 at 0."""
    def ratio(z):
        u = mpmath.sqrt(z)
        return function(u) / u if u else mpf(1)
    return ratio


body = []
for name, function, text, last, count in (
        ("kWideAtan", mpmath.atan, "atan", mpf(1), 14),
        ("kWideAsin", mpmath.asin, "asin", mpf(1) / 4, 9)):
    ratio = of_root(function)
    terms = fits.stored(fits.fit(ratio, mpf(0), last, count), 53)
    error = fits.worst(lambda z: fits.value(terms, z) / ratio(z) - 1, mpf(0), last, 400)
    body += [f"// {text}(u) / u in z = u^2 <= {mpmath.nstr(last, 4)}, highest power first. Relative"
             f" error at most {header.digits(error)}.",
             f"inline constexpr double {name}[{count}] = {header.doubles(terms[::-1])};"]
header.main("kernels/trig/generated/wide_trig_32f_table.h", body)
