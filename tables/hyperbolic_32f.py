# SPDX-License-Identifier: MIT
"""Hyperbolic cosine and sine of the multiples of 1/32, and the first terms of each series."""
import mpmath
from mpmath import mpf

from shared import fits, header

CELLS = 32
LAST = 2861  # holds the last argument whose results are finite, 89.41598
HALF = mpf(1) / (2 * CELLS)


def second_term(tail):
    """The c that evens out c z + tail z^2 - (true terms), z = r^2, both ways on |r| <= HALF: what
    a leading term of exactly 1 leaves."""
    return tail * HALF**2 * 2 * (mpmath.sqrt(2) - 1)


C2 = header.rounded(mpf(1) / 2 + second_term(mpf(1) / 24), 24)
S3 = header.rounded(mpf(1) / 6 + second_term(mpf(1) / 120), 24)
cosh_error = fits.worst(lambda r: (1 + C2 * r**2) / mpmath.cosh(r) - 1, mpf(0), HALF, 1024)
sinh_error = fits.worst(lambda r: (r + S3 * r**3) / mpmath.sinh(r) - 1 if r else r, mpf(0), HALF, 1024)

# With c2 = 1/2, and s3 the single nearest to 1/6, whose error s5 takes along.
C4 = header.rounded(mpf(1) / 24 + second_term(mpf(1) / 720), 24)
THIRD = header.rounded(mpf(1) / 6, 24)
S5 = header.rounded(mpf(1) / 120 + second_term(mpf(1) / 5040), 24)
longer_cosh_error = fits.worst(lambda r: (1 + r**2 / 2 + C4 * r**4) / mpmath.cosh(r) - 1, mpf(0), HALF,
                               1024)
longer_sinh_error = fits.worst(lambda r: (r + THIRD * r**3 + S5 * r**5) / mpmath.sinh(r) - 1 if r else r,
                               mpf(0), HALF, 1024)

pairs = [(mpmath.cosh(mpf(j) / CELLS), mpmath.sinh(mpf(j) / CELLS)) for j in range(LAST + 1)]
header.main("kernels/hyper/generated/hyperbolic_32f_table.h", [
    f"// j = round({CELLS} x), r = x - j/{CELLS}, |r| <= 1/{2 * CELLS}:"
    f" cosh r = 1 + c2 r^2, relative error {header.digits(cosh_error)};",
    f"// sinh r = r + s3 r^3, relative error {header.digits(sinh_error)}.",
    f"constexpr float kC2 = {header.single(C2)}, kS3OverC2 = {header.single(S3 / C2)};",
    f"// One term more: relative errors {header.digits(longer_cosh_error)} and"
    f" {header.digits(longer_sinh_error)}.",
    f"constexpr float kC4 = {header.single(C4)}, kS3 = {header.single(THIRD)}, kS5 = {header.single(S5)};",
    "",
    "struct SingleCell {",
    "  double cosh, sinh;",
    "};",
    *header.array(f"SingleCell kSingleCell[{LAST + 1}]", map(header.doubles, pairs)),
    "",
    "// Halves, so that the largest are finite singles too.",
    "struct SingleHalves {",
    "  float cosh, sinh;",
    "};",
    *header.array(f"SingleHalves kSingleHalves[{LAST + 1}]",
                  [header.singles((cosine / 2, sine / 2)) for cosine, sine in pairs]),
])
