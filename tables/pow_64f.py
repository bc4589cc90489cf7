#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables and polynomials of the double-precision powers.

log2(1 + z) = c0 z + ... + c6 z^7 around 513 reciprocals of 11 bits, c0 and c1 in two parts;
2^r = 1 + r (e0 + e1 r + e2 r^2) between 64 times 128 powers.
"""
import mpmath
import tablegen
from pow_fit import as_double, as_single, exp2_ratio, fit, log2_ratio, poly, short, worst

CELLS, COARSE, FINE = 512, 64, 128

reciprocals = [tablegen.rounded(1 / (1 + mpmath.mpf(i) / CELLS), 11) for i in range(CELLS + 1)]
cell_width = max(
    abs((1 + (i + side) / mpmath.mpf(CELLS)) * reciprocals[i] - 1)
    for i in range(CELLS + 1)
    for side in (mpmath.mpf(-1) / 2, mpmath.mpf(1) / 2)
    if 0 <= i + side <= CELLS)

log_terms = fit(log2_ratio, 7, cell_width)
c0_high = as_single(log_terms[0])
c0_low = as_double(log_terms[0] - c0_high)
c1_high = as_double(log_terms[1])
c1_low = as_double(log_terms[1] - c1_high)
upper_terms = [as_double(c) for c in log_terms[2:]]
used = [c0_high + c0_low, c1_high + c1_low] + upper_terms
log_error = worst(lambda z: poly(used, z) / log2_ratio(z) - 1, cell_width)

half_step = mpmath.mpf(1) / (2 * COARSE * FINE)
exp_terms = [as_double(c) for c in fit(exp2_ratio, 3, half_step)]
exp_error = worst(lambda r: (1 + r * poly(exp_terms, r)) / mpmath.power(2, r) - 1, half_step)


def cell(reciprocal):
    log2 = -mpmath.log(reciprocal, 2)
    high = mpmath.ldexp(mpmath.nint(mpmath.ldexp(log2, 40)), -40) + mpmath.mpf(0)
    low = as_double(log2 - high)
    return f"{{{float(high).hex()}, {float(low).hex()}, {float(reciprocal).hex()}}}"


def power_pairs(count, steps):
    return [
        f"        {tablegen.exact_pair(mpmath.power(2, mpmath.mpf(j) / steps))},"
        for j in range(count)
    ]


body = "\n".join([
    "struct Pair {",
    "  double high, low;  // the sum is the entry, a 64-bit number",
    "};",
    f"// log2(1 + z), |z| <= {short(cell_width)}: relative error {short(log_error)}.",
    f"// 2^r, |r| <= 2^-14: relative error {short(exp_error)}.",
    "static const struct {",
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
    "    {",
    *[f"        {cell(r)}," for r in reciprocals],
    "    },",
    "    {",
    *power_pairs(COARSE, COARSE),
    "    },",
    "    {",
    *power_pairs(FINE, COARSE * FINE),
    "    },",
    f"    {{{', '.join(float(c).hex() for c in upper_terms[::-1])}}},",
    f"    {float(c1_high).hex()}, {float(c1_low).hex()}, {float(c0_low).hex()},",
    f"    {{{', '.join(float(c).hex() for c in exp_terms[::-1])}}},",
    f"    {float(c0_high).hex()}f,",
    "    0x1.8p+39f,",
    "};",
])
tablegen.main("kernels/explog/generated/pow_64f_table.h", __file__, body)
