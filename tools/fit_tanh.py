#!/usr/bin/env python3
"""Fits the interval polynomials of tanh, and prints the error of every row.

    fit_tanh.py            writes exp/tanh_tables.h
    fit_tanh.py --check    compares the file in the tree with what the fit gives

Row i holds the polynomial in r = |x| - X[i] that gives tanh |x| on its interval. It starts as the
minimax polynomial in relative error (exchange algorithm). Then its coefficients are rounded to the
element type one by one from the constant term up; what a rounding leaves is made good by the next
coefficients, by least squares in units in the last place of the result. So the error is that of the
rounded constant term next to X[i] and becomes smaller away from it, where the evaluation adds
rounding errors of its own.
"""

import struct
import sys
from pathlib import Path

from mpmath import ceil, cos, frexp, log, lu_solve, matrix, mp, mpf, nint, nstr, pi, tanh

mp.prec = 200
FILE = Path(__file__).resolve().parent.parent / "exp/tanh_tables.h"


def decode(pattern):
    """The value of an encoding, given by its hexadecimal digits."""
    return mpf(struct.unpack(">d" if len(pattern) == 16 else ">f", bytes.fromhex(pattern))[0])


class Fit:
    """The intervals of one element type."""

    def __init__(self, element, precision, degree, used, corrected, points, kept, bounds):
        self.element = element
        self.precision = precision  # significant bits
        self.degree = degree
        self.used = used  # degrees that the tiers evaluate
        self.corrected = corrected  # coefficients that make good what a rounding leaves
        self.points = [mpf(v) for v in points.split()]
        self.bounds = [mpf(v) for v in bounds]
        # Rows that are fixed: their bits are part of what the kernels promise.
        self.rows = {i: [decode(v) for v in row.split()] for i, row in kept.items()}
        # Above the last bound the result is 1.
        self.rows[len(self.points) - 1] = [mpf(1)] + degree * [mpf(0)]

    def ulp(self, v):
        return mpf(2) ** (frexp(v)[1] - self.precision)

    def rounded(self, v):
        return nint(v / self.ulp(v)) * self.ulp(v)

    def interval(self, i):
        """r at both ends of interval i."""
        return self.bounds[i] - self.points[i], self.bounds[i + 1] - self.points[i]

    def row(self, i):
        if i not in self.rows:
            self.rows[i] = self.fitted(i)
        return self.rows[i]

    def fitted(self, i):
        at, ends = self.points[i], self.interval(i)
        n = self.degree
        grid = extrema(*ends, 60 * (n + 1))
        c = minimax([tanh(at + r) for r in grid], grid, n)
        grid = extrema(*ends, 8 * (n + 1))
        values = [tanh(at + r) for r in grid]
        # Errors count double where the result's unit is half of that in the rest of the interval.
        weights = [self.ulp(v) ** -2 for v in values]
        c[0] = tanh(at)
        for k in range(n):
            c[k] = self.rounded(c[k])
            rest = [v - evaluate(c, r) for v, r in zip(values, grid)]
            count = min(self.corrected, n - k)
            for j, d in enumerate(least_squares(rest, grid, weights, k + 1, count)):
                c[k + 1 + j] += d
        c[n] = self.rounded(c[n])
        return c

    def error(self, i):
        """The row's largest error in units in the last place of the result, but for the rounding
        errors of its evaluation, and where it lies."""
        errors = []
        for r in extrema(*self.interval(i), 400):
            exact = tanh(self.points[i] + r)
            if exact:
                e = abs(evaluate(self.row(i), r) - exact) / self.ulp(exact)
                errors.append((e, self.points[i] + r))
        return max(errors)

    def relative_error(self, degree):
        """Of the first terms of all rows, as a power of two."""
        worst = 0
        for i in range(len(self.points) - 1):
            for r in extrema(*self.interval(i), 60):
                exact = tanh(self.points[i] + r)
                if exact:
                    worst = max(worst, abs(evaluate(self.row(i)[: degree + 1], r) / exact - 1))
        return f"2^{float(ceil(log(worst, 2) * 10)) / 10:.1f}"

    def encode(self, v):
        if self.element == "double":
            return "0x%016X" % struct.unpack(">Q", struct.pack(">d", float(v)))
        return "0x%08X" % struct.unpack(">I", struct.pack(">f", float(v)))

    def table(self, values, indent):
        per_line = 4 if self.element == "double" else 8
        patterns = [self.encode(v) for v in values]
        return "".join(
            indent + ", ".join(patterns[i : i + per_line]) + ",\n"
            for i in range(0, len(patterns), per_line)
        )

    def text(self):
        rows = [self.row(i) for i in range(len(self.points))]
        errors = ", ".join(f"{self.relative_error(n)} to r^{n}" for n in self.used)
        lines = [
            f"/// tanh(x[i] + r) = c[0][i] + c[1][i] r + ...: relative error {errors}\n"
            f"inline constexpr TanhIntervals<{self.element}, {len(rows)}, {self.degree}> "
            f"tanh_intervals_{self.element} = {{\n    .x = {{{{\n",
            self.table(self.points, "        "),
            "    }},\n    .c = {\n",
        ]
        for k in range(self.degree + 1):
            lines += ["        {{\n", self.table([c[k] for c in rows], "            "), "        }},\n"]
        return "".join(lines) + "    },\n};\n"

    def report(self):
        for i in range(len(self.points) - 1):
            e, x = self.error(i)
            print(f"{self.element} row {i:2}: {nstr(e, 4)} ulp at {nstr(x, 8)}")


def extrema(low, high, n):
    """n + 1 points, dense at the ends."""
    return [(low + high) / 2 - (high - low) / 2 * cos(pi * i / n) for i in range(n + 1)]


def evaluate(c, r):
    p = mpf(0)
    for v in reversed(c):
        p = p * r + v
    return p


def minimax(f, grid, n):
    """The polynomial of degree n with the least largest relative error on the grid: its error has
    that size, with alternating signs, at n + 2 points, which are exchanged until they stay."""
    chosen = [round(i * (len(grid) - 1) / (n + 1)) for i in range(n + 2)]
    for _ in range(30):
        system, right = matrix(n + 2), matrix(n + 2, 1)
        for i, j in enumerate(chosen):
            for k in range(n + 1):
                system[i, k] = grid[j] ** k / f[j]
            system[i, n + 1] = (-1) ** i
            right[i] = 1
        solution = lu_solve(system, right)
        c, level = list(solution[: n + 1]), abs(solution[n + 1])
        errors = [evaluate(c, r) / v - 1 for r, v in zip(grid, f)]
        if max(map(abs, errors)) < level * (1 + mpf(10) ** -6):
            break
        runs = []  # the largest error of every run of one sign
        for j, e in enumerate(errors):
            if runs and (e > 0) == (errors[runs[-1]] > 0):
                if abs(e) > abs(errors[runs[-1]]):
                    runs[-1] = j
            else:
                runs.append(j)
        while len(runs) > n + 2:
            runs.pop(0 if abs(errors[runs[0]]) < abs(errors[runs[-1]]) else -1)
        chosen = runs
    return c


def least_squares(values, grid, weights, first, count):
    """Coefficients of r^first and the next powers, for the least sum of weighted squares."""
    scale = max(map(abs, grid))
    basis = [[w * (r / scale) ** (first + j) for j in range(count)] for r, w in zip(grid, weights)]
    system, right = matrix(count), matrix(count, 1)
    for i in range(count):
        for j in range(count):
            system[i, j] = sum(b[i] * b[j] for b in basis)
        right[i] = sum(b[i] * w * v for b, w, v in zip(basis, weights, values))
    solution = lu_solve(system, right)
    return [solution[j] / scale ** (first + j) for j in range(count)]


DOUBLE = Fit(
    "double",
    53,
    16,
    (16, 10),
    4,
    "0 0.21875 0.3125 0.4375 0.625 0.875 1.25 1.75 2.5 3.5 5 7 10 14 20 0",
    {
        0: "0000000000000000 3FF0000000000000 BBF0B3EA3FDFAA19 BFD5555555555555 BCE6863EE44ED636 "
        "3FC1111111112AB5 BDA1EA19DDDDB3B4 BFABA1BA1990520B BE351CA7F096011F 3F9664F94E6AC14E "
        "BEA8C4C1FD7852FE BF822404577AA9DD BEFDD99A221ED573 3F6E3BE689423841 BF2A1306713A4F3A "
        "BF55D7E76DC56871 3F35E67AB76A26E7",
        8: "3FEF9258260A71C2 3F9B3AFE1FBA5C76 BF9ADDAE58C7141A 3F916DF44871EFC8 BF807B55C1C7D278 "
        "3F67682AFA611151 BF4793826F78537E 3F14CFFCFA69FBB6 3F04055BCE68597A BF00462601DC2FAA "
        "3EEC12EADD55BE7A BED13C415F7B9D41 3EAB9008BCA408AF BE24B645E68EEAA3 BE792FA6323B7CF8 "
        "3E6FFD0766AD4016 BE567E924BF5FF6E",
    },
    [0, 0.1875, 0.25, 0.375, 0.5, 0.75, 1, 1.5, 2, 3, 4, 6, 8, 12, 16, 24],
)
FLOAT = Fit(
    "float",
    24,
    6,
    (6,),
    6,
    "0 0.05859375 0.0703125 0.0859375 0.1015625 0.1171875 0.140625 0.171875 0.203125 0.234375 "
    "0.28125 0.34375 0.40625 0.46875 0.5625 0.6875 0.8125 0.9375 1.125 1.375 1.625 1.875 2.25 2.75 "
    "3.25 3.75 4.5 5.5 6.5 7.5 9 0",
    {
        0: "00000000 3F800000 B0343C7B BEAAAAA5 B76DD6B9 3E0910E9 BC0E2F66",
        16: "3F2BC480 3F0CBFE7 BEBCE070 3D839143 3DA38508 BD795BED 3C1D7BFB",
        30: "3F7FFFFF 338306C6 B383012C 332B3CB6 B2AB78AC 322487B0 B15A1F04",
    },
    [0] + [decode("%08X" % (0x3D400000 + i * 0x200000)) for i in range(1, 32)],
)


def main():
    text = (
        "// The polynomials of tanh on its intervals.\n// Written by tools/fit_tanh.py.\n"
        '// clang-format off\n#pragma once\n\n#include "exp/tanh.h"\n\nnamespace zorp {\n\n'
        + DOUBLE.text()
        + "\n"
        + FLOAT.text()
        + "\n}  // namespace zorp\n"
    )
    if sys.argv[1:] == ["--check"]:
        if FILE.read_text() != text:
            sys.exit(f"{FILE.name} differs from the fit")
    else:
        FILE.write_text(text)
        DOUBLE.report()
        FLOAT.report()


if __name__ == "__main__":
    main()
