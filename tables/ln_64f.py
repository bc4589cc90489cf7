#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the double-precision natural logarithm: ln(1 + i/256) and the reciprocals, and the two
polynomials. The decimal logarithm's generator uses the same functions.

The logarithm is kept as the double cut toward zero and the rest. The bounds of the polynomials'
relative errors hold everywhere: log(1+t)/t less the polynomial is a power series, which is cut where
its rest no longer shows, and the zeros of its derivative are all places of an extreme value.
"""
import mpmath
from mpmath import mpf

from shared import header

STEPS = 256
FRAME = "kernels/explog/log_64f.h"  # has the table's type
TERMS = 20  # |t| < 2^-8: the rest is below 2^-160


def interval(i, scale):
    start = 1 + mpf(i) / STEPS
    whole = scale * mpmath.log(start)
    reciprocal = header.rounded(1 / start, 53) / 2**52  # what it multiplies is an integer
    high = header.cut(whole, 53)
    return header.doubles((high, whole - high, reciprocal))


def largest_error(coefficients, low, high, scale):
    """Of t times the polynomial, lowest power first, as a part of the logarithm of 1 + t."""
    difference = [-scale * (-1)**k / (k + 1) for k in range(TERMS)]
    for k, coefficient in enumerate(coefficients):
        difference[k] += coefficient
    # In units of the interval, so that the roots are of moderate size.
    reach = max(abs(low), abs(high))
    scaled = [value * reach**k for k, value in enumerate(difference)]
    derivative = [k * value for k, value in enumerate(scaled)][1:]
    roots = mpmath.polyroots(derivative[::-1], maxsteps=1000, extraprec=600)
    points = [low / reach, high / reach] + [
        mpmath.re(root) for root in roots
        if abs(mpmath.im(root)) < mpf(2)**-100 and low / reach < mpmath.re(root) < high / reach]
    smallest = min(abs(mpmath.log1p(t) / t) for t in (low or mpf(2)**-200, high or -mpf(2)**-200))
    return max(abs(mpmath.polyval(scaled[::-1], u)) for u in points) / (scale * smallest)


def body(scale, main, near_one):
    errors = [largest_error([mpf(a) for a in main], mpf(0), mpf(2)**-8, scale),
              largest_error([mpf(b) for b in near_one], -mpf(2)**-9, mpf(0), scale)]
    return [
        "// Relative errors of the polynomials, proven: main at most"
        f" {header.digits(errors[0], 4)} for 0 <= t <= 2^-8, near one",
        f"// at most {header.digits(errors[1], 4)} for -2^-9 <= s <= 0.",
        "alignas(64) inline constexpr LogTable static_const_table = {",
        "    // log(1 + i/256), cut and the rest; 2^-52 / (1 + i/256)",
        *header.block([interval(i, scale) for i in range(STEPS)]),
        *[f"    {header.doubles(polynomial[::-1])}," for polynomial in (main, near_one)],
        f"    {header.doubles(header.exact_pair(scale * mpmath.log(2)))},",
        "};",
    ]


if __name__ == "__main__":
    MAIN = [1.0, -0.4999999999999955, 0.3333333333198306, -0.24999998524219055, 0.19999270610222492,
            -0.16500333306925632]
    NEAR_ONE = [1.0, -1 / 2, 1 / 3, -1 / 4, 1 / 5, -1 / 6]
    header.main("kernels/explog/generated/ln_64f_table.h", body(mpf(1), MAIN, NEAR_ONE), [FRAME])
