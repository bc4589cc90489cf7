#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision hyperbolic tangent: tanh(j/16) and two even polynomials.

With u = r^2, |r| <= 1/32, cosh r is c0 + c2 u and sinh(r)/r is s0 + s2 u. Every Taylor coefficient
of cosh(sqrt u) and of sinh(sqrt u)/sqrt u is positive, so each is convex in u and its difference
from a straight line has one stationary point: the largest error is the largest of three values.
"""
import mpmath
from mpmath import mpf

from shared import header

S2, C2, S0, C0 = (mpf(float(c)) for c in (
    "0.16665852882511148", "0.5000406873557977", "1.0000000109269136", "0.9999999950346924"))
END = mpf(1) / 1024


def cosh_root(u):
    return mpmath.cosh(mpmath.sqrt(u))


def sinh_root(u):
    return mpmath.sinh(mpmath.sqrt(u)) / mpmath.sqrt(u) if u else mpf(1)


def largest_error(function, derivative, constant, slope):
    stationary = mpmath.findroot(lambda u: derivative(u) - slope, (END / 4, 3 * END / 4))
    return max(abs(constant + slope * u - function(u)) for u in (mpf(0), stationary, END))


cosh_error = largest_error(cosh_root, lambda u: sinh_root(u) / 2, C0, C2)
sinh_error = largest_error(sinh_root, lambda u: (cosh_root(u) - sinh_root(u)) / (2 * u), S0, S2)

header.main("kernels/hyper/generated/tanh_32f_table.h", [
    "// On |r| <= 1/32, at the exact extrema:",
    f"// |c0 + c2 r^2 - cosh r| at most {header.digits(cosh_error)},",
    f"// |s0 + s2 r^2 - sinh(r)/r| at most {header.digits(sinh_error)}.",
    "alignas(64) inline constexpr struct Table {",
    "  double tanh[161];   // tanh(j/16)",
    "  double s2, c2, s0, c0;",
    "  double p5, p3, p1;  // -17/315, 2/15, -1/3",
    "  float shifter;      // 2^19: its ulp is 1/16",
    "} static_const_table = {",
    *header.block([header.double(mpmath.tanh(mpf(j) / 16)) for j in range(161)]),
    *[f"    {header.double(value)}," for value in
      (S2, C2, S0, C0, mpf(-17) / 315, mpf(2) / 15, mpf(-1) / 3)],
    "    0x1p+19f,",
    "};",
])
