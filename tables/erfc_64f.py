#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Cells of the double-precision complementary error function, and powers of e.

Near the point p of its cell erfc(a) = erfc(p) e^-(a - p)(a + p) g(a)/g(p), g(a) = e^(a^2) erfc(a).
"""
import mpmath
import cells
import tablegen

STEPS = 128  # grid of the exponents
PER_BINADE, FAR_PER_BINADE, FAR = 64, 256, 16  # cells of 1 + a, and from where on they are narrow
LAST = mpmath.mpf(float.fromhex("0x1.b39dc41e48bfdp+4"))  # the first argument with result 0
FAR_SCALE = 600
mpmath.mp.prec = 240


def scaled(a):
    return mpmath.exp(a * a) * mpmath.erfc(a)


def ends():
    binade = mpmath.mpf(1)
    while True:
        count = FAR_PER_BINADE if binade >= FAR else PER_BINADE
        for i in range(count):
            low = binade * (1 + mpmath.mpf(i) / count) - 1
            if low > LAST:
                return
            yield low, binade * (1 + mpmath.mpf(i + 1) / count) - 1
        binade *= 2


worst, widest = mpmath.mpf(0), mpmath.mpf(0)
rows = []
for low, high in ends():
    point, half = (low + high) / 2, (high - low) / 2
    g = scaled(point)
    slope = 2 * point - 2 / mpmath.sqrt(mpmath.pi) / g
    curve = lambda r: scaled(point + r) / g
    row = cells.stored(cells.fit(cells.quotient(curve, slope), -half, half, 6), [53] * 4 + [24] * 3)
    worst = max([worst] + [abs((1 + r * cells.value(row, r)) / curve(r) - 1)
                           for r in cells.points(-half, half, 8)])
    widest = max(widest, half * (point + high))
    scale = mpmath.ldexp(1, FAR_SCALE if low >= FAR - 1 else 0) * mpmath.exp(-point**2) * g
    head = tablegen.rounded(scale, 53)
    singles = [cells.single(c) for c in (*row[:3:-1], point)]
    doubles = [tablegen.double(c) for c in (*row[3::-1], scale - head, head)]
    assert float.fromhex(singles[-1][:-1]) == point
    rows.append(f"    {{{', '.join(singles + doubles)}}},")
far_cell = sum(1 for low, _ in ends() if low < FAR - 1)

reach = int(mpmath.ceil(widest * STEPS)) + 1
powers = []
for j in range(-reach, reach + 1):
    power = mpmath.exp(-mpmath.mpf(j) / STEPS)
    head = tablegen.rounded(power, 53)
    powers.append(f"    {{{tablegen.double(head)}, {cells.single(power - head)}, "
                  f"{cells.single(mpmath.mpf(j) / STEPS)}}},")
half = mpmath.mpf(1) / (2 * STEPS) * (1 + mpmath.ldexp(1, -12))  # the sum may round twice
exponential = cells.stored(
    cells.fit(lambda v: (mpmath.exp(-v) - 1 + v) / v**2, -half, half, 3), [53] * 4)
power_worst = max(abs(1 - v + v * v * cells.value(exponential, v) - mpmath.exp(-v))
                  for v in cells.points(-half, half, 256))

body = "\n".join([
    f"// {PER_BINADE} cells to a binade of 1 + a, from {FAR} on {FAR_PER_BINADE}, r = a - point:",
    "// erfc(a) = (head + tail) e^-r(a + point) (1 + r (d1 + r (d2 + ... + r d7))), relative error at",
    f"// most {mpmath.nstr(worst, 4)}. |r (a + point)| is at most {mpmath.nstr(widest, 4)}. Heads and "
    f"tails from kFarCell on are multiplied by 2^{FAR_SCALE}.",
    "struct Cell {",
    "  float d7, d6, d5, point;",
    "  double d4, d3, d2, d1, tail, head;",
    "};",
    f"constexpr int32_t kFarCell = {far_cell}, kFarScale = {FAR_SCALE};",
    f"static const Cell kCell[{len(rows)}] = {{",
    *rows,
    "};",
    f"// e^-point, point = j/{STEPS}; kPower[kPowerZero] is for j = 0.",
    "struct Power {",
    "  double head;",
    "  float tail, point;",
    "};",
    f"constexpr int32_t kPowerZero = {reach};",
    f"static const Power kPower[{len(powers)}] = {{",
    *powers,
    "};",
    f"// e^-v - 1 + v = v^2 (e[3] + v (e[2] + v (e[1] + v e[0]))) for |v| <= 1/{2 * STEPS}, off by at "
    f"most {mpmath.nstr(power_worst, 4)}.",
    "static const double kExponential[4] = {",
    *[f"    {tablegen.double(c)}," for c in reversed(exponential)],
    "};"])
tablegen.main("kernels/erf/generated/erfc_64f_table.h", __file__, body)
