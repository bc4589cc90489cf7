# SPDX-License-Identifier: MIT
"""Cells of the double-precision complementary error function, and powers of e.

Near the point p of its cell erfc(a) = erfc(p) e^-(a - p)(a + p) g(a)/g(p), g(a) = e^(a^2) erfc(a).
"""
import mpmath
from mpmath import mpf

from shared import fits, header

STEPS = 128  # grid of the exponents
PER_BINADE, FAR_PER_BINADE, FAR = 64, 256, 16  # cells of 1 + a, and from where on they are narrow
LAST = mpf(float.fromhex("0x1.b39dc41e48bfdp+4"))  # the first argument with result 0
FAR_SCALE = 600


def scaled(a):
    return mpmath.exp(a * a) * mpmath.erfc(a)


def ends():
    binade = mpf(1)
    while True:
        count = FAR_PER_BINADE if binade >= FAR else PER_BINADE
        for i in range(count):
            low = binade * (1 + mpf(i) / count) - 1
            if low > LAST:
                return
            yield low, binade * (1 + mpf(i + 1) / count) - 1
        binade *= 2


worst, widest, rows = mpf(0), mpf(0), []
for low, high in ends():
    point, half = (low + high) / 2, (high - low) / 2
    assert header.rounded(point, 24) == point
    g = scaled(point)
    slope = 2 * point - 2 / mpmath.sqrt(mpmath.pi) / g
    curve = lambda r: scaled(point + r) / g
    row = fits.stored(fits.fit(fits.quotient(curve, slope), -half, half, 7), [53] * 4 + [24] * 3)
    worst = max([worst] + [abs((1 + r * fits.value(row, r)) / curve(r) - 1)
                           for r in fits.points(-half, half, 8)])
    widest = max(widest, half * (point + high))
    scale = mpmath.ldexp(1, FAR_SCALE if low >= FAR - 1 else 0) * mpmath.exp(-point**2) * g
    head, tail = header.two_doubles(scale)
    rows.append(header.braced([*map(header.single, (*row[:3:-1], point)),
                               *map(header.double, (*row[3::-1], tail, head))]))
far_cell = sum(1 for low, _ in ends() if low < FAR - 1)

reach = int(mpmath.ceil(widest * STEPS)) + 1
powers = []
for j in range(-reach, reach + 1):
    head, tail = header.parts(mpmath.exp(-mpf(j) / STEPS), (53, 24))
    powers.append(header.braced([header.double(head), header.single(tail),
                                 header.single(mpf(j) / STEPS)]))
half = mpf(1) / (2 * STEPS) * (1 + mpmath.ldexp(1, -12))  # the sum may round twice
exponential = fits.stored(fits.fit(lambda v: (mpmath.exp(-v) - 1 + v) / v**2, -half, half, 4), 53)
power_worst = fits.worst(lambda v: 1 - v + v * v * fits.value(exponential, v) - mpmath.exp(-v),
                         -half, half, 256)

header.main("kernels/erf/generated/erfc_64f_table.h", [
    f"// {PER_BINADE} cells to a binade of 1 + a, from {FAR} on {FAR_PER_BINADE}, r = a - point:",
    "// erfc(a) = (head + tail) e^-r(a + point) (1 + r (d1 + r (d2 + ... + r d7))), relative error at",
    f"// most {header.digits(worst)}. |r (a + point)| is at most {header.digits(widest)}. Heads and tails"
    " from kFarCell on are", f"// multiplied by 2^{FAR_SCALE}.",
    "struct Cell {",
    "  float d7, d6, d5, point;",
    "  double d4, d3, d2, d1, tail, head;",
    "};",
    f"constexpr int32_t kFarCell = {far_cell}, kFarScale = {FAR_SCALE};",
    *header.array(f"Cell kCell[{len(rows)}]", rows),
    f"// e^-point, point = j/{STEPS}; kPower[kPowerZero] is for j = 0.",
    "struct Power {",
    "  double head;",
    "  float tail, point;",
    "};",
    f"constexpr int32_t kPowerZero = {reach};",
    *header.array(f"Power kPower[{len(powers)}]", powers),
    f"// e^-v - 1 + v = v^2 (e[3] + v (e[2] + v (e[1] + v e[0]))) for |v| <= 1/{2 * STEPS},",
    f"// off by at most {header.digits(power_worst)}.",
    f"inline constexpr double kExponential[4] = {header.doubles(exponential[::-1])};",
])
