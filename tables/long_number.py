# SPDX-License-Identifier: MIT
"""Constants of the integer arithmetic with 224 bits after the point, cut off there."""
import mpmath

from shared import header


def words(value):
    whole = int(mpmath.floor(mpmath.ldexp(value, 224)))
    return header.braced(f"0x{whole >> 32 * i & 0xFFFFFFFF:08x}" for i in range(7, -1, -1))


header.main("core/generated/long_number_table.h", [
    "struct LongNumber {",
    "  uint32_t word[8];  // the first before the point",
    "};",
    f"inline constexpr LongNumber kLongLn2 = {words(mpmath.ln(2))};",
    f"inline constexpr LongNumber kLongHalfPi = {words(mpmath.pi / 2)};",
])
