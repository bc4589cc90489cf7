#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Table of the single-precision exponential: scaled powers of two and the folded polynomial.

2^r is fitted by c2 ((r + c1/c2) r + c0/c2) on |r| <= 1/128; c2 is multiplied into the powers.
"""
import mpmath
import tablegen

C2 = mpmath.mpf(float("0.24022606667644342"))
D1 = float("4.162745591525487")
D2 = float("2.885405946656543")


def relative_error(r):
    return C2 * ((r + D2) * r + D1) / mpmath.power(2, r) - 1


# The relative error is smooth with a handful of extrema; 4097 points find them to a part in 1e6.
worst = max(abs(relative_error(mpmath.mpf(i) / 2048 / 128)) for i in range(-2048, 2049))

body = "\n".join([
    f"// Relative error of the polynomial on |r| <= 1/128: {mpmath.nstr(worst, 4)}.",
    "static const struct {",
    "  double power[64];  // T[j] = c2 2^(j/64), from the double c2",
    "  double d2, d1;     // c1/c2, c0/c2",
    "  float shifter;     // 1.5 2^17: its ulp is 1/64",
    "} static_const_table = {",
    "    {",
    *[f"        {tablegen.double(C2 * mpmath.power(2, mpmath.mpf(j) / 64))}," for j in range(64)],
    "    },",
    f"    {D2.hex()},",
    f"    {D1.hex()},",
    "    0x1.8p+17f,",
    "};",
])
tablegen.main("kernels/explog/generated/exp_32f_table.h", __file__, body)
