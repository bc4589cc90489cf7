#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The bits of 1/(2 pi) that a product with a double needs, as bytes, least significant first.

A double is m 2^(8 b + s) with 53 bits of m and 0 <= s < 8. The product modulo 1 needs the bits from
2^-(8 b + 1) on, as many as the caller wants words: 32 bytes at most. b goes from -7 to 121.

Also pi/2 in parts, by which the remaining fraction is multiplied.
"""
import mpmath

from shared import header

FIRST, LAST, WINDOW = -7, 121, 32
COUNT = LAST + WINDOW - FIRST

mpmath.mp.prec = 8 * COUNT + 64
bits = int(mpmath.floor(mpmath.ldexp(1 / (2 * mpmath.pi), 8 * (LAST + WINDOW))))
data = [f"0x{byte:02x}" for byte in bits.to_bytes(COUNT, "little")]

header.main("kernels/trig/generated/inverse_two_pi_table.h", [
    f"// floor(2^{8 * (LAST + WINDOW)} / (2 pi)): the byte of 2^-(8 b + 8) is at kFirstByte - b.",
    f"constexpr int32_t kFirstByte = {LAST + WINDOW - 1};",
    *header.array(f"uint8_t kInverseTwoPi[{COUNT}]", data),
    "",
    "// pi/2 in parts of 26, 26, 53 bits",
    "inline constexpr double kHalfPi[3] ="
    f" {header.doubles(header.parts(mpmath.pi / 2, (26, 26, 53)))};",
])
