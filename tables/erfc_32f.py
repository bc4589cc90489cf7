#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Polynomials of the single-precision complementary error function by cells."""
import mpmath
import cells
import tablegen

CELLS, LAST = 32, 322  # the last holds the first argument whose result is 0
PACKED_LAST = 294
mpmath.mp.prec = 200


def scaled(a):
    return mpmath.exp(a * a) * mpmath.erfc(a)


half = mpmath.mpf(1) / (2 * CELLS)
worst = mpmath.mpf(0)
rows = []
for k in range(LAST + 1):
    centre = mpmath.mpf(k) / CELLS
    centre_value = mpmath.erfc(centre)
    low = -half if k else mpmath.mpf(0)
    curve = lambda r: mpmath.erfc(centre + r) / centre_value
    slope = -2 / mpmath.sqrt(mpmath.pi) * mpmath.exp(-centre**2) / centre_value
    row = cells.stored(cells.fit(cells.quotient(curve, slope), low, half, 6), [53] * 2 + [24] * 5)
    scale = tablegen.rounded(centre_value, 53)
    for r in cells.points(low, half):
        error = scale * (1 + r * cells.value(row, r)) / mpmath.erfc(centre + r) - 1
        worst = max(worst, abs(error))
    singles = [cells.single(c) for c in row[:1:-1]]
    doubles = [tablegen.double(c) for c in (row[1], row[0], scale)]
    rows.append(f"    {{{{{', '.join(singles)}}}, {', '.join(doubles)}}},")

packed, cubic, linear = [], mpmath.mpf(0), mpmath.mpf(0)
for k in range(PACKED_LAST + 1):
    centre = mpmath.mpf(k) / CELLS
    low = -half if k else mpmath.mpf(0)
    g = scaled(centre)
    slope = 2 * centre - 2 / mpmath.sqrt(mpmath.pi) / g
    curve = lambda r: scaled(centre + r) / g
    row = cells.stored(cells.fit(cells.quotient(curve, slope), low, half, 2), [24] * 3)
    for r in cells.points(low, half):
        cubic = max(cubic, abs((1 + r * cells.value(row, r)) / curve(r) - 1))
        linear = max(linear, abs((1 + r * row[0]) / curve(r) - 1))
    literals = [cells.single(c) for c in (mpmath.erfc(centre), *row)]
    packed.append(f"    {{{{{', '.join(literals)}}}}},")

widest = half * (2 * PACKED_LAST + 1) / CELLS
powers = {}
for name, degree in (("kPower21", 5), ("kPower11", 3)):
    ratio = cells.quotient(lambda w: mpmath.exp(-w), mpmath.mpf(-1))
    fitted = cells.stored(cells.fit(ratio, -widest, widest, degree - 1), [24] * degree)
    worst_power = max(abs((1 + w * cells.value(fitted, w)) * mpmath.exp(w) - 1)
                      for w in cells.points(-widest, widest, 256))
    powers[name] = [cells.single(c) for c in reversed(fitted)], mpmath.nstr(worst_power, 4)

body = "\n".join([
    f"// erfc(a) by cells of width 1/{CELLS}, k = round({CELLS} a), r = a - k/{CELLS}:",
    "// scale (1 + r (d1 + r (d2 + r (s[4] + ... + r s[0])))). Relative error at most "
    f"{mpmath.nstr(worst, 4)}.",
    "struct Septic {",
    "  float s[5];",
    "  double d2, d1, scale;",
    "};",
    f"static const Septic kSeptic[{len(rows)}] = {{",
    *rows,
    "};",
    f"// The same cells: erfc(a) = c0 e^-r(a + k/{CELLS}) (1 + c1 r + c2 r^2 + c3 r^3). Relative error",
    f"// of the last factor at most {mpmath.nstr(cubic, 4)}, of 1 + c1 r at most "
    f"{mpmath.nstr(linear, 4)}.",
    "struct Row {",
    "  float c[4];",
    "};",
    f"alignas(16) static const Row kRow[{len(packed)}] = {{",
    *packed,
    "};",
    f"// e^-w = 1 + w P(w) for |w| <= {mpmath.nstr(widest, 4)}, highest coefficient first.",
    *[line for name, (literals, worst_power) in powers.items() for line in (
        f"// Relative error at most {worst_power}.",
        f"static const float {name}[{len(literals)}] = {{{', '.join(literals)}}};")]])
tablegen.main("kernels/erf/generated/erfc_32f_table.h", __file__, body)
