# SPDX-License-Identifier: MIT
"""Table of the single-precision exponential: scaled powers of two and the folded polynomial.

2^r is fitted by c2 ((r + c1/c2) r + c0/c2) on |r| <= 1/128; c2 is multiplied into the powers.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

C2, D1, D2 = (mpf(float(text)) for text in (
    "0.24022606667644342", "4.162745591525487", "2.885405946656543"))

# The relative error is smooth with a handful of extrema; 4097 points find them to a part in 1e6.
worst = fits.worst(lambda r: C2 * ((r + D2) * r + D1) / mpmath.power(2, r) - 1,
                   -mpf(1) / 128, mpf(1) / 128, 4096)

header.main("kernels/explog/generated/exp_32f_table.h", [
    f"// Relative error of the polynomial on |r| <= 1/128: {header.digits(worst)}.",
    "alignas(64) inline constexpr struct Table {",
    "  double power[64];  // T[j] = c2 2^(j/64), from the double c2",
    "  double d2, d1;     // c1/c2, c0/c2",
    "  float shifter;     // 1.5 2^17: its ulp is 1/64",
    "} static_const_table = {",
    *header.block([header.double(C2 * mpmath.power(2, mpf(j) / 64)) for j in range(64)]),
    f"    {header.double(D2)},",
    f"    {header.double(D1)},",
    "    0x1.8p+17f,",
    "};",
])
