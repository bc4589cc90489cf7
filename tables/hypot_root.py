# SPDX-License-Identifier: MIT
"""Why the hypotenuse may take its root by fsqrt: the steps that it took at first give the same.

Those steps, all rounded to 53 bits, for 1 <= M < 4 and y, the seed of M's interval:

    g = M y, h = y/2;  three times  r = 1/2 - g h, h = h + h r, g = g + g r;
    d = M - g^2, g split in two and rounded once;  the root is g + d h.

bound() gives the largest distance of g + d h, before its own rounding, from sqrt(M). The root is
another double than the nearest one only if the middle of two doubles, N 2^-53 with N odd, is nearer
to sqrt(M) than that, and then N^2 2^-106 is near M. M is a multiple of 2^-52, of 2^-51 from 2 on:
candidates() are all N whose squares are at most T 2^-106 from such a number, with T far beyond the
bound. run() takes the steps for each.
"""
import sys
from fractions import Fraction

from root_seeds import root_seeds

U = Fraction(1, 2**53)  # of a rounding, relative
T = 8192                # distances that are tried, in units of 2^-106


def largest_seed_error():
    """Of |y sqrt(M) - 1|, which is largest at an end of an interval, rounded up."""
    ends, seeds = root_seeds()
    return max(abs(Fraction(float(seed * mid ** 0.5 - 1)))
               for i, seed in enumerate(seeds[:-1]) for mid in ends[i:i + 2]) * (1 + U * 16)


def bound():
    """The largest |g + d h - sqrt(M)| / sqrt(M).

    With g = sqrt(M) (1 + a) and h = (1 + b) / (2 sqrt(M)), r is -(a + b + a b) / 2, so a step takes a to
    (a - b)/2 - a (a + b)/2 - a b (1 + a)/2, and the same with a and b exchanged: only the difference
    a - b stays, to first order, and every step adds the roundings of g and h to it.
    """
    e = largest_seed_error()
    a, b, apart = e + U * (1 + e), e, U * (1 + e)
    for _ in range(3):
        # g h is rounded near 1/2, 1/2 - g h if it is not exact, g r and the sum last.
        r = (a + b + a * b) / 2
        rounding_of_r = U * (1 + a) * (1 + b) / 2 + U * r
        product = lambda error: (1 + error) * (rounding_of_r + U * (r + rounding_of_r))
        square = lambda error: error * (a + b) / 2 + a * b * (1 + error) / 2
        a_new = (apart / 2 + square(a) + product(a)) * (1 + U) + U
        b_new = (apart / 2 + square(b) + product(b)) * (1 + U) + U
        # r is common to both; what it adds differs by the difference of a and b only.
        apart = apart * (1 + r + rounding_of_r) + 2 * U * (1 + r) * (1 + a + b) + 2 * U * r
        a, b = a_new, b_new
    # d = -2 M (a + a^2/2) with one rounding; d h has another.
    correction = a * (1 + a / 2)
    lost = (1 + b) * (1 + U)**2 - 1
    return a * a / 2 + correction * lost, a


def candidates():
    """Pairs of an odd N and t with N^2 = M 2^106 + t, |t| <= T, for every M in [1, 4)."""
    for bits, low, high in ((54, 2**53, 2**106 * 2), (55, 2**53, 2**106 * 4)):
        for t in range(-T + 1, T, 8):  # squares of odd numbers are 1 modulo 8
            root = 1
            for k in range(3, bits + 1):
                if (root * root - t) % 2**k:
                    root += 2**(k - 2)
            half = 2**(bits - 1)
            for n in {root % 2**bits, -root % 2**bits, (root + half) % 2**bits, (half - root) % 2**bits}:
                m = n * n - t
                in_range = (2**106 <= m < high) if bits == 54 else (2**107 <= m < high)
                if n >= low and n < 2 * low and in_range:
                    assert m % 2**bits == 0
                    yield n, t


def run(m, seeds):
    """The steps. Python's floats are doubles, each operation rounded to nearest."""
    mantissa, exponent = (m, 0) if m < 2 else (m / 2, 1)
    y = seeds[exponent * 256 + int((mantissa - 1) * 256)]
    g, h = m * y, 0.5 * y
    for _ in range(3):
        r = 0.5 - g * h
        h = h + h * r
        g = g + g * r
    product = g * 134217729.0
    high = product - (product - g)
    low = g - high
    cross = high * low
    residual = ((m - high * high) - (cross + cross)) - low * low
    return g + residual * h


def main():
    error, last = bound()
    # |M - N^2 2^-106| = |sqrt(M) - N 2^-53| (sqrt(M) + N 2^-53) < 2 M error (1 + error), M < 4
    reach = 8 * error * (1 + error) * 2**106
    print(f"g is off by at most {float(last / U):.2f} units of 2^-53, "
          f"g + d h by {float(error / U / U):.1f} of 2^-106:")
    print(f"only squares within {float(reach):.0f} x 2^-106 of M matter; all within {T} are tried")
    if reach >= T:
        sys.exit("the bound goes beyond what is tried")

    seeds = [float(seed) for seed in root_seeds()[1]]
    count = 0
    for n, t in candidates():
        m = float(Fraction(n * n - t, 2**106))
        assert Fraction(m) == Fraction(n * n - t, 2**106)
        nearest = float(Fraction((n - 1) // 2 if t > 0 else (n + 1) // 2, 2**52))
        if run(m, seeds) != nearest:
            sys.exit(f"the steps do not give the nearest double at M = {m.hex()}")
        count += 1
    print(f"{count} radicands: the steps gave the correctly rounded root of every one")
    if count < T // 4:
        sys.exit("too few radicands: the enumeration is incomplete")


if __name__ == "__main__":
    main()
