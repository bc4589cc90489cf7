#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the double-precision cube root. The reciprocal cube root's generator uses the same
functions.

(1 + t)^d is 1 + t p(t) at the zeros of the Chebyshev polynomial of sixth degree for the interval
whose last point is 2^-8 and whose first zero is 0, so by the rest of the interpolation it differs
by at most |binomial(d, 6)| W^6 / 2^11 on [0, 2^-8], W the length of that interval: the sixth
derivative is largest at t = 0. Rounding the coefficient of t^k to a double adds at most half a unit
of its last place times 2^-8k.
"""
import mpmath
import tablegen
from mpmath import mpf

STEPS = 256
TERMS = 5
REACH = mpf(1) / STEPS


def fit(power):
    """Coefficients of p as doubles, the highest power first, and the bound of the relative error."""
    degree = TERMS + 1
    zeros = [mpmath.sin((2 * k + 1) * mpmath.pi / (4 * degree))**2 for k in range(degree)]
    length = REACH / (1 - zeros[0])
    nodes = [length * (zero - zeros[0]) for zero in zeros[1:]]
    powers = mpmath.matrix([[t**k for k in reversed(range(TERMS))] for t in nodes])
    values = mpmath.matrix([((1 + t)**power - 1) / t for t in nodes])
    exact = list(mpmath.lu_solve(powers, values))
    doubles = [tablegen.rounded(c, 53) for c in exact]
    error = abs(mpmath.binomial(power, degree)) * length**degree / 2**(2 * degree - 1)
    error += sum(abs(a - b) * REACH**(TERMS - k) for k, (a, b) in enumerate(zip(exact, doubles)))
    return doubles, error / min(mpf(1), (1 + REACH)**power)


def values(name, literals):
    return [f"    {{  // {name}", *[f"        {literal}," for literal in literals], "    },"]


def body(power, shift):
    """Exponents leave a remainder r of a third, which stands for 2^((r - shift)/3)."""
    coefficients, error = fit(power)
    starts = [1 + mpf(j) / STEPS for j in range(STEPS)]
    whole = [start**power * mpmath.mpf(2)**(mpf(r - shift) / 3) for r in range(3) for start in starts]
    high = [tablegen.rounded(value, 53) for value in whole]
    # An exact cube root leaves nothing but the working precision's rounding.
    low = [mpf(0) if abs(a - b) < mpf(2)**-200 else tablegen.rounded(a - b, 24)
           for a, b in zip(whole, high)]
    return "\n".join([
        '#include "kernels/roots/cbrt_64f.h"',
        "",
        f"// Relative error of 1 + t p(t), proven: at most {mpmath.nstr(error, 4)} for 0 <= t <= 2^-8.",
        "static constexpr CubeRootTable static_const_table = {",
        f"    {{{', '.join(tablegen.double(c) for c in coefficients)}}},",
        *values("2^-52 / (1 + j/256)", [tablegen.double(1 / start / 2**52) for start in starts]),
        *values("h", [tablegen.double(value) for value in high]),
        *values("the rest of h", [f"{float(value).hex()}f" for value in low]),
        "};",
    ])


if __name__ == "__main__":
    tablegen.main("kernels/roots/generated/cbrt_64f_table.h", __file__, body(mpf(1) / 3, 0))
