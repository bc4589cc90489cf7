#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables and polynomials of the single-precision powers.

x87 part: log2(1 + z) = z Q(z) around 513 reciprocals; 2^r = c2 ((r + c1/c2) r + c0/c2) with c2
multiplied into 512 powers. Packed part: logarithm by s = (m - 1) / (m + 1), 2^r by one polynomial.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, POWERS = 512, 512
HALVED = 212  # from this cell on, sqrt(2) and more, the exponent counts one more

reciprocals = fits.reciprocals(CELLS, 24, CELLS + 1)
width = fits.reciprocal_reach(reciprocals, CELLS)
log_terms = fits.stored(fits.fit(fits.log2_ratio, -width, width, 4), 53)
log_error = fits.worst(lambda z: fits.value(log_terms, z) / fits.log2_ratio(z) - 1, -width, width)

half_step = mpf(1) / (2 * POWERS)
exp_terms = fits.fit(lambda r: mpmath.power(2, r), -half_step, half_step, 3)
c2, d1 = fits.stored([exp_terms[2], exp_terms[1] / exp_terms[2]], 53)
# c0 is 1 as far as doubles go: powers of two must come out exact.
while header.rounded(c2 * header.rounded(1 / c2, 53), 53) != 1:
    c2 += mpmath.ldexp(1, -55)
d0 = header.rounded(1 / c2, 53)
exp_error = fits.worst(lambda r: c2 * ((r + d1) * r + d0) / mpmath.power(2, r) - 1,
                       -half_step, half_step)

# ---- Packed: m in [sqrt(1/2), sqrt(2)), so |s| <= 0.17158
S2 = (3 - 2 * mpmath.sqrt(2))**2


def tail_ratio(s2):
    """(log2(m) - 2/ln(2) s) / s^3"""
    if s2 == 0:
        return 2 / fits.LN2 / 3
    s = mpmath.sqrt(s2)
    return (2 * mpmath.atanh(s) - 2 * s) / fits.LN2 / s**3


def log_ratio(s2):
    """log2(m) / s"""
    return 2 / fits.LN2 + s2 * tail_ratio(s2)


def packed(name, function, count):
    """In s^2."""
    terms = fits.stored(fits.fit_shifted(function, mpf(0), S2, count), 24)
    error = fits.worst(lambda s2: fits.value(terms, s2) / function(s2) - 1, mpf(0), S2)
    return [f"// {function.__doc__} in s^2, s^2 <= {header.digits(S2)}: relative error"
            f" {header.digits(error)}.",
            f"inline constexpr float {name}[{count}] = {header.singles(terms)};"]


def packed_exp(name, count, half_width=mpf("0.501")):
    terms = fits.stored(fits.fit(fits.exp2_ratio, -half_width, half_width, count), 24)
    error = fits.worst(lambda r: (1 + r * fits.value(terms, r)) / mpmath.power(2, r) - 1,
                       -half_width, half_width)
    return [f"// (2^r - 1) / r, |r| <= 0.501: relative error of 2^r {header.digits(error)}.",
            f"inline constexpr float {name}[{count}] = {header.singles(terms)};"]


c_high, c_low = header.parts(2 / fits.LN2, (12, 24))
header.main("kernels/explog/generated/pow_32f_table.h", [
    f"inline constexpr uint32_t kHalvedCell = {HALVED};",
    f"// log2(1 + z) = z Q(z), |z| <= {header.digits(width)}: relative error"
    f" {header.digits(log_error)}.",
    f"// 2^r on |r| <= 1/{2 * POWERS}: relative error {header.digits(exp_error)}.",
    "alignas(64) inline constexpr struct Table {",
    f"  // R near 1 / (1 + i/{CELLS}), 24 bits; -log2 R, from kHalvedCell on less 1.",
    f"  struct {{ double reciprocal, log2; }} cell[{CELLS + 1}];",
    "  double exponent[257];   // of each exponent field",
    f"  double power[{POWERS}];      // c2 2^(j/{POWERS})",
    "  double q[4];            // Q, lowest first",
    "  double d1, d0;          // c1/c2, 1/c2",
    f"  double shifter;         // 1.5 2^43: its ulp is 1/{POWERS}",
    "} static_const_table = {",
    *header.block([header.doubles((r, -mpmath.log(r, 2) + 0 - (i >= HALVED)))
                    for i, r in enumerate(reciprocals)]),
    *header.block([header.double(mpf(field - 127)) for field in range(257)]),
    *header.block([header.double(c2 * mpmath.power(2, mpf(j) / POWERS)) for j in range(POWERS)]),
    f"    {header.doubles(log_terms)},",
    f"    {header.double(d1)}, {header.double(d0)},",
    "    0x1.8p+43,",
    "};",
    "",
    "// 2/ln(2) with 12 bits and the rest.",
    f"inline constexpr float kLogHigh = {header.single(c_high)}, kLogLow = {header.single(c_low)};",
    *packed("kLogTail", tail_ratio, 4), *packed("kShortLog", log_ratio, 3),
    *packed_exp("kLongExp", 6), *packed_exp("kShortExp", 4),
])
