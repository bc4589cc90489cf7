# SPDX-License-Identifier: MIT
"""Short seeds for 1/sqrt(y), 1 <= y <= 4, of the hypotenuse and of the extended square root.

A seed is the exact value rounded to a multiple of 2^-11, so its square has at most 22 bits. One
coupled Newton step takes its relative error e to about 1.5 e^2.
"""
import mpmath
from mpmath import mpf

from shared import header


def root_seeds():
    """Of 1 + j/256, then of 2 + j/128, then of 4."""
    ends = [1 + mpf(j) / 256 for j in range(256)]
    ends += [2 * end for end in ends] + [mpf(4)]
    return ends, [header.multiple(1 / mpmath.sqrt(end), -11) for end in ends]


if __name__ == "__main__":
    ends, seeds = root_seeds()
    # seed sqrt(y) - 1 is monotonic in y: its largest size in an interval is at one of the ends.
    worst = max(abs(seed * mpmath.sqrt(y) - 1)
                for i, seed in enumerate(seeds[:-1]) for y in ends[i:i + 2])
    header.main("core/generated/root_seeds_table.h", [
        "// 1/sqrt(1 + j/256), then 1/sqrt(2 + j/128), then 1/sqrt(4). Relative error over the interval",
        f"// to the next one: at most {header.digits(worst)}.",
        *header.array(f"double kRootSeed[{len(seeds)}]", map(header.double, seeds)),
    ])
