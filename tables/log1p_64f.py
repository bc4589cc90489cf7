#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""log1p for the double-precision inverse hyperbolic functions.

ln(1 + z) = z + z^2 P(z) around 512 reciprocals of 11 bits, of which the first is 1.
"""
import mpmath
import tablegen
from pow_fit import as_double, fit, poly, short, worst

CELLS, EXPONENTS, TERMS = 512, 64, 5

reciprocals = [tablegen.rounded(1 / (1 + mpmath.mpf(i) / CELLS), 11) for i in range(CELLS)]
width = max(
    abs((1 + (i + side / mpmath.mpf(2)) / CELLS) * reciprocals[i] - 1)
    for i in range(CELLS)
    for side in (-1, 1))


def rest(z):
    if abs(z) < mpmath.mpf(2)**-80:  # the middle node is 0 but for a rounding
        return -mpmath.mpf(1) / 2
    return (mpmath.log1p(z) - z) / z**2


terms = [as_double(c) for c in fit(rest, TERMS, width)]
error = worst(lambda z: (z + z**2 * poly(terms, z)) / mpmath.log1p(z) - 1 if z else z, width)


def halves(value):
    high = mpmath.ldexp(mpmath.nint(mpmath.ldexp(value, 40)), -40) + mpmath.mpf(0)
    return f"{float(high).hex()}, {float(as_double(value - high)).hex()}"


body = "\n".join([
    f"// ln(1 + z), |z| <= {short(width)}: relative error {short(error)}.",
    "struct Cell {",
    "  double high, low;  // ln(1 / reciprocal), high a multiple of 2^-40",
    "  double reciprocal;  // near 1 / (1 + i/512), 11 bits",
    "};",
    f"static const Cell kCell[{CELLS}] = {{",
    *[f"    {{{halves(-mpmath.log(r) + 0)}, {float(r).hex()}}}," for r in reciprocals],
    "};",
    "struct Exponent {",
    "  double high, low;  // e ln 2, likewise",
    "  double scale;      // 2^-e",
    "};",
    f"static const Exponent kExponent[{EXPONENTS}] = {{",
    *[f"    {{{halves(e * mpmath.log(2))}, {float(mpmath.ldexp(1, -e)).hex()}}}," for e in range(EXPONENTS)],
    "};",
    "// P, the highest power first.",
    f"static const double kP[{TERMS}] = {{{', '.join(float(c).hex() for c in terms[::-1])}}};",
    "// ln 2, high a multiple of 2^-40.",
    f"static const double kLn2[2] = {{{halves(mpmath.log(2))}}};",
])
tablegen.main("kernels/hyper/generated/log1p_64f_table.h", __file__, body)
