#!/usr/bin/env python3
"""Makes the tables that follow a rule, as headers of bit patterns beside their families.

    make_tables.py            writes all of them
    make_tables.py --check    compares the files in the tree with what the rules give

Values come from decimal arithmetic with 80 digits and are rounded once, to nearest even, in exact
rational arithmetic.
"""

import sys
from decimal import Decimal, getcontext
from fractions import Fraction
from functools import cache
from math import copysign
from pathlib import Path
from textwrap import wrap

getcontext().prec = 80
ROOT = Path(__file__).resolve().parent.parent

# name: (bits, fraction bits, exponent bias)
FORMATS = {"double": (64, 52, 1023), "float": (32, 23, 127), "half": (16, 10, 15)}


def encode(value, element):
    """The bit pattern of the element nearest to an exact value (normal numbers and zero only); a
    decimal -0 keeps its sign."""
    bits, fraction, bias = FORMATS[element]
    if value == 0:
        return 1 << (bits - 1) if copysign(1, value) < 0 else 0
    value = Fraction(value)
    sign, value = (1 << (bits - 1), -value) if value < 0 else (0, value)
    exponent = value.numerator.bit_length() - value.denominator.bit_length()
    if value < Fraction(2) ** exponent:
        exponent -= 1
    # round() of a Fraction is to nearest, ties to even; a carry moves into the exponent by itself.
    significand = round(value / Fraction(2) ** (exponent - fraction))
    return sign | ((exponent + bias) << fraction) + significand - (1 << fraction)


def decode(pattern, element):
    """The exact value of a normal number or zero."""
    bits, fraction, bias = FORMATS[element]
    if pattern == 0:
        return Fraction(0)
    sign = -1 if pattern >> (bits - 1) else 1
    exponent = (pattern >> fraction & ((1 << (bits - 1 - fraction)) - 1)) - bias
    significand = (1 << fraction) | (pattern & ((1 << fraction) - 1))
    return sign * Fraction(significand) * Fraction(2) ** (exponent - fraction)


def nearest(value, element):
    return decode(encode(value, element), element)


def table(name, element, values, comment):
    return pattern_table(name, element, [encode(v, element) for v in values], comment)


def pattern_table(name, element, patterns, comment):
    digits = {"double": 16, "float": 8, "half": 4, "uint64_t": 16}[element]
    patterns = [f"0x{p:0{digits}X}" for p in patterns]
    per_line = {16: 4, 8: 8, 4: 12}[digits]
    lines = [
        "    " + ", ".join(patterns[i : i + per_line]) + ","
        for i in range(0, len(patterns), per_line)
    ]
    body = "\n".join(lines)
    comment = "".join(f"/// {line}\n" for line in wrap(comment, 96))
    return (
        comment
        + f"inline constexpr Table<{element}, {len(patterns)}> {name} = {{{{\n{body}\n}}}};\n"
    )


def header(text, tables):
    return (
        f"// {text}\n// Written by tools/make_tables.py.\n// clang-format off\n#pragma once\n\n"
        '#include "frame/row.h"\n\nnamespace zorp {\n\n'
        + "\n".join(tables)
        + "\n}  // namespace zorp\n"
    )


def power_of_two(exponent):
    """2^exponent for a rational exponent."""
    return Fraction(Decimal(2) ** (Decimal(exponent.numerator) / Decimal(exponent.denominator)))


def exp_tables():
    def roots(n):
        return [power_of_two(Fraction(j, n)) for j in range(n)]

    def high(n, element):
        return table(f"exp2_high_{element}_{n}", element, roots(n), f"2^(j/{n}), rounded")

    def low(n, element, relative):
        kind = "relative" if relative else "absolute"
        rest = [v - nearest(v, element) for v in roots(n)]
        if relative:
            rest = [r / nearest(v, element) for r, v in zip(rest, roots(n))]
        what = "divided by" if relative else "beside"
        return table(
            f"exp2_low_{kind}_{element}_{n}",
            element,
            rest,
            f"What 2^(j/{n}) is above its rounded value, {what} that value",
        )

    tables = [
        high(8, "double"),
        low(8, "double", True),
        high(16, "double"),
        low(16, "double", False),
        low(16, "double", True),
        high(16, "float"),
        low(16, "float", False),
        low(16, "float", True),
        high(32, "float"),
        low(32, "float", True),
        table(
            "exp2_fine_float_16",
            "float",
            [power_of_two(Fraction(j, 16384)) for j in range(16)],
            "2^(j/16384), rounded",
        ),
        table(
            "exp2_middle_float_32",
            "float",
            [power_of_two(Fraction(j, 1024)) for j in range(32)],
            "2^(j/1024), rounded",
        ),
        high(32, "half"),
        table(
            "exp2_pairs_relative_double_64",
            "double",
            [part for v in roots(64) for part in (v, v / nearest(v, "double") - 1)],
            "2^(j/64): rounded value and what it leaves, divided by it, entry by entry",
        ),
    ]
    return header("Tables of 2^x at multiples of 1/n.", tables)


def hyperbolic_tables():
    def halves(n, element, sign, name):
        return table(
            f"exp2_half_{name}_{element}_{n}",
            element,
            [power_of_two(Fraction(sign * j, n)) / 2 for j in range(n)],
            f"0.5 x 2^({'-' if sign < 0 else ''}j/{n}), rounded",
        )

    pairs = []
    for j in range(128):
        up, down = power_of_two(Fraction(j, 128)), power_of_two(Fraction(-j, 128))
        pairs += [(up - down) / 2, down / 2]
    rare = []
    for j in range(65):
        v = power_of_two(Fraction(j, 64))
        rare += [v, v - nearest(v, "double")]
    tables = [
        table(
            "sinh_pairs_double_128",
            "double",
            pairs,
            "sinh(j ln 2 / 128) and 0.5 x 2^(-j/128), entry by entry",
        ),
        halves(16, "double", 1, "plus"),
        halves(16, "double", -1, "minus"),
        halves(32, "float", 1, "plus"),
        halves(32, "float", -1, "minus"),
        table(
            "exp2_pairs_double_65",
            "double",
            rare,
            "2^(j/64) for j = 0..64: rounded value and what it leaves, entry by entry",
        ),
    ]
    return header("Tables of the hyperbolic functions.", tables)


def log_tables():
    def ln(c):
        return Fraction(Decimal(c.numerator).ln() - Decimal(c.denominator).ln())

    logs = {
        "ln": ln,
        "log2": lambda c: ln(c) / ln(Fraction(2)),
        "log10": lambda c: ln(c) / ln(Fraction(10)),
    }

    def below_one(base, n):
        """-log c for c = (n+j)/(2n); the first half as for 2 c."""
        log = logs[base]
        c = [Fraction(n + j, 2 * n) for j in range(n)]
        return [-log(v if v >= Fraction(3, 4) else 2 * v) for v in c]

    def above_one(base, n, first):
        """log(first) - log c for c = 1 + j/n."""
        log = logs[base]
        return [log(Fraction(first)) - log(Fraction(n + j, n)) for j in range(n)]

    def parts(name, element, values, bits, what, zero=0):
        """High part, a multiple of 2^-bits, and what it leaves, where that is zero as `zero`."""
        high = [Fraction(round(v * 2**bits), 2**bits) for v in values]
        rest = [v - h or zero for v, h in zip(values, high)]
        n = len(values)
        return [
            table(f"{name}_high_{element}_{n}", element, high, f"{what}: in units of 2^-{bits}"),
            table(f"{name}_low_{element}_{n}", element, rest, "What that leaves"),
        ]

    tables = []
    for base, n in (("ln", 8), ("log2", 16), ("log10", 16)):
        values = below_one(base, n)
        what = f"-{base} c, c = ({n}+j)/{2 * n}, doubled below 3/4"
        tables += parts(base, "double", values, 40, what)
        tables.append(table(f"{base}_double_{n}", "double", values, f"{what}: rounded"))
    tables += parts("ln_unit", "float", above_one("ln", 16, 1), 15, "-ln c, c = 1 + j/16")
    tables += parts("ln", "float", above_one("ln", 16, 2), 15, "ln 2 - ln c, c = 1 + j/16")
    for base in ("log2", "log10"):
        what = f"{base} 2 - {base} c, c = 1 + j/32"
        tables += parts(base, "float", above_one(base, 32, 2), 14, what)

    what = "-ln c, c = (16+j)/32, doubled below 3/4"
    tables += parts("ln", "double", below_one("ln", 16), 40, what)
    tables.append(table("ln_double_16", "double", below_one("ln", 16), f"{what}: rounded"))
    tables += parts("ln", "float", above_one("ln", 32, 2), 15, "-ln c, c = (32+j)/64")
    for element, n, bits in (("double", 16, 40), ("float", 32, 13)):
        values = above_one("ln", n, 1)
        what = f"-ln c, c = 1 + j/{n}"
        zero = -0.0 if element == "float" else 0
        tables += parts("ln_unit", element, values, bits, what, zero)
        tables.append(table(f"ln_unit_{element}_{n}", element, values, f"{what}: rounded"))
        opposite, what = [-v for v in values], f"ln c, c = 1 + j/{n}"
        tables += parts("ln_plus", element, opposite, bits - 1, what)
        tables.append(table(f"ln_plus_{element}_{n}", element, opposite, f"{what}: rounded"))
    tables.append(table("ln_triples_float_65", "float", ln_triples(ln), LN_TRIPLES))
    return header("Tables of logarithms of short reciprocals.", tables)


def tanpi_tables():
    def tangents(n):
        """tan(pi j/n) for j below n/4, by halving the angle and adding it up."""
        cosine, sine = Decimal(0), Decimal(1)
        for _ in range(n.bit_length() - 2):
            cosine, sine = ((1 + cosine) / 2).sqrt(), ((1 - cosine) / 2).sqrt()
        c, s, result = Decimal(1), Decimal(0), []
        for _ in range(n // 4):
            result.append(Fraction(s / c))
            c, s = c * cosine - s * sine, s * cosine + c * sine
        return result

    tables = []
    for n, element in ((16, "double"), (32, "float")):
        small = tangents(n)
        falling = [-t for t in reversed(small[1:])]
        middle = [Fraction(-1), *falling, Decimal("-0"), *small[1:]]
        tables.append(
            table(
                f"tanpi_{element}_{n}",
                element,
                [*small, *middle, Fraction(-1), *falling],
                f"tan(pi j/{n}), but tan(pi (j/{n} - 1/2)) for {n // 4} <= j < {3 * n // 4}",
            )
        )
        signs = [Decimal("-0") if n // 4 <= j < 3 * n // 4 else 0 for j in range(n)]
        tables.append(
            table(f"tanpi_turned_{element}_{n}", element, signs, "-0 for these, +0 elsewhere")
        )
    return header("Tables of the tangent of multiples of pi/n.", tables)


LN_TRIPLES = "r = 1 / (1 + i/64) in units of 2^-7, 18 bits of -ln r and what they leave, i = 0..64"


def ln_triples(ln):
    entries = []
    for i in range(65):
        r = Fraction(round(Fraction(128 * 64, 64 + i)), 128)
        value = -ln(r)
        unit = Fraction(1)
        while value and value < unit * 2**17:
            unit /= 2
        high = int(value / unit) * unit
        entries += [r, high, value - high]
    return entries


def cube_root_tables():
    def power(base, third):
        """base^(third/3) for a rational base."""
        exponent = Decimal(third) / 3
        return Fraction((Decimal(base.numerator) / Decimal(base.denominator)) ** exponent)

    def padded(values, size):
        return values + [Fraction(0)] * (size - len(values))

    def parts(name, element, values, size, what):
        """Values rounded, and what they leave."""
        rest = [v - nearest(v, element) for v in values]
        return [
            table(f"{name}_{element}", element, padded(values, size), f"{what}: rounded"),
            table(f"{name}_low_{element}", element, padded(rest, size), "What that leaves"),
        ]

    tables = []
    for name, third in (("cube_root", 1), ("inverse_cube_root", -1)):
        sign = "-" if third < 0 else ""
        for element, row, n in (("double", 8, 8), ("float", 16, 16)):
            powers = [power(Fraction(2), third * b) for b in range(3)]
            tables += parts(f"{name}_power", element, powers, row, f"2^({sign}b/3), b = 0..2")
            points = [power(Fraction(n + i, 2 * n), -third) for i in range(n + 1)]
            what = f"c^({'' if third < 0 else '-'}1/3), c = 1/2 + i/{2 * n}, i = 0..{n}"
            tables += parts(f"{name}_point", element, points, 2 * row, what)
    # At e modulo 64: e = 0..15 from the first entry on, e = -24..-1 up to the last one.
    halves = [power(Fraction(2), e) if e < 16 else Fraction(0) for e in range(40)]
    halves += [power(Fraction(2), e - 64) for e in range(40, 64)]
    tables.append(table("cube_root_half", "half", halves, "2^(e/3), e = -24..15, at e modulo 64"))
    return header("Tables of the cube roots. Entries that no number reads are zero.", tables)


def hypot_tables():
    """Few enough bits for the rare routine's first products to be exact."""
    values = []
    for factor in (1, 2):
        for j in range(256):
            root = Decimal(256) / Decimal(factor * (256 + j))
            values.append(Fraction(round(Fraction(root.sqrt()) * 2048), 2048))
    roots = table(
        "reciprocal_roots_double_512",
        "double",
        values,
        "1/sqrt(1 + j/256), then 1/sqrt(2 (1 + j/256)): in units of 2^-11",
    )
    return header("The first estimates of hypot's rare routine.", [roots])


def erfc(x):
    """erfc of a Decimal above 0: the trapezoidal rule for its integral over a line in the complex
    plane, with the residue of the pole that the line passes; relative error below 1e-60."""
    h = Decimal(1) / 4
    total = 1 / (2 * x * x) + sum(w / (n * n * h * h + x * x) for n, w in weights(h))
    result = 2 * h * x * (-x * x).exp() / pi() * total
    if x < pi() / h:
        result -= 2 / ((2 * pi() * x / h).exp() - 1)
    return result


@cache
def pi():
    def arctan_of_inverse(n):
        return sum(
            Decimal((-1) ** k) / ((2 * k + 1) * Decimal(n) ** (2 * k + 1)) for k in range(60)
        )

    return 4 * (4 * arctan_of_inverse(5) - arctan_of_inverse(239))


@cache
def weights(h):
    return [(n, (-n * n * h * h).exp()) for n in range(1, 60)]


def erf_tables():
    def grid(n, points, function, scale):
        """function and the magnitude of its derivative at i/n, times the scale."""
        values = []
        for i in range(points):
            x = Decimal(i) / n
            values += [function(x) * scale, 2 / pi().sqrt() * (-x * x).exp() * scale]
        return [Fraction(v) for v in values]

    def complement(x):
        return erfc(x) if x else Decimal(1)

    def ending(values):
        return values[:-2] + [0, 0]

    tables = [
        table(
            "erf_grid_double_768",
            "double",
            grid(128, 768, lambda x: 1 - complement(x), 1),
            "erf x and 2/sqrt(pi) e^(-x^2) at x = i/128, point by point",
        ),
        table(
            "erfc_grid_double_3488",
            "double",
            ending(grid(128, 3488, complement, 2**128)),
            "2^128 erfc x and 2^128 2/sqrt(pi) e^(-x^2) at x = i/128, point by point; the last are 0",
        ),
        table(
            "erfc_grid_float_645",
            "float",
            ending(grid(64, 645, complement, 2**48)),
            "2^48 erfc x and 2^48 2/sqrt(pi) e^(-x^2) at x = i/64, point by point; the last are 0",
        ),
    ]
    return header("Tables of the error function and its complement on grids.", tables)


def scaled_inverse_two_pi(bits):
    """floor(2^bits / (2 pi)), pi by Machin's formula in integers."""
    one = 1 << (bits + 64)

    def arctangent_of_inverse(n):
        total, power, k = 0, one // n, 0
        while power:
            total += (-1) ** k * (power // (2 * k + 1))
            power //= n * n
            k += 1
        return total

    pi = 4 * (4 * arctangent_of_inverse(5) - arctangent_of_inverse(239))
    return (one << bits) // (2 * pi)


def sine_cosine(j, n):
    """Of j/n of a turn; exact at quarter turns."""
    if 4 * j % n == 0:
        quarter = 4 * j // n % 4
        return Fraction((0, 1, 0, -1)[quarter]), Fraction((1, 0, -1, 0)[quarter])
    turn = Fraction(2**200, scaled_inverse_two_pi(200))
    angle = turn * (j % n) / n
    x = Decimal(angle.numerator) / Decimal(angle.denominator)
    sums, term, k = [Decimal(0), Decimal(0)], Decimal(1), 0
    while abs(term) > Decimal(10) ** -78:
        sums[k % 2] += -term if k & 2 else term
        k += 1
        term *= x / k
    return Fraction(sums[1]), Fraction(sums[0])


def significant(value, bits, cut=False):
    """The value with that many significant bits, to nearest or cut."""
    if value == 0:
        return value
    unit = Fraction(1)
    while abs(value) >= 2**bits * unit:
        unit *= 2
    while abs(value) < 2 ** (bits - 1) * unit:
        unit /= 2
    return unit * (int(value / unit) if cut else round(value / unit))


def circle_rows(n, element, low_part, power_of_cosine):
    """For each j: c_rest, c_power, s_high, s_low."""
    rows = []
    for j in range(n):
        s, c = sine_cosine(j, n)
        high = nearest(s, element)
        power = power_of_cosine(j, c) if c else Fraction(0)
        if c < 0:
            power = -power
        rows.append((nearest(c - power, element), power, high, low_part(s - high)))
    return rows


def floor_power(value):
    """The largest power of two that is not above a value in (0, 2]."""
    power = Fraction(2)
    while power > value:
        power /= 2
    return power


def reduction_tables():
    words = 20  # 64 bits each: rows for the largest exponent end at bit 1164, pieces at bit 1227

    def geometric(j, c):
        # Up to 2^k from 2^(k-1/2) on: 2 cos^2 = 1 + cos of twice the angle, exact at eighths.
        double = 1 + sine_cosine(2 * j, 256)[1]
        power = Fraction(2)
        while power * power > double:
            power /= 2
        return power

    def arithmetic(j, c):
        return floor_power(abs(c) * Fraction(4, 3))

    def flat(rows, order):
        return [row[i] for row in rows for i in order]

    inverse = scaled_inverse_two_pi(64 * words)
    float_rows = circle_rows(256, "float", lambda v: nearest(v, "float"), geometric)
    double_rows = circle_rows(512, "double", lambda v: significant(v, 24, cut=True), arithmetic)
    scalar_rows = circle_rows(64, "double", lambda v: significant(v, 24), arithmetic)
    pieces = [0] + [
        Fraction(inverse >> (64 * words - 27 - 25 * k) & 0x1FFFFFF) * Fraction(2) ** (176 - 25 * k)
        for k in range(49)
    ]
    return header(
        "Tables of the reduction of large angles, and of the circle.",
        [
            pattern_table(
                "inverse_two_pi",
                "uint64_t",
                [inverse >> (64 * (words - 1 - i)) & (2**64 - 1) for i in range(words)],
                "The fraction bits of 1/(2 pi)",
            ),
            table(
                "four_over_pi_pieces",
                "double",
                pieces,
                "0, and 2^200 x 4/pi in slices of 25 bits",
            ),
            table(
                "circle_float_256",
                "float",
                flat(float_rows, (0, 2, 3, 1)),
                "c_rest, s_high, s_low, c_power of j/256 of a turn, entry by entry: cosine c_power + "
                "c_rest with the power of two that is nearest in ratio, sine s_high + s_low",
            ),
            table(
                "circle_double_512",
                "double",
                flat(double_rows, (0, 1, 2, 3)),
                "c_rest, c_power, s_high, s_low of j/512 of a turn, entry by entry: cosine c_power + "
                "c_rest with the nearest power of two, sine s_high + s_low, s_low cut to 24 bits",
            ),
            table(
                "circle_double_64",
                "double",
                flat(scalar_rows, (0, 2, 3, 1)),
                "c_rest, s_high, s_low, c_power of j/64 of a turn, entry by entry: the same, s_low "
                "rounded to 24 bits",
            ),
        ],
    )


def trig_tables():
    scaled = scaled_inverse_two_pi(1102)  # 2/pi, to 1100 bits

    def two_over_pi(i):
        return Fraction(scaled % (1 << (1102 - 8 * i)), 1 << 1100)

    high = [nearest(two_over_pi(i), "double") for i in range(16)]
    rest = [two_over_pi(i) - high[i] for i in range(16)]

    def tangents(element, n, largest):
        values = [sine_cosine(j, 2 * n) for j in range(n)]
        sign = 1 << (FORMATS[element][0] - 1)
        patterns = [encode(s / c, element) if c else sign | largest for s, c in values]
        return [sign] + patterns[1:]

    what = "tan(j pi/{}) in (-pi/2, pi/2]; -0, and for the pole the most negative number"
    return header(
        "Tables of sincos and tan.",
        [
            table("two_over_pi_high", "double", high, "2/pi mod 2^(2-8i): high part"),
            table("two_over_pi_low", "double", rest, "What that leaves"),
            pattern_table(
                "tangent_double_16",
                "double",
                tangents("double", 16, 0x7FEFFFFFFFFFFFFF),
                what.format(16),
            ),
            pattern_table(
                "tangent_float_32", "float", tangents("float", 32, 0x7F7FFFFF), what.format(32)
            ),
        ],
    )


def log2(value):
    return Fraction(
        (Decimal(value.numerator) / Decimal(value.denominator)).ln() / Decimal(2).ln()
    )


def shortened(value, bits):
    """value > 0, rounded to nearest at that many significant bits."""
    unit = Fraction(1, 2**bits)
    while value >= unit * 2**bits:
        unit *= 2
    while value < unit * 2 ** (bits - 1):
        unit /= 2
    return round(value / unit) * unit


def cut(value, bits):
    """value, cut toward zero to a multiple of 2^-bits."""
    return Fraction(int(value * 2**bits), 2**bits)


def split_pairs(values, high):
    """Each value as high(value) and what that leaves."""
    return [part for v in values for part in (high(v), v - high(v))]


def pow_tables():
    def logs(n):
        values = [-log2(Fraction(n + j, n)) for j in range(n)]
        return values[: n // 2] + [v + 1 for v in values[n // 2 :]]

    tables = []
    for element, bits in (("double", 40), ("float", 16)):
        high = [Fraction(round(v * 2**bits), 2**bits) for v in logs(32)]
        rest = [v - h for v, h in zip(logs(32), high)]
        what = f"-log2(1 + j/32), plus 1 from j = 16 on: in units of 2^-{bits}"
        tables.append(table(f"pow_log2_high_{element}_32", element, high, what))
        tables.append(table(f"pow_log2_low_{element}_32", element, rest, "What that leaves"))
    tables.append(
        table(
            "pow_log2_float_16",
            "float",
            logs(16),
            "-log2(1 + j/16), plus 1 from j = 8 on: rounded",
        )
    )
    return header("Tables of the logarithm of powers.", tables)


# Near log2 e, with few bits: what the last stages of the logarithms reduce their argument to.
NEAR_LOG2E = {"double": Fraction(6051101, 2**22), "float": Fraction(738, 2**9)}


def power_path_tables():
    def stage(steps, count, last_above, bits, factor):
        """factor/(1 + i/steps) up to i = last_above, factor/(1 - (count - i)/(2 steps)) behind."""

        def divisor(i):
            return 1 + (Fraction(i, steps) if i <= last_above else Fraction(i - count, 2 * steps))

        return [shortened(factor / divisor(i), bits) for i in range(count + 1)]

    tables = []
    for element in ("double", "float"):
        k = NEAR_LOG2E[element]
        if element == "double":
            stages = (32, 32, 32, 15, 1), (512, 32, 14, 15, 1), (32768, 128, 60, 23, k)
            midpoint, bits = 16, 42
            high_power, unit = lambda v: nearest(v, "double"), "rounded value"
        else:
            stages = (8, 8, 8, 7, 1), (32, 8, 2, 7, 1), (256, 16, 4, 10, k)
            midpoint, bits = 4, 17
            high_power, unit = lambda v: Fraction(round(v * 2**22), 2**22), "multiple of 2^-22"
        for number, (n, last, last_above, short, one) in enumerate(stages, 1):
            reciprocals = stage(n, last, last_above, short, one)
            logs = [-log2(r / one) for r in reciprocals]
            name = "k" if number == 3 else "1"
            what = f"r = {name}/(1 + i/{n})"
            if number == 1:
                logs = logs[:midpoint] + [v - 1 for v in logs[midpoint:]]
            else:
                what += f" up to i = {last_above}, {name}/(1 - ({last} - i)/{2 * n}) behind"
            what += f", to {short} bits" + (f"; k = {k}" if number == 3 else "")
            tables.append(
                table(f"power_reciprocals_{number}_{element}", element, reciprocals, what)
            )
            of_what = f"-log2 {'(r/k)' if number == 3 else 'r'}"
            if number == 1:
                of_what += f", less 1 from i = {midpoint} on"
            tables.append(
                table(
                    f"power_logs_{number}_{element}",
                    element,
                    split_pairs(logs, lambda v: cut(v, bits)),
                    f"{of_what}: multiple of 2^-{bits} and what it leaves, entry by entry",
                )
            )
        powers = [power_of_two(Fraction(j, 128)) for j in range(128)]
        tables.append(
            table(
                f"exp2_pairs_{element}_128",
                element,
                split_pairs(powers, high_power),
                f"2^(j/128): {unit} and what it leaves, entry by entry",
            )
        )
    return header("Tables of the scalar power function, and of 2^x for pown and rootn.", tables)


def pown_tables():
    def ln(value):
        return Fraction(Decimal(value.numerator).ln() - Decimal(value.denominator).ln())

    triples = []
    for i in range(65):
        r = Fraction(round(256 / (1 + Fraction(i, 64))), 256)
        triples += split_pairs([-ln(r)], lambda v: cut(v, 14)) + [r]

    k = NEAR_LOG2E["double"]
    reciprocals = [shortened(k / (1 + Fraction(i, 1024)), 23) for i in range(1025)]
    logs = [-log2(r / k) - (1 if i >= 512 else 0) for i, r in enumerate(reciprocals)]

    def upper_word(value):
        return decode(encode(value, "double") >> 32 << 32, "double")

    short_logs = [-ln(Fraction(c, 512 if c <= 724 else 1024)) for c in range(512, 1025)]
    # A little below 1: spreads the error of 1 + r for r in [0, ln 2 / 2048] to both sides.
    t = decode(0x3FEFFFFFFC27DD9E, "double")
    powers = [nearest(power_of_two(Fraction(j, 2048)), "double") * t for j in range(2048)]
    powers = [nearest(v, "double") for v in powers]
    powers[1242] += Fraction(1, 2**52)  # one unit above its rule
    tables = [
        table(
            "pown_logs_float_65",
            "float",
            triples,
            "-ln r cut to a multiple of 2^-14, what that leaves, and r = 1/(1 + i/64) in units of "
            "2^-8, entry by entry",
        ),
        table(
            "pown_reciprocals_double_1025",
            "double",
            reciprocals,
            f"k/(1 + i/1024), k = {k} near log2 e, to 23 bits",
        ),
        table(
            "pown_logs_double_1025",
            "double",
            split_pairs(logs, upper_word),
            "-log2 of these over k, less 1 from i = 512 on: the upper half of the encoding and what "
            "that leaves, entry by entry",
        ),
        table(
            "pown_short_logs_double_513",
            "double",
            short_logs,
            "-ln(c/512), c = 512 + i; -ln(c/1024) from c = 725 on",
        ),
        table(
            "pown_powers_double_2048",
            "double",
            powers,
            "2^(j/2048), rounded, times 0x3FEFFFFFFC27DD9E, rounded; entry 1242 is one unit above",
        ),
    ]
    return header("Tables of pown and rootn.", tables)


def arctangent(x):
    """atan of a rational x >= 0, as an exact fraction of a value good to about 70 digits."""
    if x > 1:
        return Fraction(pi() / 2) - arctangent(1 / x)
    # Halved angles until the series converges quickly: atan x = 2 atan(x / (1 + sqrt(1 + x^2))).
    x = Decimal(x.numerator) / Decimal(x.denominator)
    halvings = 0
    while x > Decimal("0.01"):
        x = x / (1 + (1 + x * x).sqrt())
        halvings += 1
    total, power, n = Decimal(0), x, 1
    while abs(power) > Decimal(10) ** -90:
        total += power / n if n % 4 == 1 else -power / n
        power *= x * x
        n += 2
    return Fraction(total) * 2**halvings


def atan_tables():
    quarters = [arctangent(Fraction(j, 4)) for j in range(32)]

    def rounded(name, element, first, values):
        what = f"atan(j/4) for j from {first} on, rounded"
        return table(f"atan_quarters_{name}", element, values, what)

    pairs = []
    for i in range(114):
        value = arctangent(Fraction(5 + 2 * (i % 2), 4) * Fraction(2) ** (i // 2 - 3))
        unit = Fraction(2) ** -25
        while value >= 2 * unit * 2**25:
            unit *= 2
        while value < unit * 2**25:
            unit /= 2
        high = round(value / unit) * unit
        pairs += [high, value - high]
    tables = [
        rounded("lower_double_16", "double", 0, quarters[:16]),
        rounded("upper_double_16", "double", 16, quarters[16:]),
        rounded("float_32", "float", 0, quarters),
        table(
            "atan_pairs_double_114",
            "double",
            pairs,
            "atan c for c = 1.25 and 1.75 times 2^-3, 2^-2, ...: 26 bits and what they leave",
        ),
    ]
    return header("Tables of arc tangents.", tables)


FILES = {
    "exp/exp_tables.h": exp_tables,
    "exp/hyperbolic_tables.h": hyperbolic_tables,
    "invtrig/atan_tables.h": atan_tables,
    "log/log_tables.h": log_tables,
    "trig/tanpi_tables.h": tanpi_tables,
    "pow/cbrt_tables.h": cube_root_tables,
    "pow/hypot_tables.h": hypot_tables,
    "special/erf_tables.h": erf_tables,
    "trig/reduction_tables.h": reduction_tables,
    "trig/trig_tables.h": trig_tables,
    "pow/pow_tables.h": pow_tables,
    "pow/pown_tables.h": pown_tables,
    "pow/power_path_tables.h": power_path_tables,
}


def main():
    check = sys.argv[1:] == ["--check"]
    stale = []
    for path, make in FILES.items():
        text = make()
        if check:
            if (ROOT / path).read_text() != text:
                stale.append(path)
        else:
            (ROOT / path).write_text(text)
    if stale:
        sys.exit("differs from its rule: " + ", ".join(stale))


if __name__ == "__main__":
    main()
