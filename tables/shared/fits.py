# SPDX-License-Identifier: MIT
"""Polynomials and their measured errors. Coefficients stand lowest power first."""
import mpmath
from mpmath import mpf

from shared import header


# ---- Interpolation

def chebyshev_nodes(low, high, count):
    return [(low + high + (high - low) * mpmath.cos(mpmath.pi * (2 * i + 1) / (2 * count))) / 2
            for i in range(count)]


def interpolated(function, nodes, powers=None):
    """Coefficients of x^p, p in powers: from 0 on, as many as nodes, unless others are named. With
    fewer powers than nodes, least squares."""
    powers = range(len(nodes)) if powers is None else powers
    matrix = mpmath.matrix([[x**p for p in powers] for x in nodes])
    return list(mpmath.lu_solve(matrix, mpmath.matrix([function(x) for x in nodes])))


def fit(function, low, high, count):
    return interpolated(function, chebyshev_nodes(low, high, count))


def fit_shifted(function, low, high, count):
    """The same with nodes that lie exactly evenly about 0 until the polynomial is moved."""
    middle, half = (low + high) / 2, (high - low) / 2
    return moved(fit(lambda v: function(v + middle), -half, half, count), middle)


def fit_even(function, half_width, count):
    """Coefficients in x^2, at the 2 count Chebyshev nodes of |x| <= half_width."""
    nodes = [half_width * mpmath.cos(mpmath.pi * (2 * i + 1) / (4 * count)) for i in range(count)]
    return interpolated(function, nodes, range(0, 2 * count, 2))


def one_after_another(function, count, nodes_left, weight=0):
    """`count` doubles, each rounded before those above it are fitted anew. nodes_left(known): where,
    when that many are known; with more nodes than coefficients errors weigh with x^weight."""
    coefficients = []
    for known in range(count):
        left = interpolated(lambda x: x**weight * (function(x) - value(coefficients, x)),
                            nodes_left(known), range(known + weight, count + weight))
        coefficients.append(header.rounded(left[0], 53))
    return coefficients


def nodes_with_zero(length, count):
    """The zeros of a Chebyshev polynomial, the least of them moved to 0 and left out: for what is
    multiplied by its argument."""
    zeros = [mpmath.cos((2 * k + 1) * mpmath.pi / (2 * count + 2)) for k in range(count + 1)]
    return [length * (zero - zeros[-1]) / (1 - zeros[-1]) for zero in zeros[:-1]]


def moved(coefficients, distance):
    """Of p(x - distance)."""
    return mpmath.taylor(lambda x: value(coefficients, x - distance), 0, len(coefficients) - 1)


def stored(values, bits):
    """The values as a table with these significant bits holds them; bits: a number, or one each."""
    bits = bits if isinstance(bits, list) else [bits] * len(values)
    return [header.rounded(v, b) for v, b in zip(values, bits)]


# ---- Values and errors

def value(coefficients, x):
    return mpmath.polyval(coefficients[::-1], x)


def points(low, high, count=16):
    """Where errors are measured: the ends, and evenly between."""
    return [low + (high - low) * i / count for i in range(count + 1)]


def worst(error, low, high, count=2000):
    """Largest magnitude on count + 1 points, which find a few smooth extrema to a part in 1e5."""
    return max(abs(error(x)) for x in points(low, high, count))


# ---- Functions that are fitted

def quotient(function, slope):
    """(function(r) - 1) / r of a function that is 1 at 0; there, but for rounding, its slope."""
    return lambda r: (function(r) - 1) / r if abs(r) > 1e-30 else slope


def over_argument(function, slope):
    """function(r) / r of a function that is 0 at 0."""
    return lambda r: function(r) / r if r else slope


LN2 = mpmath.log(2)
log2_ratio = over_argument(lambda z: mpmath.log1p(z) / LN2, 1 / LN2)  # log2(1 + z) / z
exp2_ratio = over_argument(lambda r: mpmath.expm1(r * LN2), LN2)      # (2^r - 1) / r


# ---- Cells

def reciprocals(cells, bits, count):
    """Short 1 / (1 + i/cells) for i < count."""
    return [header.rounded(1 / (1 + mpf(i) / cells), bits) for i in range(count)]


def reciprocal_reach(reciprocals_of_cells, cells, first=None, last=None):
    """Largest |z r - 1| for z within half a cell of 1 + i/cells, from cell end `first` to `last`."""
    return max(abs((1 + (i + side) / mpf(cells)) * r - 1)
               for i, r in enumerate(reciprocals_of_cells) for side in (-mpf(1) / 2, mpf(1) / 2)
               if (first is None or first <= i + side) and (last is None or i + side <= last))


def odd_quadratics(function, second, cells, last):
    """For f(u)/u, f odd, quadratics by cells of one width around the multiples of it, 0 to last.

    The first is even, and 1 at 0 exactly, so that small arguments pass; `second` is its curvature.
    """
    ratio = lambda u: function(u) / u
    half = mpf(1) / (2 * cells)
    rows, error = [], mpf(0)
    for k in range(last + 1):
        centre = mpf(k) / cells
        row = (stored(fit(ratio, centre - half, centre + half, 3), 53) if k else
               stored([mpf(1), mpf(0), second], 53))
        rows.append(row)
        error = max([error] + [abs(value(row, u) / ratio(u) - 1)
                               for u in map(abs, points(centre - half, centre + half)) if u])
    return rows, error


def odd_error(function, coefficients, last):
    """Relative error of u + u^3 P(u^2) for 0 < u <= last."""
    return worst(lambda u: u * (1 + u * u * value(coefficients, u * u)) / function(u) - 1 if u else 0,
                 mpf(0), last, 2048)


class InverseErrorCell:
    """A cell of the inverse error function, centred at w = 2^-e (1 + j/cells), w = 1 - |x|; it
    reaches half the distance to its neighbours. From y'' = 2 y y'^2 the Taylor series at the centre
    follows, whose radius is w; polynomials interpolate that series at the cell's Chebyshev nodes.

    low and high: the bounds in |x|; centre: where the series stands.
    """
    TERMS = 26

    def __init__(self, e, j, cells):
        w = mpmath.ldexp(1 + mpf(j) / cells, -e)
        above = mpmath.ldexp(1, -e) / (2 * cells)
        below = above / 2 if j == 0 else above
        self.centre = 1 - w
        self.low = max(self.centre - above, mpf(0))
        self.high = self.centre + below
        y = mpmath.erfinv(self.centre)
        slope = [mpmath.sqrt(mpmath.pi) / 2 * mpmath.exp(y * y)]
        self.series = [y, slope[0]]
        square = []
        for n in range(self.TERMS):
            square.append(sum(slope[i] * slope[n - i] for i in range(n + 1)))
            slope.append(2 * sum(self.series[i] * square[n - i] for i in range(n + 1)) / (n + 1))
            self.series.append(slope[-1] / (n + 2))

    def exact(self, a):
        return value(self.series, a - self.centre)

    def fit(self, degree, variable):
        """Coefficients in powers of variable(|x|), by divided differences; at zero without a
        constant."""
        at_zero = self.centre == 0
        count = degree if at_zero else degree + 1
        nodes = chebyshev_nodes(self.low, self.high, count)
        places = [variable(a) for a in nodes]
        values = [self.exact(a) / a if at_zero else self.exact(a) for a in nodes]
        for k in range(1, count):
            for i in range(count - 1, k - 1, -1):
                values[i] = (values[i] - values[i - 1]) / (places[i] - places[i - k])
        powers = [mpf(0)] * count
        for i in range(count - 1, -1, -1):
            powers = [values[i] - places[i] * powers[0]] + [
                powers[k - 1] - places[i] * powers[k] for k in range(1, count)]
        return [mpf(0)] + powers if at_zero else powers

    def error(self, coefficients, variable):
        """The largest relative error of a polynomial."""
        nodes = chebyshev_nodes(self.low, self.high, 3 * len(coefficients))
        return max(abs(value(coefficients, variable(a)) / self.exact(a) - 1)
                   for a in nodes + [self.high, self.low] if a)


def inverse_error_cells(first, count):
    """All cells up from w = 2^-first; the last is at w = 1."""
    return [InverseErrorCell(e, j, count) for e in range(first, 0, -1) for j in range(count)] + [
        InverseErrorCell(0, 0, count)]
