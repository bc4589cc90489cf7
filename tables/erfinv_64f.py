# SPDX-License-Identifier: MIT
"""Polynomials of the double-precision inverse error function, around the centres of the cells."""
from shared import fits, header

FIRST, CELLS, DEGREE = 53, 8, 11

rows, worst = [], 0
for cell in fits.inverse_error_cells(FIRST, CELLS):
    variable = lambda a: a - cell.centre
    row = cell.fit(DEGREE, variable)
    high = fits.stored(row, 53)
    low = fits.stored([c - h for c, h in zip(row[:2], high)], 24)
    worst = max(worst, cell.error([high[0] + low[0], high[1] + low[1], *high[2:]], variable))
    rows.append(header.braced([header.double(cell.centre), header.doubles(high[:2]),
                               header.singles(low), header.doubles(high[:1:-1])]))

header.main("kernels/erf/generated/erfinv_64f_table.h", [
    f"// Polynomials in t = |x| - centre of cells around w = 2^-e (1 + j/{CELLS}), centre 1 - w, from",
    f"// w = 2^-{FIRST} up to 1. Relative error, with the coefficients as they stand, at most",
    f"// {header.digits(worst)}.",
    f"constexpr int kFirstBinade = -{FIRST}, kCellBits = {CELLS.bit_length() - 1};",
    "struct Cell {",
    "  double centre;",
    "  double c[2];     // of 1 and t",
    "  float c_low[2];  // what rounding took off them",
    f"  double upper[{DEGREE - 1}];  // of t^{DEGREE} to t^2",
    "};",
    *header.array(f"Cell kCell[{len(rows)}]", rows),
])
