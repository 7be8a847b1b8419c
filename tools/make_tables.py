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
    def stage(steps, count, last_above, bits, factor=1):
        """factor/(1 + i/steps) up to i = last_above, factor/(1 - (count - i)/(2 steps)) behind."""

        def divisor(i):
            return 1 + (Fraction(i, steps) if i <= last_above else Fraction(i - count, 2 * steps))

        return [shortened(factor / divisor(i), bits) for i in range(count + 1)]

    tables = []
    for element in ("double", "float"):
        k = NEAR_LOG2E[element]
        if element == "double":
            stages = [stage(32, 32, 32, 15), stage(512, 32, 14, 15), stage(32768, 128, 60, 23, k)]
            steps, midpoint, bits = (32, 512, 32768), 16, 42
            high_power, unit = lambda v: nearest(v, "double"), "rounded value"
        else:
            stages = [stage(8, 8, 8, 7), stage(32, 8, 2, 7), stage(256, 16, 4, 10, k)]
            steps, midpoint, bits = (8, 32, 256), 4, 17
            high_power, unit = lambda v: Fraction(round(v * 2**22), 2**22), "multiple of 2^-22"
        for number, reciprocals in enumerate(stages, 1):
            one, name = (k, "k") if number == 3 else (1, "1")
            logs = [-log2(r / one) for r in reciprocals]
            n, last = steps[number - 1], len(reciprocals) - 1
            what = f"r = {name}/(1 + i/{n}), shortened"
            if number == 1:
                logs = logs[:midpoint] + [v - 1 for v in logs[midpoint:]]
            else:
                what += f"; in the upper half {name}/(1 - ({last} - i)/{2 * n})"
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
            "-ln r in two parts and r = 1/(1 + i/64) to 8 bits, entry by entry",
        ),
        table(
            "pown_reciprocals_double_1025",
            "double",
            reciprocals,
            "k/(1 + i/1024), k near log2 e, to 23 bits",
        ),
        table(
            "pown_logs_double_1025",
            "double",
            split_pairs(logs, upper_word),
            "-log2 of these over k, less 1 from i = 512 on, in two parts, entry by entry",
        ),
        table(
            "pown_short_logs_double_513",
            "double",
            short_logs,
            "-ln(c/512), c = 512 + i; -ln(c/1024) from c = 725 on",
        ),
        table("pown_powers_double_2048", "double", powers, "2^(j/2048) times a number below 1"),
    ]
    return header("Tables of pown and rootn.", tables)


FILES = {
    "exp/exp_tables.h": exp_tables,
    "exp/hyperbolic_tables.h": hyperbolic_tables,
    "log/log_tables.h": log_tables,
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
