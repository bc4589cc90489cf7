# SPDX-License-Identifier: MIT
"""Piecewise quadratics for f(u)/u, f odd: cells of one width around the multiples of it."""
import mpmath
import tablegen


def cell(ratio, second, k, cells):
    """Coefficients, highest first, interpolating at the Chebyshev nodes of the cell around k."""
    if k == 0:  # even there; and 1 exactly, so that small arguments pass
        return [float(second), 0.0, 1.0]
    centre, half = mpmath.mpf(k) / cells, mpmath.mpf(1) / (2 * cells)
    nodes = [centre + half * mpmath.cos(mpmath.pi * (2 * i + 1) / 6) for i in range(3)]
    a, b, c = (ratio(u) for u in nodes)
    first = (b - a) / (nodes[1] - nodes[0])
    curve = ((c - b) / (nodes[2] - nodes[1]) - first) / (nodes[2] - nodes[0])
    slope = first - curve * (nodes[0] + nodes[1])
    constant = a - nodes[0] * (first - curve * nodes[1])
    return [float(tablegen.rounded(value, 53)) for value in (curve, slope, constant)]


def worst_error(ratio, row, k, cells):
    worst = mpmath.mpf(0)
    for i in range(-8, 9):
        u = abs(mpmath.mpf(k) / cells + mpmath.mpf(i) / (16 * cells))
        if u:
            worst = max(worst, abs(((row[0] * u + row[1]) * u + row[2]) / ratio(u) - 1))
    return worst


def table(function, second, cells, last, name):
    """The header's lines for cells 0 to last of width 1/cells."""
    mpmath.mp.prec = 120
    ratio = lambda u: function(u) / u
    rows = [cell(ratio, second, k, cells) for k in range(last + 1)]
    worst = max(worst_error(ratio, row, k, cells) for k, row in enumerate(rows))
    return [
        f"// {name}(u) / u by cells of width 1/{cells}, k = round({cells} u). Relative error at most "
        f"{mpmath.nstr(worst, 4)}.",
        "struct Quadratic {",
        "  double c2, c1, c0;",
        "};",
        f"static const Quadratic kQuadratic[{last + 1}] = {{",
        *[f"    {{{', '.join(value.hex() for value in row)}}}," for row in rows],
        "};",
    ]


def polynomials(named, function, name, bound, last):
    """The header's lines for polynomials P, highest coefficient first: u + u^3 P(u^2)."""
    lines = []
    for title, literals in named.items():
        coefficients = [mpmath.mpf(float.fromhex(text)) for text in literals]
        worst = mpmath.mpf(0)
        for i in range(1, 2049):
            u = last * i / 2048
            worst = max(worst, abs(u * (1 + u * u * mpmath.polyval(coefficients, u * u))
                                   / function(u) - 1))
        lines += [
            f"// {name}(u) = u + u^3 P(u^2) for 0 <= u <= {bound}. Relative error at most "
            f"{mpmath.nstr(worst, 4)}.",
            f"static const float {title}[{len(literals)}] = {{",
            *[f"    {text}f," for text in literals],
            "};",
        ]
    return lines
