# SPDX-License-Identifier: MIT
"""What the tables of the inverse error function share: cells and their polynomials.

A cell is centred at w = 2^-e (1 + j/cells), w = 1 - |x|, and reaches half the distance to its
neighbours. From y'' = 2 y y'^2 its Taylor series at the centre follows, whose radius is w; polynomials
interpolate that series at the Chebyshev nodes of the cell.
"""
import mpmath

mpmath.mp.prec = 180
TERMS = 26


class Cell:
    """low and high: the bounds in |x|; centre: where the series stands."""

    def __init__(self, e, j, cells):
        w = mpmath.ldexp(1 + mpmath.mpf(j) / cells, -e)
        above = mpmath.ldexp(1, -e) / (2 * cells)
        below = above / 2 if j == 0 else above
        self.centre = 1 - w
        self.low = max(self.centre - above, mpmath.mpf(0))
        self.high = self.centre + below
        y = mpmath.erfinv(self.centre)
        slope = [mpmath.sqrt(mpmath.pi) / 2 * mpmath.exp(y * y)]
        self.series = [y, slope[0]]
        square = []
        for n in range(TERMS):
            square.append(sum(slope[i] * slope[n - i] for i in range(n + 1)))
            slope.append(2 * sum(self.series[i] * square[n - i] for i in range(n + 1)) / (n + 1))
            self.series.append(slope[-1] / (n + 2))

    def value(self, a):
        return mpmath.polyval(self.series[::-1], a - self.centre)

    def at_zero(self):
        return self.centre == 0

    def points(self, count):
        """Chebyshev nodes in |x|."""
        middle, half = (self.low + self.high) / 2, (self.high - self.low) / 2
        return [middle + half * mpmath.cos(mpmath.pi * (2 * i + 1) / (2 * count))
                for i in range(count)]

    def fit(self, degree, variable):
        """Coefficients in powers of variable(|x|), lowest first; at zero without a constant."""
        count = degree if self.at_zero() else degree + 1
        nodes = self.points(count)
        places = [variable(a) for a in nodes]
        values = [self.value(a) / a if self.at_zero() else self.value(a) for a in nodes]
        for k in range(1, count):
            for i in range(count - 1, k - 1, -1):
                values[i] = (values[i] - values[i - 1]) / (places[i] - places[i - k])
        powers = [mpmath.mpf(0)] * count
        for i in range(count - 1, -1, -1):
            powers = [values[i] - places[i] * powers[0]] + [
                powers[k - 1] - places[i] * powers[k] for k in range(1, count)]
        return [mpmath.mpf(0)] + powers if self.at_zero() else powers

    def error(self, coefficients, variable):
        """The largest relative error of a polynomial."""
        worst = mpmath.mpf(0)
        for a in self.points(3 * len(coefficients)) + [self.high, self.low]:
            if a:
                y = mpmath.polyval(coefficients[::-1], variable(a))
                worst = max(worst, abs(y / self.value(a) - 1))
        return worst


def cells(first, count):
    """All cells up from w = 2^-first; the last is at w = 1."""
    return [Cell(e, j, count) for e in range(first, 0, -1) for j in range(count)] + [Cell(0, 0, count)]


def power(error):
    return f"2^{mpmath.nstr(mpmath.log(error, 2), 4)}"
