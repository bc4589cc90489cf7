# SPDX-License-Identifier: MIT
"""Constants of the reductions of extended numbers by multiples of pi/2 and of degrees."""
import mpmath

from shared import header

# floor(2^16640 2/pi): noxreduce_pi04l takes 288 bits from at most 2^-16351 of it on.
WORDS = 520
with mpmath.workprec(32 * WORDS + 64):
    inverse = int(mpmath.floor(mpmath.ldexp(2 / mpmath.pi, 32 * WORDS)))
degree = header.cut(mpmath.pi / 180, 32)
half_pi = int(mpmath.floor(mpmath.ldexp(mpmath.pi / 2, 127)))


def words(number, shifts):
    return [f"0x{number >> shift & 0xFFFFFFFF:08x}" for shift in shifts]


header.main("extended/generated/trig_table.h", [
    "// pi/180 in parts of 32 and 53 bits.",
    f"inline constexpr double _nox_degree[2] = {header.doubles((degree, mpmath.pi / 180 - degree))};",
    "",
    "// pi/2 in words, lowest first, the uppermost bit worth 1.",
    f"inline constexpr uint32_t _nox_half_pi[4] = {header.braced(words(half_pi, range(0, 128, 32)))};",
    "",
    "// 2/pi in words, the first worth 2^-32.",
    *header.array(f"uint32_t _nox_inverse_half_pi[{WORDS}]",
                  words(inverse, range(32 * (WORDS - 1), -1, -32))),
], ["stdint.h"])
