#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Polynomials of the double-precision inverse error function, around the centres of the cells."""
import erfinv
import tablegen

FIRST, CELLS, DEGREE = 53, 8, 11


def double(value):
    return float(value).hex().replace(".0000000000000p", ".0p")


def single(value):
    return f"{double(value)}f"


rows, worst = [], 0
for cell in erfinv.cells(FIRST, CELLS):
    variable = lambda a: a - cell.centre
    row = cell.fit(DEGREE, variable)
    high = [tablegen.rounded(c, 53) for c in row]
    low = [tablegen.rounded(c - h, 24) for c, h in zip(row[:2], high)]
    row = [high[0] + low[0], high[1] + low[1], *high[2:]]
    worst = max(worst, cell.error(row, variable))
    rows.append(f"{{{double(cell.centre)}, {{{', '.join(map(double, high[:2]))}}}, "
                f"{{{', '.join(map(single, low))}}}, {{{', '.join(map(double, high[:1:-1]))}}}}}")

body = "\n".join([
    f"// Polynomials in t = |x| - centre of cells around w = 2^-e (1 + j/{CELLS}), centre 1 - w, from",
    f"// w = 2^-{FIRST} up to 1. Relative error, with the coefficients as they stand, at most",
    f"// {erfinv.power(worst)}.",
    f"constexpr int kFirstBinade = -{FIRST}, kCellBits = {CELLS.bit_length() - 1};",
    "struct Cell {",
    "  double centre;",
    "  double c[2];     // of 1 and t",
    "  float c_low[2];  // what rounding took off them",
    f"  double upper[{DEGREE - 1}];  // of t^{DEGREE} to t^2",
    "};",
    f"static const Cell kCell[{len(rows)}] = {{",
    *[f"    {row}," for row in rows],
    "};"])
tablegen.main("kernels/erf/generated/erfinv_64f_table.h", __file__, body)
