#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables and polynomials of the single-precision powers.

x87 part: log2(1 + z) = z Q(z) around 257 reciprocals; 2^r = c2 ((r + c1/c2) r + c0/c2) with c2
multiplied into 256 powers. Packed part: logarithm by s = (m - 1) / (m + 1), 2^r by one polynomial.
"""
import mpmath
import tablegen
from pow_fit import as_double, as_single, exp2_ratio, fit, log2_ratio, poly, short, worst

CELLS, POWERS = 256, 256

reciprocals = [as_single(1 / (1 + mpmath.mpf(i) / CELLS)) for i in range(CELLS + 1)]
cell_width = max(
    abs((1 + (i + side) / mpmath.mpf(CELLS)) * reciprocals[i] - 1)
    for i in range(CELLS + 1)
    for side in (mpmath.mpf(-1) / 2, mpmath.mpf(1) / 2))
log_terms = [as_double(c) for c in fit(log2_ratio, 4, cell_width)]
log_error = worst(lambda z: poly(log_terms, z) / log2_ratio(z) - 1, cell_width)

half_step = mpmath.mpf(1) / (2 * POWERS)
exp_terms = fit(lambda r: mpmath.power(2, r), 3, half_step)
c2 = as_double(exp_terms[2])
d1 = as_double(exp_terms[1] / exp_terms[2])
# c0 is 1 as far as doubles go: powers of two must come out exact.
while as_double(c2 * as_double(1 / c2)) != 1:
    c2 += mpmath.ldexp(1, -55)
d0 = as_double(1 / c2)
exp_error = worst(lambda r: c2 * ((r + d1) * r + d0) / mpmath.power(2, r) - 1, half_step)

# ---- Packed: m in [sqrt(1/2), sqrt(2)), so |s| <= 0.17158
S2 = (3 - 2 * mpmath.sqrt(2))**2


def tail_ratio(s2):
    """(log2(m) - 2/ln(2) s) / s^3"""
    if s2 == 0:
        return 2 / mpmath.log(2) / 3
    s = mpmath.sqrt(s2)
    return (2 * mpmath.atanh(s) - 2 * s) / mpmath.log(2) / s**3


def log_ratio(s2):
    """log2(m) / s"""
    return 2 / mpmath.log(2) + s2 * tail_ratio(s2)


def fit_from_zero(function, count):
    """The same on [0, S2]."""
    shifted = fit(lambda v: function(v + S2 / 2), count, S2 / 2)
    return mpmath.taylor(lambda v: poly(shifted, v - S2 / 2), 0, count - 1)


C = 2 / mpmath.log(2)
c_high = tablegen.rounded(C, 12)
c_low = as_single(C - c_high)
tail_terms = [as_single(c) for c in fit_from_zero(tail_ratio, 4)]
tail_error = worst(lambda v: poly(tail_terms, v + S2 / 2) / tail_ratio(v + S2 / 2) - 1, S2 / 2)
short_log_terms = [as_single(c) for c in fit_from_zero(log_ratio, 3)]
short_log_error = worst(
    lambda v: poly(short_log_terms, v + S2 / 2) / log_ratio(v + S2 / 2) - 1, S2 / 2)


def exp_fit(count, half_width):
    terms = [as_single(c) for c in fit(exp2_ratio, count, half_width)]
    error = worst(lambda r: (1 + r * poly(terms, r)) / mpmath.power(2, r) - 1, half_width)
    return terms, error


long_terms, long_error = exp_fit(6, mpmath.mpf("0.501"))
short_terms, short_error = exp_fit(4, mpmath.mpf("0.501"))


def singles(values):
    return ", ".join(float(v).hex() + "f" for v in values)


def doubles(values):
    return ", ".join(float(v).hex() for v in values)


body = "\n".join([
    f"// log2(1 + z) = z Q(z), |z| <= {short(cell_width)}: relative error {short(log_error)}.",
    f"// 2^r on |r| <= 1/{2 * POWERS}: relative error {short(exp_error)}.",
    "static const struct {",
    f"  struct {{ double reciprocal, log2; }} cell[{CELLS + 1}];  // near 1 / (1 + i/{CELLS}), 24 bits",
    "  double exponent[256];   // of each exponent field",
    f"  double power[{POWERS}];      // c2 2^(j/{POWERS})",
    "  double q[4];            // Q, lowest first",
    "  double d1, d0;          // c1/c2, 1/c2",
    f"  double shifter;         // 1.5 2^44: its ulp is 1/{POWERS}",
    "} static_const_table = {",
    "    {",
    *[f"        {{{float(r).hex()}, {float(as_double(-mpmath.log(r, 2)) + 0.0).hex()}}}," for r in reciprocals],
    "    },",
    "    {",
    *[f"        {float(field - 127).hex()}," for field in range(256)],
    "    },",
    "    {",
    *[f"        {tablegen.double(c2 * mpmath.power(2, mpmath.mpf(j) / POWERS))}," for j in range(POWERS)],
    "    },",
    f"    {{{doubles(log_terms)}}},",
    f"    {float(d1).hex()}, {float(d0).hex()},",
    "    0x1.8p+44,",
    "};",
    "",
    "// 2/ln(2) with 12 bits and the rest.",
    f"static const float kLogHigh = {singles([c_high])}, kLogLow = {singles([c_low])};",
    f"// (log2(m) - 2/ln(2) s) / s^3 in s^2: relative error {short(tail_error)}.",
    f"static const float kLogTail[4] = {{{singles(tail_terms)}}};",
    f"// log2(m) / s in s^2: relative error {short(short_log_error)}.",
    f"static const float kShortLog[3] = {{{singles(short_log_terms)}}};",
    f"// (2^r - 1) / r, |r| <= 0.501: relative error of 2^r {short(long_error)}.",
    f"static const float kLongExp[6] = {{{singles(long_terms)}}};",
    f"// The same: {short(short_error)}.",
    f"static const float kShortExp[4] = {{{singles(short_terms)}}};",
])
tablegen.main("kernels/explog/generated/pow_32f_table.h", __file__, body)
