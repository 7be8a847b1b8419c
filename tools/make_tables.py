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
from pathlib import Path

getcontext().prec = 80
ROOT = Path(__file__).resolve().parent.parent

# name: (bits, fraction bits, exponent bias)
FORMATS = {"double": (64, 52, 1023), "float": (32, 23, 127), "half": (16, 10, 15)}


def encode(value, element):
    """The bit pattern of the element nearest to an exact value (normal numbers and zero only)."""
    bits, fraction, bias = FORMATS[element]
    value = Fraction(value)
    if value == 0:
        return 0
    sign, value = (1 << (bits - 1), -value) if value < 0 else (0, value)
    exponent = 0
    while value >= Fraction(2) ** (exponent + 1):
        exponent += 1
    while value < Fraction(2) ** exponent:
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
    digits = FORMATS[element][0] // 4
    patterns = [f"0x{encode(v, element):0{digits}X}" for v in values]
    per_line = {"double": 4, "float": 8, "half": 12}[element]
    lines = [
        "    " + ", ".join(patterns[i : i + per_line]) + ","
        for i in range(0, len(patterns), per_line)
    ]
    body = "\n".join(lines)
    return (
        f"/// {comment}\n"
        f"inline constexpr Table<{element}, {len(patterns)}> {name} = {{{{\n{body}\n}}}};\n"
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

    def parts(name, element, values, bits, what):
        """High part, a multiple of 2^-bits, and what it leaves."""
        high = [Fraction(round(v * 2**bits), 2**bits) for v in values]
        rest = [v - h for v, h in zip(values, high)]
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
    return header("Tables of logarithms of short reciprocals.", tables)


def arctangent(x):
    """atan of a rational x >= 0, as an exact fraction of a value good to about 70 digits."""
    if x > 1:
        return pi() / 2 - arctangent(1 / x)
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


def pi():
    return 4 * arctangent(Fraction(1))


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
