#!/usr/bin/env python3
"""Writes vmath/trig/trig_series.inc: series of the half turn and quotients of the quarter turn, in radians, degrees and half
turns.

    sin(unit r) = r P(r^2)             tan(unit r) = r P(r^2)/Q(r^2), Q(0) = 1

They have about the least relative error, and the kernels' own arithmetic meets values that are known exactly: a cosine of
0 is 1, a sine of 30 degrees 1/2, a tangent of 45 degrees 1. Needs mpmath:
    tools/gen/trig_series.py > vmath/trig/trig_series.inc"""
import math
import random
from fractions import Fraction

from mpmath import mp, mpf, matrix, lu_solve, sin, tan, pi, cos, log, polyval

mp.dps = 60


# --- arithmetic of a precision, rounded to nearest even ---
class Format:
    def __init__(self, single):
        self.single, self.bits = single, 24 if single else 53

    def round(self, x):
        x = Fraction(*x.as_integer_ratio()) if isinstance(x, float) else x
        if x == 0:
            return Fraction(0)
        exponent = math.floor(math.log2(abs(x)))
        while abs(x) >= Fraction(2) ** (exponent + 1):
            exponent += 1
        while abs(x) < Fraction(2) ** exponent:
            exponent -= 1
        unit = Fraction(2) ** (exponent - self.bits + 1)
        return round(x / unit) * unit

    def from_mp(self, x):
        scale = 400
        return self.round(Fraction(int(mp.nint(x * mpf(2) ** scale)), 2**scale))

    def unit(self, x):
        return Fraction(2) ** (math.floor(math.log2(abs(x))) - self.bits + 1)

    def horner(self, c, v):
        total = c[-1]
        for term in reversed(c[:-1]):
            total = self.round(total * v + term)
        return total

    def parts_of_pi(self, count):
        rest, parts = pi, []
        for _ in range(count):
            exponent = int(mp.floor(log(rest, 2)))
            part = mp.floor(rest * mpf(2) ** (self.bits - 1 - exponent)) * mpf(2) ** (exponent - self.bits + 1)
            parts.append(Fraction(int(part * mpf(2) ** 400), 2**400))
            rest -= part
        return parts

    def text(self, x):
        return float(x).hex() + ("f" if self.single else "")


# --- fits ---
def to_mp(x):
    return mpf(x.numerator) / x.denominator if isinstance(x, Fraction) else mpf(x)


def fit(g, limit, count, fixed, exact):
    """Coefficients of a polynomial near g(v), v up to limit^2, the first ones given, through the exact points; of least
    relative error by reweighting."""
    free = count - len(fixed)
    high = mpf(limit) ** 2
    # Everything in v/high, which keeps the numbers of like size.
    given = [to_mp(c) * high**k for k, c in enumerate(fixed)]
    nodes = [(1 - cos(pi * (2 * i + 1) / 160)) / 2 for i in range(80)]
    values = [g(high * v) for v in nodes]
    base = [polyval(given[::-1], v) if given else mpf(0) for v in nodes]
    exact = [(v / high, value) for v, value in exact[:free]]
    weights = [mpf(1)] * len(nodes)
    for _ in range(12):
        size = free + len(exact)
        a, b = mp.zeros(size), matrix(size, 1)
        for v, value, at, w in zip(nodes, values, base, weights):
            row = [v ** (len(given) + k) / value for k in range(free)]
            for i in range(free):
                for k in range(free):
                    a[i, k] += w * row[i] * row[k]
                b[i] += w * row[i] * (1 - at / value)
        for m, (v, value) in enumerate(exact):
            for k in range(free):
                a[free + m, k] = a[k, free + m] = v ** (len(given) + k)
            b[free + m] = value - (polyval(given[::-1], v) if given else 0)
        x = lu_solve(a, b)
        c = given + [x[k] for k in range(free)]
        errors = [abs(polyval(c[::-1], v) / value - 1) for v, value in zip(nodes, values)]
        top = max(errors) or mpf(1)
        weights = [w * (e / top + mpf(1) / 50) for w, e in zip(weights, errors)]
    return [x / high**k for k, x in enumerate(c)]


def rounded_fit(form, g, limit, count, exact):
    """Each coefficient is rounded before the next ones are fitted."""
    fixed = []
    for _ in range(count):
        fixed.append(form.from_mp(fit(g, limit, count, fixed, exact)[len(fixed)]))
    return fixed


def tuned(form, c, error, holds):
    """c, or a neighbour by a few units in the last place, for which `holds`."""
    if holds(c):
        return c
    bound = error(c) * mpf("1.15") + mpf(2) ** -(form.bits + 1)
    chance = random.Random(1)
    for reach in (1, 2, 4, 8, 16):
        for _ in range(400):
            near = [x + chance.randint(-reach, reach) * form.unit(x) for x in c]
            if holds(near) and error(near) <= bound:
                return near
    raise SystemExit("no neighbour meets the exact values")


def write(label, form, row):
    print(f"inline constexpr {'float' if form.single else 'double'} {label}[{len(row)}] = {{")
    print("    " + ", ".join(form.text(c) for c in row) + "};")


def bits_of(error):
    return int(mp.ceil(log(error, 2)))


def emit_sine(label, single, unit, limit, count, points, text):
    """points: remainders r and the exact result there."""
    form = Format(single)
    g = lambda v: sin(unit * mp.sqrt(v)) / mp.sqrt(v)
    checks = [mpf(limit) ** 2 * (i + mpf(1) / 2) / 300 for i in range(300)]
    truth = [g(v) for v in checks]

    def error(c):
        c = [to_mp(x) for x in reversed(c)]
        return max(abs(polyval(c, v) / t - 1) for v, t in zip(checks, truth))

    def holds(c):
        return all(form.round(r * form.horner(c, form.round(r * r))) == y for r, y in points)

    c = rounded_fit(form, g, limit, count, [(to_mp(r) ** 2, to_mp(y) / to_mp(r)) for r, y in points])
    c = tuned(form, c, error, holds)
    print(f"\n// {text}: relative error 2^{bits_of(error(c))}")
    write(label, form, c)


def equioscillating_quotient(g, limit, top, bottom):
    """The denominator's coefficients from the first on, by Remez' exchange for quotients."""
    count = top + bottom + 2
    high = limit**2
    nodes = [high / 2 * (1 - cos(pi * i / (count - 1))) for i in range(count)]
    nodes[0] = high * mpf(10) ** -9
    q = [mpf(0)] * bottom
    for _ in range(12):
        for _ in range(6):
            a, b = mp.zeros(count), matrix(count, 1)
            for i, v in enumerate(nodes):
                gv, qv = g(v), 1 + sum(c * v ** (k + 1) for k, c in enumerate(q))
                for k in range(top + 1):
                    a[i, k] = v**k
                for k in range(bottom):
                    a[i, top + 1 + k] = -gv * v ** (k + 1)
                a[i, count - 1] = (-1) ** i * gv * qv
                b[i] = gv
            x = lu_solve(a, b)
            p, q = [x[k] for k in range(top + 1)], [x[top + 1 + k] for k in range(bottom)]

        def error(v):
            return polyval(p[::-1], v) / (g(v) * (1 + v * polyval(q[::-1], v))) - 1

        # The extreme of each stretch of one sign takes the place of its node.
        extremes = []
        for v in [high * (1 - cos(pi * (i + mpf(1) / 2) / 600)) / 2 for i in range(600)] + [high]:
            e = error(v)
            if extremes and (e > 0) == (extremes[-1][1] > 0):
                if abs(e) > abs(extremes[-1][1]):
                    extremes[-1] = (v, e)
            else:
                extremes.append((v, e))
        if len(extremes) != count:
            break
        nodes = [v for v, _ in extremes]
    return q


def emit_tangent(label, single, unit, limit, top, bottom, one, text):
    """one: the remainder whose tangent is 1, if it is exact."""
    form = Format(single)
    # In radians the numbers are of like size; a unit only shifts them.
    q = equioscillating_quotient(lambda v: tan(mp.sqrt(v)) / mp.sqrt(v), limit * unit, top, bottom)
    q = [form.from_mp(c * unit ** (2 * (k + 1))) for k, c in enumerate(q)]
    under = lambda v: 1 + v * polyval([to_mp(c) for c in reversed(q)], v)
    g = lambda v: tan(unit * mp.sqrt(v)) / mp.sqrt(v) * under(v)
    checks = [mpf(limit) ** 2 * (i + mpf(1) / 2) / 300 for i in range(300)]
    truth = [tan(unit * mp.sqrt(v)) / mp.sqrt(v) for v in checks]

    # Of numerator and denominator in one list.
    def error(c):
        c = [to_mp(x) for x in c]
        p, q = c[top::-1], c[:top:-1]
        return max(abs(polyval(p, v) / (1 + v * polyval(q, v)) / t - 1) for v, t in zip(checks, truth))

    def holds(c):
        if one is None:
            return True
        v = form.round(one * one)
        return form.round(one * form.horner(c[: top + 1], v)) == form.round(v * form.horner(c[top + 1 :], v) + 1)

    exact = [] if one is None else [(to_mp(one) ** 2, under(to_mp(one) ** 2) / to_mp(one))]
    c = tuned(form, rounded_fit(form, g, limit, top + 1, exact) + q, error, holds)
    print(f"\n// {text}: relative error 2^{bits_of(error(c))}")
    write(label + "_numerator", form, c[: top + 1])
    write(label + "_denominator", form, c[top + 1 :])


def radian_quarter(single, parts):
    """The remainder of 0 from -pi/2, as the short reduction of the cosine leaves it."""
    form, r = Format(single), Fraction(0)
    for part in Format(single).parts_of_pi(parts):
        r = form.round(r + part / 2)
    return r


def main():
    print("// Generated by tools/gen/trig_series.py.\n#pragma once\n\nnamespace nax::vmath {")
    half, quarter = Fraction(1, 2), Fraction(1, 4)
    text = "sin(r) = r P(r^2), |r| <= pi/2, for the cosine"
    wide = pi / 2 + mpf(2) ** -10  # the float quotient that gives N moves the ends
    emit_sine("radian_cosine_double_la", False, mpf(1), pi / 2, 8, [(radian_quarter(False, 3), 1)], text)
    emit_sine("radian_cosine_single_la", True, mpf(1), wide, 5, [(radian_quarter(True, 3), 1)], text)
    emit_sine("radian_cosine_single_ep", True, mpf(1), wide, 3, [(radian_quarter(True, 2), 1)], text)
    text = "sin(r degrees) = r P(r^2), |r| <= 90"
    degree, right, third = pi / 180, (Fraction(90), Fraction(1)), (Fraction(30), half)
    emit_sine("degree_sine_double_la", False, degree, 90, 8, [right, third], text)
    emit_sine("degree_sine_double_ep", False, degree, 91, 5, [right], text)
    emit_sine("degree_sine_single_la", True, degree, 91, 5, [right, third], text)
    emit_sine("degree_sine_single_ep", True, degree, 91, 3, [right], text)
    text = "sin(pi r) = r P(r^2), |r| <= 1/2"
    right = (half, Fraction(1))
    emit_sine("half_turn_sine_double_la", False, pi, mpf(1) / 2, 8, [right], text)
    emit_sine("half_turn_sine_double_ep", False, pi, mpf(1) / 2, 5, [right], text)
    emit_sine("half_turn_sine_single_la", True, pi, mpf(1) / 2, 5, [right], text)
    emit_sine("half_turn_sine_single_ep", True, pi, mpf(1) / 2, 3, [right], text)
    for name, unit, limit, loose, one, text in (
        ("radian", mpf(1), pi / 4 + mpf(2) ** -20, pi / 4 + mpf(2) ** -8, None, "tan(r) = r P(r^2)/Q(r^2), |r| <= pi/4"),
        ("degree", degree, mpf(45) + mpf(2) ** -10, mpf(46), Fraction(45), "tan(r degrees) = r P(r^2)/Q(r^2), |r| <= 45"),
        ("half_turn", pi, mpf(1) / 4, mpf(1) / 4, quarter, "tan(pi r) = r P(r^2)/Q(r^2), |r| <= 1/4"),
    ):
        emit_tangent(f"tangent_{name}_long", False, unit, limit, 3, 3, one, text)
        emit_tangent(f"tangent_{name}_short", False, unit, limit, 2, 2, one, text)
        emit_tangent(f"tangent_{name}_single_la", True, unit, loose, 1, 2, one, text)
        emit_tangent(f"tangent_{name}_single_ep", True, unit, loose, 1, 1, one, text)
    print("\n}  // namespace nax::vmath")


main()
