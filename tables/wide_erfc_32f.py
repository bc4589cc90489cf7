# SPDX-License-Identifier: MIT
"""The polynomial of the wide step of the complementary error function."""
import mpmath
from mpmath import mpf

from shared import fits, header

NEAR = mpf(3)
LAST = mpf("9.19455")  # results are normal up to there


def scaled(t):
    """(a + NEAR) e^(a^2) erfc(a), t = (a - NEAR) / (a + NEAR)."""
    a = NEAR * (1 + t) / (1 - t)
    return (a + NEAR) * mpmath.exp(a * a) * mpmath.erfc(a)


low, high, count = -mpf(1), (LAST - NEAR) / (LAST + NEAR), 14
terms = fits.stored(fits.fit(scaled, low, high, count), 53)
error = fits.worst(lambda t: fits.value(terms, t) / scaled(t) - 1, low, high, 400)
near = int(NEAR)
header.main("kernels/erf/generated/wide_erfc_32f_table.h", [
    f"// (a + {near}) e^(a^2) erfc(a) in t = (a - {near}) / (a + {near}), from {mpmath.nstr(low, 4)} to"
    f" {mpmath.nstr(high, 4)}, highest power",
    f"// first. Relative error at most {header.digits(error)}.",
    f"inline constexpr double kWideErfc[{count}] = {header.doubles(terms[::-1])};",
])
