#!/usr/bin/env python3
"""Measures how well the constants do what the comments beside them say.

    check_constants.py            writes the measured errors into the comments
    check_constants.py --check    compares them, asks for a comment on every coefficient, and checks
                                  rows like pi and log2e to be rounded to nearest

Such a comment is an equation between a function and what the rows of its block make of it:

    // e^r = 1 + c1 r + ... + c7 r^7 on [0, ln 2 / 8]: relative error 2^-58.5
    // ln(1 + z) = z (p0[j] + p1[j] z) on [j/16, (j + 1)/16], j = 0..15: relative error 2^-10.1
    // pi = pi1 + pi2 + pi3: relative error 2^-160.3

A comment before a block speaks of that block. A name that is no row is the argument; "..." stands
for the terms or factors between two; parts of a formula may be named: "with u = z r, w = r^2". The
error is the largest on the range, or on all ranges that "and" joins, of the stored constants in
exact arithmetic: rounding errors of the evaluation come on top.
"""

import re
import sys
from pathlib import Path

from mpmath import mp, mpf

mp.prec = 200
ROOT = Path(__file__).resolve().parent.parent
FOLDERS = "exp log trig invtrig pow arith special exact".split()
NAMES = {
    "pi": +mp.pi,
    "e": +mp.e,
    "log2": lambda x: mp.log(x) / mp.ln2,
    "lgamma": lambda x: mp.log(abs(mp.gamma(x))),
    **{
        name: getattr(mp, name)
        for name in "ln log10 sqrt sin cos tan asin acos atan sinh cosh tanh asinh acosh atanh erf "
        "erfc gamma floor".split()
    },
}

# ---- Formulas ----------------------------------------------------------------------------------

TERM = r"(?P<n{0}>\w+(?=\[)|[a-z_]+)(?P<i{0}>\d+|\[\d+\])(?: (?P<v{0}>[a-z])(?:\^(?P<e{0}>\d+))?)?"


def expanded(text):
    """c1 r + ... + c3 r^3 as c1 r + c2 r^2 + c3 r^3, (x + a[0]) ... (x + a[2]) likewise."""

    def factors(match):
        numbers = [list(map(int, re.findall(r"\d+", factor))) for factor in match.groups()]
        steps = max(b - a for a, b in zip(*numbers))
        result = ""
        for k in range(steps + 1):
            at_k = iter(a + k * (b - a) // steps for a, b in zip(*numbers))
            result += re.sub(r"\d+", lambda _: str(next(at_k)), match[1])
        return result

    def terms(match):
        ends = [
            (int(match["i" + k].strip("[]")), int(match["e" + k] or 1) if match["v" + k] else 0)
            for k in "01"
        ]
        (first, low), (last, high) = ends
        steps = abs(last - first)
        term = match["n0"] + ("[{}] " if match["i0"][0] == "[" else "{} ")
        term += (match["v0"] or match["v1"]) + "^{}"
        return " + ".join(
            term.format(first + k * (last - first) // steps, low + k * (high - low) // steps)
            for k in range(steps + 1)
        )

    text = re.sub(r"(\([^()]*\)) \.\.\. (\([^()]*\))", factors, text)
    return re.sub(TERM.format(0) + r" \+ \.\.\. \+ " + TERM.format(1), terms, text)


class Formula:
    """A formula as a Python expression. A product needs no sign, nor a function of one factor
    parentheses: "a b", "ln 2"."""

    def __init__(self, text):
        self.text = text
        self.tokens = re.findall(r"\d+\.\d+|\d+|[A-Za-z_]\w*|\S", expanded(text))
        self.names = set()
        self.code = self.sum()
        if self.tokens:
            self.fail()

    def fail(self):
        sys.exit(f"can't read '{' '.join(self.tokens)}' in '{self.text}'")

    def next(self):
        return self.tokens[0] if self.tokens else " "

    def take(self, wanted=None):
        if not self.tokens or wanted not in (None, self.tokens[0]):
            self.fail()
        return self.tokens.pop(0)

    def sum(self):
        code = self.take() if self.next() == "-" else ""
        code += self.product()
        while self.next() in "+-":
            code += self.take() + self.product()
        return code

    def product(self):
        code = self.power()
        while self.next() not in "+-)] ":
            code += (self.take() if self.next() == "/" else "*") + self.power()
        return code

    def power(self):
        base = self.atom()
        if self.next() != "^":
            return base
        self.take()
        sign = self.take() if self.next() == "-" else ""
        exponent = self.atom()
        whole = re.fullmatch(r"mpf\('(\d+)'\)", exponent)  # a quick and exact power
        return f"{base}**({sign}{whole[1] if whole else exponent})"

    def bracketed(self, close):
        code = self.sum()
        self.take(close)
        return f"({code})"

    def atom(self):
        token = self.take()
        if token == "(":
            return self.bracketed(")")
        if token[0].isdigit():
            return f"mpf('{token}')"
        if not token.isidentifier():
            self.fail()
        self.names.add(token)
        if self.next() == "[":
            self.take()
            return f"{token}[int({self.bracketed(']')}) % len({token})]"
        return f"{token}({self.power()})" if callable(NAMES.get(token)) else token


# ---- Sources -----------------------------------------------------------------------------------

FORMATS = {4: (10, 5), 8: (23, 8), 16: (52, 11)}  # digits: fraction bits, exponent bits
PATTERN = r"0x([0-9A-F]{20}|[0-9A-F]{16}|[0-9A-F]{8}|[0-9A-F]{4})(?:_ext)?\b"
ROW = re.compile(r"(\w+) = (?:from_bits|number)?\(?(?:uint\d+_t\{)?" + PATTERN)
ARRAY = re.compile(r"(\w+)(?:\[\w*\])* = (\{[^;=]*\})")
COEFFICIENT = re.compile(r"(root_)?[a-z]\d+(lo)?")  # a row's name
COMMENT = re.compile(
    r"^ *// (?P<equation>[^\n]+? = [^\n]+?(?:\n *// [^\n]+?)*?): (?P<relative>relative )?error"
    r" 2\^(?P<stated>\S+)$",
    re.M,
)


def decoded(digits):
    """The value of an encoding: of an element or, with 20 digits, of an extended number."""
    number = int(digits, 16)
    if len(digits) == 20:
        negative, exponent = number >> 79, (number >> 64 & 0x7FFF) - 16383 - 63
        significand = number & ((1 << 64) - 1)
    else:
        fraction, bits = FORMATS[len(digits)]
        negative, field = number >> fraction + bits, number >> fraction & ((1 << bits) - 1)
        significand = number & ((1 << fraction) - 1) | (1 << fraction if field else 0)
        exponent = max(field, 1) - (1 << bits - 1) + 1 - fraction
    return mp.ldexp(-significand if negative else significand, exponent)


def rows_of(block):
    """Rows by name, and arrays: the elements of all their braces one after the other."""
    block = re.sub(r" *//.*", "", block)
    rows = {name: decoded(digits) for name, digits in ROW.findall(block)}
    for name, elements in ARRAY.findall(block):
        if patterns := re.findall(PATTERN, elements):
            rows[name] = [decoded(digits) for digits in patterns]
    return rows


def block_at(text, at):
    """Where the block lies around that place; from a comment that isn't indented, the next one."""
    end = re.compile(r"^\}", re.M).search(text, at).end()
    if text[at] == "/":
        return at, end
    return [m.start() for m in re.finditer(r"^\w.*[({]$", text[:at], re.M)][-1], end


# ---- Statements --------------------------------------------------------------------------------

AXIS = re.compile(
    r"\|(?P<name>\w+)\| <= (?P<size>[^,]+)"
    r"|(?:(?P<of>\w+) in )?\[(?P<low>[^,]+), (?P<high>(?:[^\[\]]|\[.*?\])+)\]"
)
RANGE = re.compile(r"(?P<axes>.*?)(?:, (?P<number>\w+) = (?P<first>\d+)(?:\.\.(?P<last>\d+))?)?")


def ranges(text, rows):
    """For each of the ranges that "and" joins: the axes (name, low, high) and the number."""

    def bound(text):
        return mpf(eval(Formula(text).code, {**NAMES, "mpf": mpf, **rows, **number}))

    for part in text.split(" and "):
        axes_text, name, first, last = RANGE.fullmatch(part).groups()
        for i in range(int(first or 0), int(last or first or 0) + 1):
            number = {name: mpf(i)} if name else {}
            axes = []
            for axis in AXIS.finditer(axes_text):
                if axis["size"]:
                    axes.append((axis["name"], -bound(axis["size"]), bound(axis["size"])))
                else:
                    axes.append((axis["of"], bound(axis["low"]), bound(axis["high"])))
            yield axes, number


def chebyshev(low, high, count):
    return [
        (low + high - (high - low) * mp.cos(mp.pi * k / count)) / 2 for k in range(count + 1)
    ]


def largest(f, low, high, count):
    """The largest value of a function on an interval, each local one sought out by parabolas."""
    points = chebyshev(low, high, count)
    values = [f(x) for x in points]
    best = max(values)
    for k in range(1, count):
        if values[k] < max(values[k - 1], values[k + 1], best * 0.8):
            continue
        (a, b, c), (fa, fb, fc) = points[k - 1 : k + 2], values[k - 1 : k + 2]
        for _ in range(4):
            d = (b - a) * (fb - fc) - (b - c) * (fb - fa)
            if d == 0:
                break
            x = b - ((b - a) ** 2 * (fb - fc) - (b - c) ** 2 * (fb - fa)) / (2 * d)
            if not a < x < c or x == b:
                break
            fx = f(x)
            if fx > fb:
                a, b, c, fa, fb, fc = (b, x, c, fb, fx, fc) if x > b else (a, x, b, fa, fx, fb)
            else:
                a, c, fa, fc = (a, x, fa, fx) if x > b else (x, c, fx, fc)
        best = max(best, fb)
    return best


class Statement:
    """A comment, and where it stands in the text of its file."""

    def __init__(self, text, match):
        self.match = match
        self.block = block_at(text, match.start() if text[match.start()] == "/" else match.end())
        rows = rows_of(text[slice(*self.block)])
        equation = re.sub(r"\n *// ", " ", match["equation"])
        equation, _, self.ranges = equation.partition(" on ")
        equation, _, parts = equation.partition(" with ")
        function, polynomial = (Formula(side) for side in equation.split(" = "))
        used = function.names | polynomial.names
        code = f"({function.code}, {polynomial.code})"
        for part in parts.split(", ") if parts else []:
            name, definition = part.split(" = ")
            definition = Formula(definition)
            used = used - {name} | definition.names
            code = f"(lambda {name}: {code})({definition.code})"
        self.rows = used & rows.keys()
        self.arguments = sorted(used - rows.keys() - NAMES.keys())
        self.code, self.names = code, {**NAMES, "mpf": mpf, **rows}

    def error_at(self, **arguments):
        exact, approximate = eval(self.compiled, {**self.names, **arguments})
        error = abs(approximate - exact)
        if self.match["relative"]:
            return error / abs(exact) if exact else mpf(0)
        return error

    def measured(self):
        """The exponent of the largest error, rounded up, as the comment has it."""
        self.compiled = compile(self.code, self.match["equation"], "eval")
        over = ranges(self.ranges, self.names) if self.ranges else [([], {})]
        worst = max(self.largest(axes, number) for axes, number in over)
        return f"{float(mp.ceil(mp.log(worst, 2) * 10)) / 10:.1f}"

    def largest(self, axes, numbers):
        """Over one axis after the other."""
        if not axes:
            return self.error_at(**numbers)
        name, low, high = axes[0]
        name = name or next(a for a in self.arguments if a not in numbers)
        count = 24 if numbers or axes[1:] else 80
        return largest(lambda x: self.largest(axes[1:], {**numbers, name: x}), low, high, count)


def coefficients_without_comment(path, text, statements):
    """Coefficients that no statement names."""
    for start in re.finditer(r"^\w.*[({]$", text, re.M):
        if start[0].startswith(("namespace", "extern")):
            continue
        block = block_at(text, start.end())
        named = set().union(*(s.rows for s in statements if s.block[1] == block[1]))
        nameless = [
            name
            for name, row in rows_of(text[slice(*block)]).items()
            if (COEFFICIENT.fullmatch(name) or type(row) is list) and name not in named
        ]
        if nameless:
            yield f"{path}: no comment says what {', '.join(nameless)} are for: {start[0]}"


# Rows of these names hold the number rounded, but for its sign and a power of two.
ROUNDED = {
    **dict.fromkeys(("ln2", "nln2"), mp.ln2),
    "log2e": 1 / mp.ln2,
    "lg2": mp.log10(2),
    "log210": 1 / mp.log10(2),
    **dict.fromkeys(("pi", "pi_half"), mp.pi),
    **dict.fromkeys(("inv_pi", "inv_pi32", "large_inv_pi", "two_over_pi", "inv_step"), 1 / mp.pi),
}


def badly_rounded(path, text):
    for name, digits in re.findall(r"\.(\w+) = " + PATTERN, text):
        if name in ROUNDED:
            with mp.workprec(FORMATS[len(digits)][0] + 1):
                rounded = mp.frexp(+ROUNDED[name])[0]
            if abs(mp.frexp(decoded(digits))[0]) != rounded:
                yield f"{path}: {name} is not rounded to nearest"


def main():
    check = sys.argv[1:] == ["--check"]
    complaints, count = [], 0
    # Tables have generators that compare them.
    files = sorted(f for folder in FOLDERS for f in (ROOT / folder).glob("*.*"))
    for file in [f for f in files if not f.name.endswith("_tables.h")]:
        path, text = file.relative_to(ROOT), file.read_text()
        statements = [Statement(text, match) for match in COMMENT.finditer(text)]
        count += len(statements)
        if len(statements) != len(re.findall(r"// .*2\^-\d+\.\d", text)):
            complaints.append(f"{path}: a comment with an error can't be read")
        if file.name.endswith("_blocks.cpp"):
            complaints += coefficients_without_comment(path, text, statements)
            complaints += badly_rounded(path, text)
        for statement in reversed(statements):
            match, measured = statement.match, statement.measured()
            if measured != match["stated"]:
                line = text[: match.start()].count("\n") + 1
                complaints.append(f"{path}:{line}: error 2^{measured}, not 2^{match['stated']}")
                text = text[: match.start("stated")] + measured + text[match.end("stated") :]
        if not check and text != file.read_text():
            file.write_text(text)
    print(f"{count} statements")
    if complaints:
        print("\n".join(complaints))
        sys.exit(1 if check else 0)


if __name__ == "__main__":
    main()
