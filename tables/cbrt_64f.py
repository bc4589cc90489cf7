# SPDX-License-Identifier: MIT
"""Table of the double-precision cube root and reciprocal cube root.

(1 + t)^d, d = +-1/3, is 1 + t p(t) at the zeros of the Chebyshev polynomial of sixth degree for the
interval whose last point is 2^-8 and whose first zero is 0, so by the rest of the interpolation it
differs by at most |binomial(d, 6)| W^6 / 2^11 on [0, 2^-8], W the length of that interval: the sixth
derivative is largest at t = 0. Rounding the coefficient of t^k to a double adds at most half a unit
of its last place times 2^-8k.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

STEPS, TERMS = 256, 5
REACH = mpf(1) / STEPS
ROOTS = ((mpf(1) / 3, 0), (-mpf(1) / 3, 1))  # the power, and by how many thirds it is shifted


def fit(power):
    """p, and the bound of the relative error."""
    degree = TERMS + 1
    first = mpmath.sin(mpmath.pi / (4 * degree))**2
    length = REACH / (1 - first)
    nodes = [length * (mpmath.sin((2 * k + 1) * mpmath.pi / (4 * degree))**2 - first)
             for k in range(1, degree)]
    exact = fits.interpolated(lambda t: ((1 + t)**power - 1) / t, nodes)
    terms = fits.stored(exact, 53)
    error = abs(mpmath.binomial(power, degree)) * length**degree / 2**(2 * degree - 1)
    error += sum(abs(a - b) * REACH**(k + 1) for k, (a, b) in enumerate(zip(exact, terms)))
    return terms, error / min(mpf(1), (1 + REACH)**power)


def split(power, shift):
    """h as doubles and singles. Exponents leave a remainder r of a third: 2^((r - shift)/3)."""
    whole = [start**power * mpf(2)**(mpf(r - shift) / 3) for r in range(3) for start in starts]
    high = fits.stored(whole, 53)
    # An exact cube root leaves nothing but the working precision's rounding.
    return high, [mpf(0) if abs(a - b) < mpf(2)**-200 else a - b for a, b in zip(whole, high)]


starts = [1 + mpf(j) / STEPS for j in range(STEPS)]
(root, root_error), (inverse, inverse_error) = (fit(power) for power, _ in ROOTS)
tables = [split(*each) for each in ROOTS]
header.main("kernels/roots/generated/cbrt_64f_table.h", [
    "// Relative error of 1 + t p(t) for 0 <= t <= 2^-8, proven: at most"
    f" {header.digits(root_error)}, of the reciprocal's", f"// {header.digits(inverse_error)}.",
    "struct CubeRootTable {",
    "  // Of the cube root, then of the reciprocal.",
    "  double p[2][5];          // the highest power first",
    "  double reciprocal[256];  // of 1 + j/256, times 2^-52: what it multiplies is an integer",
    "  double high[2][3 * 256];  // h, by r and j",
    "  float low[2][3 * 256];    // the rest of h",
    "};",
    "alignas(64) inline constexpr CubeRootTable kCubeRoots = {",
    *header.block([header.doubles(terms[::-1]) for terms in (root, inverse)]),
    *header.block([header.double(1 / start / 2**52) for start in starts]),
    "    {",
    *[line for high, _ in tables for line in header.block(map(header.double, high), indent=8)],
    "    },",
    "    {",
    *[line for _, low in tables for line in header.block(map(header.single, low), indent=8)],
    "    },",
    "};",
])
