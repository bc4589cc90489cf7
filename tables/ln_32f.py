#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision natural logarithm: a cubic in z for each 1/256 of [1, 2), and the
multiples of ln 2. The decimal logarithm's generator uses the same functions.

The cubics are minimax fits, but where the sum of cubic and exponent cancels: the first is the Taylor
cubic about 1, the last the one about 2.
"""
import mpmath
from mpmath import mpf

from shared import header

STEPS = 256
FRAME = "kernels/explog/log_32f_table.h"  # has the table's type


def error_at(c, z, scale):
    """The distance of a cubic, constant term first, to the logarithm."""
    return ((c[3] * z + c[2]) * z + c[1]) * z + c[0] - scale * mpmath.log(z)


def extreme_points(c, low, high, scale):
    """Both ends and the zeros of the error's derivative between them.

    z times that derivative is a cubic, so three zeros are all of them.
    """
    points = [(low + high) / 2 - (high - low) / 2 * mpmath.cos(mpmath.pi * k / 4) for k in range(5)]
    for k in range(1, 4):
        z = points[k]
        for _ in range(7):  # Newton's iteration, from the places for the quartic Chebyshev polynomial
            z -= (((3 * c[3] * z + 2 * c[2]) * z + c[1]) * z - scale) / (
                (9 * c[3] * z + 4 * c[2]) * z + c[1])
        points[k] = z
    assert all(a < b for a, b in zip(points, points[1:]))
    return points


def largest_error(c, points, scale):
    return max(abs(error_at(c, z, scale)) for z in points)


def minimax(low, high, scale):
    """The cubic whose error alternates between five points of equal size."""
    points = [(low + high) / 2 - (high - low) / 2 * mpmath.cos(mpmath.pi * k / 4) for k in range(5)]
    for _ in range(3):
        system = mpmath.matrix([[1, z, z**2, z**3, (-1)**k] for k, z in enumerate(points)])
        c = list(mpmath.lu_solve(system, mpmath.matrix([scale * mpmath.log(z) for z in points])))[:4]
        points = extreme_points(c, low, high, scale)
    return c


def rounded(cubic):
    return [header.rounded(value, 53) for value in cubic]


def body(scale, constant):
    ends = [1 + mpf(i) / STEPS for i in range(STEPS + 1)]

    first = rounded([scale * mpf(c) for c in (-mpf(11) / 6, 3, -mpf(3) / 2, mpf(1) / 3)])
    # So that the steps of Horner's scheme at z = 1 cancel, and the logarithm of 1 is +0.
    first[0] = -header.rounded(header.rounded(first[3] + first[2], 53) + first[1], 53)
    last = rounded([scale * c for c in (mpmath.log(2) - mpf(11) / 6, mpf(3) / 2, -mpf(3) / 8,
                                        mpf(1) / 24)])
    inner = [rounded(minimax(ends[i], ends[i + 1], scale)) for i in range(1, STEPS - 1)]

    fitted = max(largest_error(c, extreme_points(c, ends[i], ends[i + 1], scale), scale)
                 for i, c in enumerate(inner, 1))
    # The error of a Taylor cubic grows with the distance from its centre.
    taylor = [largest_error(first, ends[:2], scale), largest_error(last, ends[-2:], scale)]
    # The x87 unit's 64-bit constant; the products are rounded to 53 bits.
    unit = header.rounded(scale * mpmath.log(2), 64)

    return [
        "// Distance of the cubics to the logarithm, largest values at all zeros of the derivative and at",
        f"// the ends: {header.digits(fitted, 3)}; in the first {header.digits(taylor[0], 3)}, in the last"
        f" {header.digits(taylor[1], 3)}.",
        "alignas(64) inline constexpr LogTable static_const_table = {",
        "    // c3, c2, c1, c0 for 1 + i/256 <= z < 1 + (i+1)/256",
        *header.block([header.doubles(c[::-1]) for c in [first, *inner, last]]),
        f"    // {constant} times the exponent, for each exponent field",
        *header.block([header.double((field - 127) * unit) for field in range(256)]),
        f"    {header.extended(unit)},",
        "};",
    ]


if __name__ == "__main__":
    header.main("kernels/explog/generated/ln_32f_table.h", body(mpf(1), "ln 2"), [FRAME])
