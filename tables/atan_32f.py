# SPDX-License-Identifier: MIT
"""Arctangent of single-precision arrays: quadratics for the best grade, polynomials for the others.

The packed polynomials were fitted with Sollya (remez in z = u^2, weighted for the relative error,
then rounded to singles); their errors are measured here.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, LAST = 512, 512
POLYNOMIALS = {
    "kAtan21": ["0x1.7ed232p-9", "-0x1.0c2c14p-6", "0x1.61fddap-5", "-0x1.3556b6p-4",
                "0x1.b4e12ap-4", "-0x1.230adcp-3", "0x1.9978f4p-3", "-0x1.5554dcp-2"],
    "kAtan11": ["0x1.96fbb6p-6", "-0x1.816cdap-4", "0x1.7e986ep-3", "-0x1.541a14p-2"],
}  # highest power first

rows, error = fits.odd_quadratics(mpmath.atan, 1 / mpf(-3), CELLS, LAST)
body = [
    f"// atan(u) / u by cells of width 1/{CELLS}, k = round({CELLS} u). Relative error at most"
    f" {header.digits(error)}.",
    "struct Quadratic {",
    "  double c2, c1, c0;",
    "};",
    f"constexpr int kCells = {CELLS};",
    *header.array(f"Quadratic kQuadratic[{LAST + 1}]", [header.doubles(row[::-1]) for row in rows]),
]
for name, literals in POLYNOMIALS.items():
    terms = [mpf(float.fromhex(text)) for text in literals]
    error = fits.odd_error(mpmath.atan, terms[::-1], mpf(1))
    body += [
        f"// atan(u) = u + u^3 P(u^2) for 0 <= u <= 1. Relative error at most {header.digits(error)}.",
        f"inline constexpr float {name}[{len(terms)}] = {header.singles(terms)};",
    ]
header.main("kernels/trig/generated/atan_32f_table.h", body)
