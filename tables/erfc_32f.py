# SPDX-License-Identifier: MIT
"""Polynomials of the single-precision complementary error function by cells."""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS, LAST = 32, 322  # the last holds the first argument whose result is 0
PACKED_LAST = 294
HALF = mpf(1) / (2 * CELLS)


def scaled(a):
    return mpmath.exp(a * a) * mpmath.erfc(a)


worst, worst_packed, rows = mpf(0), mpf(0), []
for k in range(LAST + 1):
    centre, low = mpf(k) / CELLS, -HALF if k else mpf(0)
    centre_value = mpmath.erfc(centre)
    curve = lambda r: mpmath.erfc(centre + r) / centre_value
    slope = -2 / mpmath.sqrt(mpmath.pi) * mpmath.exp(-centre**2) / centre_value
    row = fits.stored(fits.fit(fits.quotient(curve, slope), low, HALF, 7), [53] * 3 + [24] * 4)
    scale = header.rounded(centre_value, 53)
    for r in fits.points(low, HALF):
        error = scale * (1 + r * fits.value(row, r)) / mpmath.erfc(centre + r) - 1
        worst = max(worst, abs(error))
        if k <= PACKED_LAST:
            worst_packed = worst
    rows.append(header.braced([header.singles(row[:2:-1]),
                               *map(header.double, (*row[2::-1], scale))]))

packed, cubic, linear = [], mpf(0), mpf(0)
for k in range(PACKED_LAST + 1):
    centre, low = mpf(k) / CELLS, -HALF if k else mpf(0)
    g = scaled(centre)
    slope = 2 * centre - 2 / mpmath.sqrt(mpmath.pi) / g
    curve = lambda r: scaled(centre + r) / g
    row = fits.stored(fits.fit(fits.quotient(curve, slope), low, HALF, 3), 24)
    for r in fits.points(low, HALF):
        cubic = max(cubic, abs((1 + r * fits.value(row, r)) / curve(r) - 1))
        linear = max(linear, abs((1 + r * row[0]) / curve(r) - 1))
    packed.append(f"{{{header.singles((mpmath.erfc(centre), *row))}}}")

widest = HALF * (2 * PACKED_LAST + 1) / CELLS


def power(name, count):
    ratio = fits.quotient(lambda w: mpmath.exp(-w), mpf(-1))
    terms = fits.stored(fits.fit(ratio, -widest, widest, count), 24)
    error = fits.worst(lambda w: (1 + w * fits.value(terms, w)) * mpmath.exp(w) - 1, -widest, widest,
                       256)
    return [f"// Relative error at most {header.digits(error)}.",
            f"inline constexpr float {name}[{count}] = {header.singles(terms[::-1])};"]


header.main("kernels/erf/generated/erfc_32f_table.h", [
    f"// erfc(a) by cells of width 1/{CELLS}, k = round({CELLS} a), r = a - k/{CELLS}:",
    "// scale (1 + r (d1 + r (d2 + r (d3 + r (s[3] + ... + r s[0]))))). Relative error at most "
    f"{header.digits(worst)},",
    f"// {header.digits(worst_packed)} up to k = {PACKED_LAST}.",
    "struct Septic {",
    "  float s[4];",
    "  double d3, d2, d1, scale;",
    "};",
    *header.array(f"Septic kSeptic[{len(rows)}]", rows),
    f"// The same cells: erfc(a) = c0 e^-r(a + k/{CELLS}) (1 + c1 r + c2 r^2 + c3 r^3). Relative error",
    f"// of the last factor at most {header.digits(cubic)}, of 1 + c1 r at most "
    f"{header.digits(linear)}.",
    "struct Row {",
    "  float c[4];",
    "};",
    *header.array(f"Row kRow[{len(packed)}]", packed),
    f"// e^-w = 1 + w P(w) for |w| <= {header.digits(widest)}, highest coefficient first.",
    *power("kPower21", 5), *power("kPower11", 3),
])
