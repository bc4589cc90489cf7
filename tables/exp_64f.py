# SPDX-License-Identifier: MIT
"""Tables of the double-precision exponential: three levels of powers of two and the polynomial.

2^r is fitted by c3 (((r + c2/c3) r + c1/c3) r + c0/c3) on |r| <= 2^-15 with c0 = 1 and c1 = ln 2; c3
is multiplied into the finest level. Entries are extended numbers; loading one costs four to twelve
cycles, so each is kept as two doubles whose sum is exact.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

C2, C3 = (mpf(float(text)) for text in ("0.240226506994931", "0.05550410867227228"))


def pair(value):
    return header.doubles(header.exact_pair(value))


def powers(count, denominator, factor=1):
    values = [factor * mpmath.power(2, mpf(i) / denominator) for i in range(count)]
    return header.block([pair(value) for value in values])


worst = fits.worst(lambda r: fits.value([1, fits.LN2, C2, C3], r) / mpmath.power(2, r) - 1,
                   -mpf(2)**-15, mpf(2)**-15, 4096)

header.main("kernels/explog/generated/exp_64f_table.h", [
    "struct Pair {",
    "  double high, low;",
    "};",
    "",
    f"// Relative error of the polynomial on |r| <= 2^-15: {header.digits(worst)}.",
    "alignas(64) inline constexpr struct Table {",
    "  Pair t1[32];  // 2^(i/32)",
    "  Pair t2[32];  // 2^(i/1024)",
    "  Pair t3[16];  // c3 2^(i/16384)",
    "  Pair q2, q1, q0;  // c2/c3, c1/c3, c0/c3",
    "  Pair log2_e;",
    "  float shifter;  // 1.5 2^38: its ulp as a double is 2^-14",
    "} static_const_table = {",
    *powers(32, 32), *powers(32, 1024), *powers(16, 16384, C3),
    *[f"    {pair(value)}," for value in (C2 / C3, fits.LN2 / C3, 1 / C3, 1 / fits.LN2)],
    "    0x1.8p+38f,",
    "};",
])
