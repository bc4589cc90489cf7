#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision cube root: 64 quadratics over [1, 2) and the exponent factors. The
reciprocal cube root's generator uses the same functions.

Interval 0 keeps coefficients of an earlier fit, which results depend on; the others are minimax
fits of the relative error
e(m) = q(m) / m^d - 1, here with d = 1/3. Its derivative vanishes where m q'(m) = d q(m), that is at
the two roots of (2 - d) c2 m^2 + (1 - d) c1 m - d c0: the largest |e| of a quadratic is exactly the
largest of four values, those at the two roots and at the two ends.
"""
import mpmath

from shared import header

FIRST = ("0.5569939145597629", "0.5526872031967194", "-0.1096811105113981")  # of interval 0
ROUNDS = 12  # of the exchange; it converges quadratically


def stationary(c0, c1, c2, power):
    a, b, c = (2 - power) * c2, (1 - power) * c1, -power * c0
    root = mpmath.sqrt(b * b - 4 * a * c)
    return sorted(((-b + root) / (2 * a), (-b - root) / (2 * a)))


def minimax(low, high, power):
    points = [low, low + (high - low) / 4, high - (high - low) / 4, high]
    for _ in range(ROUNDS):
        # The error takes the same size at all four points, with alternating sign.
        rows = [[1, m, m * m, (-1) ** i * m**power] for i, m in enumerate(points)]
        c0, c1, c2, _ = mpmath.lu_solve(mpmath.matrix(rows),
                                        mpmath.matrix([m**power for m in points]))
        points = [low, *stationary(c0, c1, c2, power), high]
    return c0, c1, c2


def largest_error(low, high, power, c0, c1, c2):
    inside = [m for m in stationary(c0, c1, c2, power) if low < m < high]
    return max(abs(((c2 * m + c1) * m + c0) / m**power - 1) for m in (low, *inside, high))


def interval_ends(count):
    return [1 + mpmath.mpf(j) / count for j in range(count + 1)]


def scaled_factor(upper_bits, power):
    """Of a number with these sign and exponent bits: a factor, rounded, times a power of two."""
    sign, exponent = divmod(upper_bits, 256)
    third, rest = divmod(exponent - 127, 3)
    direction = 1 if power > 0 else -1
    factor = mpmath.mpf(2) ** (rest * power)
    value = header.rounded(factor, 53) * mpmath.mpf(2) ** (third * direction)
    return -value if sign else value


if __name__ == "__main__":
    third = mpmath.mpf(1) / 3
    ends = interval_ends(64)
    fits = [[mpmath.mpf(float(c)) for c in FIRST]]
    for low, high in zip(ends[1:], ends[2:]):
        fits.append([header.rounded(c, 53) for c in minimax(low, high, third)])
    worst = max(largest_error(low, high, third, *fit) for low, high, fit in zip(ends, ends[1:], fits))

    factors = [mpmath.cbrt(4), mpmath.mpf(1), mpmath.cbrt(2)]  # by exponent modulo 3
    header.main("kernels/roots/generated/cbrt_32f_table.h", [
        f"// Relative error of the quadratics on [1, 2): at most {header.digits(worst, 6)}, taken at the",
        "// exact extrema of the rounded coefficients.",
        "alignas(64) inline constexpr struct Table {",
        "  double subnormal_factor[3];  // 2^(2/3), 1, 2^(1/3) times 1e-13, the cube root of 1e-39",
        "  double c0[64], c1[64], c2[64];",
        "  double scaled_factor[512];   // +-2^((E - 127)/3), by sign and biased exponent E",
        "} static_const_table = {",
        *[line for name, values in (
            ("subnormal_factor", [f * mpmath.mpf("1e-13") for f in factors]),
            *((f"c{k}", [fit[k] for fit in fits]) for k in range(3)),
            ("scaled_factor", [scaled_factor(i, third) for i in range(512)]))
          for line in header.block(map(header.double, values), name)],
        "};",
    ])
