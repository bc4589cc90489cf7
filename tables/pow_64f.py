#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables and polynomials of the double-precision powers.

log2(1 + z) = c0 z + ... + c6 z^7 around 513 reciprocals of 11 bits, c0 and c1 in two parts;
2^r = 1 + r (e0 + e1 r + e2 r^2) between 64 times 128 powers.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, COARSE, FINE = 512, 64, 128

reciprocals = fits.reciprocals(CELLS, 11, CELLS + 1)
width = fits.reciprocal_reach(reciprocals, CELLS, 0, CELLS)

log_terms = fits.fit(fits.log2_ratio, -width, width, 7)
c0_high, c0_low = header.parts(log_terms[0], (24, 53))
c1_high, c1_low = header.two_doubles(log_terms[1])
upper_terms = fits.stored(log_terms[2:], 53)
used = [c0_high + c0_low, c1_high + c1_low] + upper_terms
log_error = fits.worst(lambda z: fits.value(used, z) / fits.log2_ratio(z) - 1, -width, width)

half_step = mpf(1) / (2 * COARSE * FINE)
exp_terms = fits.stored(fits.fit(fits.exp2_ratio, -half_step, half_step, 3), 53)
exp_error = fits.worst(lambda r: (1 + r * fits.value(exp_terms, r)) / mpmath.power(2, r) - 1,
                       -half_step, half_step)


def cell(reciprocal):
    log2 = -mpmath.log(reciprocal, 2)
    high = header.multiple(log2, -40)
    return header.doubles((high, log2 - high, reciprocal))


def powers(count, steps):
    return header.block([header.doubles(header.exact_pair(mpmath.power(2, mpf(j) / steps)))
                         for j in range(count)])


header.main("kernels/explog/generated/pow_64f_table.h", [
    "struct Pair {",
    "  double high, low;  // the sum is the entry, a 64-bit number",
    "};",
    f"// log2(1 + z), |z| <= {header.digits(width)}: relative error {header.digits(log_error)}.",
    f"// 2^r, |r| <= 2^-14: relative error {header.digits(exp_error)}.",
    "alignas(64) inline constexpr struct Table {",
    "  struct {",
    "    double high, low;   // log2(1 / reciprocal), high a multiple of 2^-40",
    "    double reciprocal;  // near 1 / (1 + i/512), 11 bits",
    f"  }} cell[{CELLS + 1}];",
    f"  Pair coarse[{COARSE}], fine[{FINE}];  // 2^(j/64), 2^(j/8192)",
    "  double c[5];                     // c6 to c2",
    "  double c1_high, c1_low, c0_low;",
    "  double e[3];      // e2 to e0",
    "  float c0_high;",
    "  float shifter;    // 1.5 2^39: its ulp as a double is 2^-13",
    "} extended_table = {",
    *header.block(map(cell, reciprocals)),
    *powers(COARSE, COARSE),
    *powers(FINE, COARSE * FINE),
    f"    {header.doubles(upper_terms[::-1])},",
    f"    {header.doubles((c1_high, c1_low, c0_low))[1:-1]},",
    f"    {header.doubles(exp_terms[::-1])},",
    f"    {header.single(c0_high)},",
    "    0x1.8p+39f,",
    "};",
])
