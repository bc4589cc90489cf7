#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Polynomials of the single-precision inverse error function, one set of cells for all grades.

The variable u is |x| in the cells from w = 1/2 on and w = 1 - |x| in the others, so that it is a
single without any error.
"""
import erfinv
import tablegen

FIRST, CELLS = 24, 16
cells = erfinv.cells(FIRST, CELLS)


def polynomials(name, element, degree, bits):
    rows, worst = [], 0
    for k, cell in enumerate(cells):
        central = k >= (FIRST - 1) * CELLS
        variable = (lambda a: a) if central else (lambda a: 1 - a)
        row = [tablegen.rounded(c, bits) for c in cell.fit(degree, variable)]
        worst = max(worst, cell.error(row, variable))
        rows.append("{" + ", ".join(float(c).hex().replace(".0000000000000p", ".0p")
                                    + ("f" if bits == 24 else "") for c in row[::-1]) + "}")
    return [f"// Relative error at most {erfinv.power(worst)}.",
            f"alignas(16) static const {element} {name}[{len(rows)}][{degree + 1}] = {{",
            *[f"    {row}," for row in rows], "};"]


body = "\n".join([
    f"// Polynomials in u, highest power first, of cells around w = 2^-e (1 + j/{CELLS}), from",
    f"// w = 2^-{FIRST} up to 1; u is |x| in the last {CELLS + 1} cells and w = 1 - |x| in the others.",
    f"constexpr int kFirstBinade = -{FIRST}, kCellBits = {CELLS.bit_length() - 1};",
    *polynomials("kQuintic", "double", 5, 53),
    *polynomials("kCubic", "float", 3, 24),
    *polynomials("kLinear", "float", 1, 24)])
tablegen.main("kernels/erf/generated/erfinv_32f_table.h", __file__, body)
