# SPDX-License-Identifier: MIT
"""The estimate and the series of the wide step of the reciprocal cube root."""
import mpmath
from mpmath import mpf

from shared import fits, header

BIAS, UNIT, COUNT = 127, 2**23, 4
POINTS = 512
series = lambda e: ((1 - e)**(-mpf(1) / 3) - 1) / e if e else mpf(1) / 3


def value_of(pattern):
    """The number with this pattern, in units of an exponent."""
    exponent = mpmath.floor(pattern)
    return mpmath.ldexp(1 + pattern - exponent, int(exponent) - BIAS)


def residue(start, place):
    """1 - x y^3, x = 2^floor(place) (1 + its fraction), y by its pattern."""
    return 1 - value_of(BIAS + place) * value_of(start - (BIAS + place) / 3)**3


def reach(offset):
    """The largest of all x; the pattern of y changes its exponent within."""
    start = mpf(4 * BIAS) / 3 - offset
    return max(abs(residue(start, mpf(i) / POINTS)) for i in range(3 * POINTS))


# Both ends are equal for the best.
low, high = mpf("0.05"), mpf("0.09")
for _ in range(24):
    thirds = (high - low) / 3
    if reach(low + thirds) > reach(high - thirds):
        low += thirds
    else:
        high -= thirds
start = header.rounded((mpf(4 * BIAS) / 3 - low) * UNIT, 24)
last = reach(mpf(4 * BIAS) / 3 - start / UNIT) * mpf("1.001")
terms = fits.stored(fits.fit(series, -last, last, COUNT), 24)
error = fits.worst(lambda e: (1 + e * fits.value(terms, e)) / (1 + e * series(e)) - 1, -last, last,
                   400)
body = [
    "// The pattern of x^(-1/3) is about this less a third of the pattern of x: 1 - x y^3 is at most",
    f"// {header.digits(last)}.",
    f"inline constexpr float kWideInvCbrtStart = {header.single(start)};",
    "// ((1 - e)^(-1/3) - 1) / e for such e, highest power first. The root is off by at most",
    f"// {header.digits(error)}.",
    f"inline constexpr float kWideInvCbrt[{COUNT}] = {header.singles(terms[::-1])};",
]
header.main("kernels/roots/generated/wide_roots_32f_table.h", body)
