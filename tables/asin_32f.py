# SPDX-License-Identifier: MIT
"""Arcsine of single-precision arrays: quadratics for the best grade, polynomials for the others.

The packed polynomials were fitted with Sollya (remez in z = u^2, weighted for the relative error,
then rounded to singles); their errors are measured here.
"""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, LAST = 1024, 512
POLYNOMIALS = {
    "kAsin21": ["0x1.596d28p-5", "0x1.8c283cp-6", "0x1.747e4ap-5", "0x1.3301e4p-4", "0x1.5555c8p-3"],
    "kAsin11": ["0x1.823f56p-4", "0x1.5209cep-3"],
}  # highest power first

rows, error = fits.odd_quadratics(mpmath.asin, 1 / mpf(6), CELLS, LAST)
body = [
    f"// asin(u) / u by cells of width 1/{CELLS}, k = round({CELLS} u). Relative error at most"
    f" {header.digits(error)}.",
    "struct Quadratic {",
    "  double c2, c1, c0;",
    "};",
    f"constexpr int kCells = {CELLS};",
    *header.array(f"Quadratic kQuadratic[{LAST + 1}]", [header.doubles(row[::-1]) for row in rows]),
]
for name, literals in POLYNOMIALS.items():
    terms = [mpf(float.fromhex(text)) for text in literals]
    error = fits.odd_error(mpmath.asin, terms[::-1], mpf(1) / 2)
    body += [
        f"// asin(u) = u + u^3 P(u^2) for 0 <= u <= 1/2. Relative error at most {header.digits(error)}.",
        f"inline constexpr float {name}[{len(terms)}] = {header.singles(terms)};",
    ]
header.main("kernels/trig/generated/asin_32f_table.h", body)
