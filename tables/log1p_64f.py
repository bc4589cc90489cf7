# SPDX-License-Identifier: MIT
"""log1p for the double-precision inverse hyperbolic functions.

ln(1 + z) = z + z^2 P(z) around 512 reciprocals of 11 bits, of which the first is 1.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, EXPONENTS, TERMS = 512, 64, 5

reciprocals = fits.reciprocals(CELLS, 11, CELLS)
width = fits.reciprocal_reach(reciprocals, CELLS)


def rest(z):
    if abs(z) < mpf(2)**-80:  # the middle node is 0 but for a rounding
        return -mpf(1) / 2
    return (mpmath.log1p(z) - z) / z**2


terms = fits.stored(fits.fit(rest, -width, width, TERMS), 53)
error = fits.worst(
    lambda z: (z + z**2 * fits.value(terms, z)) / mpmath.log1p(z) - 1 if z else z, -width, width)


def halves(value):
    high = header.multiple(value, -40)
    return high, value - high


header.main("kernels/hyper/generated/log1p_64f_table.h", [
    f"// ln(1 + z), |z| <= {header.digits(width)}: relative error {header.digits(error)}.",
    "struct Cell {",
    "  double high, low;  // ln(1 / reciprocal), high a multiple of 2^-40",
    "  double reciprocal;  // near 1 / (1 + i/512), 11 bits",
    "};",
    *header.array(f"Cell kCell[{CELLS}]",
                  [header.doubles((*halves(-mpmath.log(r)), r)) for r in reciprocals]),
    "struct Exponent {",
    "  double high, low;  // e ln 2, likewise",
    "  double scale;      // 2^-e",
    "};",
    *header.array(f"Exponent kExponent[{EXPONENTS}]",
                  [header.doubles((*halves(e * fits.LN2), mpmath.ldexp(1, -e)))
                   for e in range(EXPONENTS)]),
    "// P, the highest power first.",
    f"inline constexpr double kP[{TERMS}] = {header.doubles(terms[::-1])};",
    "// ln 2, high a multiple of 2^-40.",
    f"inline constexpr double kLn2[2] = {header.doubles(halves(fits.LN2))};",
])
