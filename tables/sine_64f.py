# SPDX-License-Identifier: MIT
"""Polynomials of the double-precision sine on 65 intervals of |r|, and pi in four parts.

Row j approximates sin r = r + r^3 (C0 + C1 u + C2 u^2 + C3 u^3 + C4 u^4), u = r^2, on |r| within
pi/254 of j pi/127. Row 0 is the polynomial of least relative error on |r| <= pi/128: five nodes on
its own narrow interval would leave C3 and C4 to chance. Its coefficients are checked against a fit
by exchange, which leaves C4 open beyond 46 bits. Row 64 is a constant too; the others interpolate at
five Chebyshev nodes in u.
Rounding each of their coefficients on its own would cost 0.38 ulp. So they are rounded one after
another, and each time those that are left are fitted anew, at the same nodes, to what is left.
"""
import mpmath

from shared import fits, header

PI = mpmath.pi
STEPS = 127
KEPT = {
    0: (-0.16666666666666666, 0.008333333333333333, -0.00019841269841269836, 2.755731922210186e-06,
        -2.5051823200351557e-08),
    64: (-0.16666665171049472, 0.008333303420935396, -0.00019838874022732182,
         2.7461144259669618e-06, -2.3110163778536015e-08),
}


def cubic_part(u):
    """(sin r - r) / r^3"""
    r = mpmath.sqrt(u)
    return (mpmath.sin(r) - r) / r**3


def weight(u):
    """From the error of the cubic part to the relative error of the sine."""
    r = mpmath.sqrt(u)
    return r**3 / mpmath.sin(r)


def least_relative_error(limit, terms=5, points=300):
    """The coefficients by Remez exchange on 0 < u <= limit, rounded."""
    extremes = [limit * (1 + mpmath.cos(PI * k / (terms + 1))) / 2 for k in range(terms + 1)]
    grid = [limit * (1 - mpmath.cos(PI * k / points)) / 2 for k in range(1, points + 1)]
    parts = [(cubic_part(u), weight(u)) for u in grid]
    for _ in range(6):
        rows = [[u**p for p in range(terms)] + [(-1)**i / weight(u)] for i, u in enumerate(extremes)]
        solution = mpmath.lu_solve(mpmath.matrix(rows), mpmath.matrix([cubic_part(u) for u in extremes]))
        fit = list(solution)[:terms]
        error = [(fits.value(fit, u) - part) * w for u, (part, w) in zip(grid, parts)]
        extremes = [limit]
        for k in range(points - 2, 0, -1):
            if abs(error[k]) >= max(abs(error[k - 1]), abs(error[k + 1])):
                left = (error[k] - error[k - 1]) / (grid[k] - grid[k - 1])
                right = (error[k + 1] - error[k]) / (grid[k + 1] - grid[k])
                curvature = (right - left) / (grid[k + 1] - grid[k - 1])
                slope = left + curvature * (grid[k] - grid[k - 1])
                extremes.append(grid[k] - slope / (2 * curvature))
    return [header.rounded(c, 53) for c in fit]


def bounds(j):
    return max(0, j - mpmath.mpf(1) / 2) * PI / STEPS, (j + mpmath.mpf(1) / 2) * PI / STEPS


def row(j):
    if j in KEPT:
        return [mpmath.mpf(c) for c in KEPT[j]]
    nodes = fits.chebyshev_nodes(*(r * r for r in bounds(j)), 5)
    return fits.one_after_another(cubic_part, 5, lambda known: nodes)


def worst_error(j, coefficients):
    """In ulp of the sine, before any rounding of the computation."""
    low, high = bounds(j)
    high = min(high, PI / 2)
    worst = mpmath.mpf(0)
    for k in range(33):
        r = low + (high - low) * k / 32
        if r == 0:
            continue
        exact = mpmath.sin(r)
        error = r + r**3 * fits.value(coefficients, r * r) - exact
        ulp = mpmath.power(2, mpmath.floor(mpmath.log(exact, 2)) - 52)
        worst = max(worst, abs(error) / ulp)
    return worst


rows = [row(j) for j in range(65)]
with mpmath.workprec(400):
    fit = least_relative_error((PI / 128)**2)
assert fit[:4] == rows[0][:4] and abs(fit[4] / rows[0][4] - 1) < mpmath.mpf(2)**-46, fit
errors = [worst_error(j, coefficients) for j, coefficients in enumerate(rows)]
worst = max(range(65), key=lambda j: errors[j])

# pi = P1 + P2 + P3 + P4. The first two are used as one of 45 bits: its product with the 17 bits of a
# multiple of pi/2 is exact in extended precision, and so is that of P3.
P1, P2, P3, P4 = (mpmath.mpf(float.fromhex(p)) for p in (
    "0x1.921fb40000000p+1", "0x1.4442d00000000p-23", "0x1.8469880000000p-47",
    "0x1.8cc51701b839ap-71"))

header.main("kernels/trig/generated/sine_64f_table.h", [
    f"// Largest error of the polynomials: {header.digits(errors[worst], 3)} ulp, in row {worst}; "
    f"of rows 1 to 63 {header.digits(max(errors[1:64]), 3)} ulp.",
    f"// Error of p12 + p3 + p4: {header.digits(P1 + P2 + P3 + P4 - PI, 3)}.",
    "alignas(64) inline constexpr struct Table {",
    "  double inv_pi;       // 1/pi",
    "  double p12, p3, p4;  // pi in parts of 45, 22 and 53 bits",
    "  double rows;         // 127/pi",
    "  double half_pi;      // pi/2",
    "  double c[65][5];     // C0 to C4",
    "  float half;",
    "} static_const_table = {",
    *[f"    {header.double(value)}," for value in (1 / PI, P1 + P2, P3, P4, STEPS / PI, PI / 2)],
    *header.block(map(header.doubles, rows)),
    "    0.5f,",
    "};",
])
