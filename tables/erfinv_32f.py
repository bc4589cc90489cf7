# SPDX-License-Identifier: MIT
"""Polynomials of the single-precision inverse error function, one set of cells for all grades.

The variable u is |x| in the cells from w = 1/2 on and w = 1 - |x| in the others, so that it is a
single without any error.
"""
from shared import fits, header

FIRST, CELLS = 24, 16
cells = fits.inverse_error_cells(FIRST, CELLS)


def polynomials(declaration, degree, bits, literals):
    rows, worst = [], 0
    for k, cell in enumerate(cells):
        central = k >= (FIRST - 1) * CELLS
        variable = (lambda a: a) if central else (lambda a: 1 - a)
        row = fits.stored(cell.fit(degree, variable), bits)
        worst = max(worst, cell.error(row, variable))
        rows.append(literals(row[::-1]))
    return [f"// Relative error at most {header.digits(worst)}.",
            *header.array(f"{declaration}[{len(rows)}][{degree + 1}]", rows)]


header.main("kernels/erf/generated/erfinv_32f_table.h", [
    f"// Polynomials in u, highest power first, of cells around w = 2^-e (1 + j/{CELLS}), from",
    f"// w = 2^-{FIRST} up to 1; u is |x| in the last {CELLS + 1} cells and w = 1 - |x| in the others.",
    f"constexpr int kFirstBinade = -{FIRST}, kCellBits = {CELLS.bit_length() - 1};",
    *polynomials("double kQuintic", 5, 53, header.doubles),
    *polynomials("float kCubic", 3, 24, header.singles),
    *polynomials("float kLinear", 1, 24, header.singles),
])
