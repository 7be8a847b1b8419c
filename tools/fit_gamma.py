#!/usr/bin/env python3
"""Fits the polynomials of log gamma and gamma that the routines of double read.

    fit_gamma.py            fits all of them, prints each one's largest error, writes
                            special/gamma_tables.h (some minutes)
    fit_gamma.py --check    measures the polynomials in that file again and fails where one is worse
                            than what the file says of it

The products of quadratic factors start from a minimax polynomial in relative error (Remez's
exchange); after each factor is rounded, the others are fitted to what it leaves. Next to a zero the
fit is by least squares on Chebyshev's points, in relative error too, and each coefficient that is
rounded leaves its rest to the next. Rounding is to the extended format (64 bits) or to double.

Also writes the reciprocals and logarithms of own_log and own_logl, which follow a rule.
"""

import re
import sys
from pathlib import Path

import mpmath as mp

mp.mp.prec = 280
FILE = Path(__file__).resolve().parent.parent / "special" / "gamma_tables.h"


# ---- Formats ----------------------------------------------------------------------------------


def rounded(value, bits):
    """To nearest, with that many significant bits."""
    if value == 0:
        return mp.mpf(0)
    with mp.workprec(bits):
        return +mp.mpf(value)


def pattern(value, bits):
    """The encoding as an extended value (64 bits) or a double (53 bits)."""
    value = rounded(value, bits)
    sign = 1 if value < 0 else 0
    if value == 0:
        return "0x" + "0" * (20 if bits == 64 else 16)
    mantissa, exponent = mp.frexp(abs(value))
    significand = int(mp.ldexp(mantissa, bits))
    exponent = int(exponent) - 1
    if bits == 64:
        return f"0x{sign << 15 | (exponent + 16383):04X}{significand:016X}"
    return f"0x{sign << 63 | (exponent + 1023) << 52 | significand - (1 << 52):016X}"


def decoded(text):
    """The value of a pattern: 20 digits an extended value, 16 a double."""
    digits = text[2:]
    number = int(digits, 16)
    if len(digits) == 20:
        significand, word = number & ((1 << 64) - 1), number >> 64
        value = mp.ldexp(significand, (word & 0x7FFF) - 16383 - 63)
        return -value if word >> 15 else value
    if not number:
        return mp.mpf(0)
    significand = number & ((1 << 52) - 1) | 1 << 52
    value = mp.ldexp(significand, (number >> 52 & 0x7FF) - 1023 - 52)
    return -value if number >> 63 else value


# ---- Minimax ----------------------------------------------------------------------------------


def levelled(points, values, weights, exponents):
    """The sum of c_k z^exponents[k] whose weighted errors at the points are equal, alternating."""
    count = len(points)
    system, right = mp.matrix(count, count), mp.matrix(count, 1)
    for row, z in enumerate(points):
        for column, exponent in enumerate(exponents):
            system[row, column] = z**exponent
        system[row, count - 1] = (-1) ** row / weights[row]
        right[row] = values[row]
    return list(mp.lu_solve(system, right))[: count - 1]


def remez(f, weight, exponents, low, high):
    """The sum of c_k z^exponents[k] on [low, high] that minimises the largest weighted error, and
    the points where that error stands."""
    low, high = mp.mpf(low), mp.mpf(high)
    count = len(exponents) + 1
    points = [
        (low + high) / 2 - (high - low) / 2 * mp.cos(mp.pi * (k + mp.mpf(1) / 2) / count)
        for k in range(count)
    ]
    for _ in range(6):
        values = [f(z) for z in points]
        weights = [weight(z, value) for z, value in zip(points, values)]
        coefficients = levelled(points, values, weights, exponents)

        def error(z):
            value = f(z)
            return (value - total(coefficients, exponents, z)) * weight(z, value)

        points = extrema(error, points, low, high)
        errors = [abs(error(z)) for z in points]
        if max(errors) < min(errors) * mp.mpf("1.01"):
            break
    return coefficients, points


def some_of(points, count):
    """So many of the points, spread evenly."""
    return [points[k * (len(points) - 1) // (count - 1)] for k in range(count)]


def total(coefficients, exponents, z):
    return mp.fsum(c * z**e for c, e in zip(coefficients, exponents))


def extrema(error, points, low, high):
    """From near each point uphill to the next local extremum of the same sign."""
    result = []
    for k, z in enumerate(points):
        sign = mp.sign(error(z))
        left = points[k - 1] if k else low
        right = points[k + 1] if k + 1 < len(points) else high
        step = (right - left) / 16
        for _ in range(5):
            a, b = max(z - step, low), min(z + step, high)
            at = [sign * error(v) for v in (a, z, b)]
            if at[1] >= at[0] and at[1] >= at[2]:
                bend = at[0] - 2 * at[1] + at[2]
                if bend != 0 and a < z < b:
                    z = min(max(z + (at[0] - at[2]) / (2 * bend) * step, a), b)
                step /= 8
            else:
                z = a if at[0] > at[2] else b
        result.append(z)
    return result


def largest(error, low, high, count=200):
    points = [low + (high - low) * mp.mpf(k) / count for k in range(count + 1)]
    return max(abs(error(z)) for z in points)


# ---- Forms ------------------------------------------------------------------------------------


def factored(f, leading=None):
    """K prod (z^2 + a z + b) of degree 22 on [0, 1], one factor rounded after the other.
    Returns b0, a0, b1, a1, ..., K."""
    size = f(mp.mpf(0))
    row = factored_near_one(lambda z: f(z) / size, None if leading is None else leading / size)
    return row[:22] + [rounded(row[22] * size, 64)]


def factored_near_one(f, leading):
    weight = lambda z, value: 1 / abs(f(z))
    if leading is None:
        coefficients, points = remez(f, weight, list(range(23)), 0, 1)
    else:
        rest = lambda z: f(z) - leading * z**22
        coefficients, points = remez(rest, weight, list(range(22)), 0, 1)
    pairs = []
    for degree in range(22, 0, -2):
        free = degree + (leading is None)
        at = some_of(points, free + 1)
        # What the rounded factors leave to the others.
        left = [f(z) / factors(pairs, z) for z in at]
        values = left if leading is None else [v - leading * z**degree for v, z in zip(left, at)]
        coefficients = levelled(at, values, [1 / abs(v) for v in left], list(range(free)))
        if leading is not None:
            coefficients.append(leading)
        roots = mp.polyroots(coefficients[::-1], maxsteps=400, extraprec=400)
        tiny = mp.mpf(10) ** -40
        complex_roots = [r for r in roots if mp.im(r) > tiny]
        if complex_roots:
            first = min(complex_roots, key=mp.re)
            second = mp.conj(first)
        else:
            first, second = sorted((mp.re(r) for r in roots))[:2]
        pairs += [rounded(mp.re(first * second), 64), rounded(-mp.re(first + second), 64)]
    if leading is None:
        at = some_of(points, 2)
        left = [f(z) / factors(pairs, z) for z in at]
        leading = levelled(at, left, [1 / abs(v) for v in left], [0])[0]
    return pairs + [leading]


def factors(pairs, z):
    value = mp.mpf(1)
    for b, a in zip(pairs[::2], pairs[1::2]):
        value *= z * z + a * z + b
    return value


def product(row, z):
    return row[22] * factors(row[:22], z)


def around_zero(zero, low, high, degree, extended):
    """Coefficients of t^0 ... of log gamma at zero + t, rounded one after the other: so many to the
    extended format, the others to double."""
    unit = high  # the fit is in u = t / unit, from about -1 to 1
    f = lambda u: log_gamma(zero + u * unit)
    fixed = [rounded(f(mp.mpf(0)), 64)]
    # Next to its zero f is nearly a multiple of u, so errors count relative to u. Least squares on
    # Chebyshev's points comes near the minimax.
    count = 3 * degree
    points = [mp.cos(mp.pi * (k + mp.mpf(1) / 4) / count) for k in range(count)]
    values = [f(u) for u in points]
    for k in range(1, degree + 1):
        powers = range(k, degree + 1)
        system = mp.matrix([[u ** (e - 1) for e in powers] for u in points])
        left = mp.matrix([(v - total(fixed, range(k), u)) / u for u, v in zip(points, values)])
        coefficient = mp.lu_solve(system.T * system, system.T * left)[0]
        bits = 64 if k < extended else 53
        fixed.append(rounded(coefficient / unit**k, bits) * unit**k)
    return [c / unit**k for k, c in enumerate(fixed)]


def log_gamma(x):
    return mp.log(abs(mp.gamma(x)))


# ---- The polynomials --------------------------------------------------------------------------

# Of gamma(16 k + z), of gamma(2 + z) in row 0: leading coefficients that are fixed.
GAMMA_LEADING = {0: 9.390045868056712e-10, 1: 108.74816536676057, 10: 1.0841668778640654e278, 11: 1.0}
GAMMA_SCALE = decoded("0x3BECBA5D5869211696FF")  # of row 11


def gamma_of_row(k):
    if k == 11:
        return lambda z: mp.gamma(176 + z) * GAMMA_SCALE
    return lambda z: mp.gamma((16 * k if k else 2) + z)


def log_gamma_of_binade(i):
    return lambda z: log_gamma(mp.ldexp(1 + z, i + 2))


def zero_between(low, high):
    """The double next to the zero of log gamma between two arguments."""
    sign = mp.sign(log_gamma(low))
    for _ in range(200):
        middle = (low + high) / 2
        if mp.sign(log_gamma(middle)) == sign:
            low = middle
        else:
            high = middle
    return rounded(low, 53)


def root_rows(side):
    """Bounds and zeros in (-(n + 3), -(n + 2)), n = 0 to 12, left or right of the minimum."""
    rows = []
    for n in range(13):
        pole = mp.mpf(-(n + 3) if side == "left" else -(n + 2))
        inward = 1 if side == "left" else -1
        # Between the poles |gamma| is least about 0.4 of the way from the right one.
        turn = mp.findroot(lambda x: mp.digamma(x), -(n + 3) + mp.mpf("0.55"), solver="secant")
        zero = zero_between(pole + inward * mp.mpf(2) ** -60, turn)
        # From a sixth (right: a tenth) of the distance to the pole in row 0 to 0.4 of that in row 12.
        share = mp.mpf("0.1625" if side == "left" else "0.1")
        width = abs(zero - pole) * share * mp.mpf("0.4") ** (mp.mpf(n) / 12)
        rows.append([rounded(zero - width, 53), zero, rounded(zero + width, 53)])
    return rows


def root_error(row, coefficients):
    low, zero, high = row
    worst = mp.mpf(0)
    for k in range(201):
        t = low - zero + (high - low) * k / 200
        if t == 0:
            continue
        value = log_gamma(zero + t)
        worst = max(worst, abs(total(coefficients, range(len(coefficients)), t) / value - 1))
    return worst


# ---- The file ---------------------------------------------------------------------------------


def logarithm_tables():
    """1 / (1 + (i + 0.5) / 256) to a multiple of 2^-11, and its negated logarithm in two parts: for
    own_log the upper part is a double without its low 32 bits, for own_logl a multiple of 2^-33."""
    reciprocals, pairs, long_pairs = [], [], []
    for i in range(256):
        nearest = mp.nint(2048 / (1 + (i + mp.mpf("0.5")) / 256))
        r = nearest / 2048
        value = -mp.log(r)
        top = int(pattern(value, 53), 16) if value else 0
        high = decoded(f"0x{top & ~0xFFFFFFFF:016X}")
        long_high = mp.nint(value * 2**33) / 2**33
        reciprocals.append(r)
        pairs.append((value - high, high))
        long_pairs.append((long_high, value - long_high))
    return reciprocals, pairs, long_pairs


def extended(value):
    text = pattern(value, 64)[2:]
    return f"{{0x{text[4:]}, 0x{text[:4]}}}"


def double(value):
    return pattern(value, 53)


def lines(items, per_line, indent):
    rows = [items[k : k + per_line] for k in range(0, len(items), per_line)]
    return ",\n".join(" " * indent + ", ".join(row) for row in rows)


def log2_text(error):
    return f"2^{float(mp.ceil(mp.log(error, 2) * 10) / 10):.1f}"


def factored_table(name, comment, count, function, leading):
    rows = []
    for k in range(count):
        f = function(k)
        row = factored(f, leading(k))
        error = largest(lambda z: product(row, z) / f(z) - 1, 0, 1)
        print(f"{name} row {k}: {log2_text(error)}", flush=True)
        rows.append(f"    // relative error {log2_text(error)}\n    {{\n" + lines([extended(v) for v in row], 2, 8) + "}")
    return f"// {comment}\ninline constexpr Extended {name}[{count}][23] = {{\n" + ",\n".join(rows) + "};\n"


def root_tables(side, degree, extended_count, name, struct):
    bounds, rows = [], []
    for n, row in enumerate(root_rows(side)):
        low, zero, high = row
        bounds.append("    {" + ", ".join(double(v) for v in row) + "}")
        c = around_zero(zero, low - zero, high - zero, degree, extended_count)
        error = root_error(row, c)
        print(f"{name}P row {n}: {log2_text(error)}", flush=True)
        rows.append(
            f"    // relative error {log2_text(error)}\n    {{{{\n"
            + lines([extended(v) for v in c[:extended_count]], 2, 8)
            + "},\n      {\n"
            + lines([double(v) for v in c[extended_count:]], 4, 8)
            + "}}"
        )
    return (
        f"// Log gamma in (-(n + 3), -(n + 2)), its zero nearer the {side} end: bounds and zero, and\n"
        f"// coefficients at zero + t of t^0 to t^{degree}.\n"
        f"inline constexpr uint64_t {name}IB[13][3] = {{\n" + ",\n".join(bounds) + "};\n"
        f"inline constexpr {struct} {name}P[13] = {{\n" + ",\n".join(rows) + "};\n"
    )


def write():
    reciprocals, pairs, long_pairs = logarithm_tables()
    parts = [
        "// Tables of the logarithm and of polynomials of gamma and log gamma.\n"
        "// Written by tools/fit_gamma.py.\n// clang-format off\n#pragma once\n\n"
        '#include "special/extended.h"\n\nnamespace zorp {\n',
        "// The reciprocal of 1 + (i + 0.5)/256, a multiple of 2^-11.\n"
        "inline constexpr float __libm_rcp_table_256[256] = {\n"
        + lines([f"{int(r * 2048)}.0f / 2048" for r in reciprocals], 6, 4)
        + "};\n",
        "// Its negated logarithm: the rest, and the double without its low 32 bits.\n"
        "inline constexpr uint64_t __libm_log_table_256[256][2] = {\n"
        + lines([f"{{{double(a)}, {double(b)}}}" for a, b in pairs], 2, 4)
        + "};\n",
        "// The same: a multiple of 2^-33, and the rest.\n"
        "inline constexpr uint64_t __libm_logl_table_256[256][2] = {\n"
        + lines([f"{{{double(a)}, {double(b)}}}" for a, b in long_pairs], 2, 4)
        + "};\n",
        factored_table(
            "_tgamma_A_table",
            "Gamma(16 k + z), in row 0 gamma(2 + z), row 11 scaled, for z in [0, 1): K times the product\n"
            "// of z^2 + a z + b, as b, a of each factor, then K.",
            12,
            gamma_of_row,
            lambda k: mp.mpf(GAMMA_LEADING[k]) if k in GAMMA_LEADING else None,
        ),
        factored_table(
            "_C5",
            "Log gamma(2^(i + 2) (1 + t)) for t in [0, 1): K times the product of t^2 + a t + b, as b, a of\n"
            "// each factor, then K.",
            7,
            log_gamma_of_binade,
            lambda i: None,
        ),
        root_tables("left", 16, 5, "_LR", "LeftRoot"),
        root_tables("right", 15, 4, "_RR", "RightRoot"),
        "}  // namespace zorp\n",
    ]
    FILE.write_text("\n".join(parts))


def check():
    """Measures the polynomials of the file."""
    text = FILE.read_text()
    failures = 0

    def table(name):
        body = re.search(rf" {name}\[.*?= \{{\n(.*?)\}};\n", text, re.S)[1]
        rows = body.split("// relative error 2^")[1:] or [body]
        for row in rows:
            promised = mp.mpf(row.split("\n")[0]) if rows[0] is not body else None
            tokens = re.findall(r"\{0x([0-9A-F]{16}), 0x([0-9A-F]{4})\}|0x([0-9A-F]{16})", row)
            yield promised, [decoded("0x" + (t[1] + t[0] if t[0] else t[2])) for t in tokens]

    def compare(name, k, promised, error):
        nonlocal failures
        bad = mp.log(error, 2) > promised + mp.mpf("0.05")
        failures += bad
        print(f"{name} row {k}: {log2_text(error)}" + (f", not 2^{promised}" if bad else ""))

    def same_rule(name, values, wanted):
        nonlocal failures
        same = values == wanted
        failures += not same
        print(name + (": as its rule says" if same else ": differs from its rule"))

    for name, function in (("_tgamma_A_table", gamma_of_row), ("_C5", log_gamma_of_binade)):
        for k, (promised, row) in enumerate(table(name)):
            f = function(k)
            compare(name, k, promised, largest(lambda z: product(row, z) / f(z) - 1, 0, 1))
    for side, name in (("left", "_LR"), ("right", "_RR")):
        values = next(table(name + "IB"))[1]
        same_rule(name + "IB", values, [v for row in root_rows(side) for v in row])
        for n, (promised, c) in enumerate(table(name + "P")):
            compare(name + "P", n, promised, root_error(values[3 * n : 3 * n + 3], c))
    reciprocals, pairs, long_pairs = logarithm_tables()
    short = re.search(r"__libm_rcp_table_256\[256\] = \{(.*?)\};", text, re.S)[1]
    values = [mp.mpf(n) / 2048 for n in re.findall(r"(\d+)\.0f", short)]
    same_rule("__libm_rcp_table_256", values, reciprocals)
    for name, wanted in (("__libm_log_table_256", pairs), ("__libm_logl_table_256", long_pairs)):
        same_rule(name, next(table(name))[1], [rounded(v, 53) for pair in wanted for v in pair])
    return failures


if __name__ == "__main__":
    if "--check" in sys.argv[1:]:
        sys.exit(1 if check() else 0)
    write()
