# SPDX-License-Identifier: MIT
"""Sines and polynomials of the double-precision sine and cosine at once and of the extended functions.

x = n pi/128 + r, |r| <= pi/256. A table holds sin(j pi/128) over a turn and a quarter, so that the
cosine stands 64 entries on, as two doubles: the second goes 53 bits beyond the first, and their sum
rounds to the sine's nearest extended number. Of r, polynomials in u = r^2 give
  sin r = r (1 + u s(u)),  cos r = 1 + u c(u),  for the doubles 1 - u c(u).
"""
import mpmath

from shared import fits, header

STEP = mpmath.pi / 128
U = (STEP / 2) ** 2


def sine_part(u):
    r = mpmath.sqrt(u)
    return (mpmath.sin(r) / r - 1) / u


def cosine_part(u):
    return -2 * mpmath.sin(mpmath.sqrt(u) / 2)**2 / u


def less_cosine_part(u):
    return -cosine_part(u)


class Polynomial:
    def __init__(self, name, function, count, all_nodes, meaning):
        nodes = fits.nodes_with_zero(U, count)
        self.name, self.count = name, count
        self.terms = fits.one_after_another(
            function, count, lambda known: nodes if all_nodes else nodes[:count - known], all_nodes)
        error = max(abs(u * (function(u) - fits.value(self.terms, u)))
                    for u in fits.points(0, U, 512)[1:])
        self.comment = f"  double {name}[{count}];{meaning} error {header.digits(error, 3)}"


polynomials = [
    Polynomial("s53", sine_part, 3, 1, "       // relative to sin r,"),
    Polynomial("c53", less_cosine_part, 3, 1, "       // of 1 - cos r,"),
    Polynomial("s50", sine_part, 2, 1, "       //"),
    Polynomial("c50", less_cosine_part, 2, 1, "       //"),
    Polynomial("s", sine_part, 3, 0, "         // the extended functions':"),
    Polynomial("c", cosine_part, 3, 0, "         //"),
]

# The first two parts times 23 bits of n are exact. All are positive: zero times a negative one would
# turn a negative zero argument positive.
p1 = header.cut(STEP, 41)
p2 = header.cut(STEP - p1, 41)
p3 = header.cut(STEP - p1 - p2, 53)


def sine(j):
    if j == 0:
        return "{-0.0, -0.0}"  # keeps the sign of a zero argument
    value = 0 if j % 128 == 0 else mpmath.sin(j * STEP)
    pair = header.two_doubles(value)
    assert header.rounded(sum(pair), 64) == header.rounded(value, 64)
    return header.doubles(pair)


header.main("core/generated/sines_table.h", [
    f"// Error of p1 + p2 + p3: {header.digits(p1 + p2 + p3 - STEP, 3)}.",
    "struct SineTable {",
    "  double inv_step;      // 128/pi",
    "  double p1, p2, p3;    // pi/128 in parts of 41, 41 and 53 bits",
    "  // Polynomials for |r| <= pi/256",
    *[polynomial.comment for polynomial in polynomials],
    "  double sine[320][2];  // sin(j pi/128), four entries a cache line",
    "  float one;",
    "};",
    "alignas(64) inline constexpr SineTable kSines = {",
    *[f"    {header.double(value)}," for value in (1 / STEP, p1, p2, p3)],
    *[f"    {header.doubles(polynomial.terms)}," for polynomial in polynomials],
    *header.block(map(sine, range(320)), "the first keeps the sign of a zero"),
    "    1.0f,",
    "};",
])
