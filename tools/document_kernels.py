#!/usr/bin/env python3
"""Writes docs/kernels.md: every family with its kernels, errors and speed.

    document_kernels.py GENERATE [--check]

GENERATE is the tool zorp_generate. Errors and times are taken from docs/accuracy.md and
docs/performance.md; what isn't measured yet stays empty. --check compares the file instead of
writing it, and exits with 1 if it differs.
"""

import argparse
import difflib
import math
import re
import sys
from itertools import groupby

from machine_code import descriptions
from measured import ROOT, algorithms, conditions

DOCUMENT = ROOT / "docs" / "kernels.md"
# Chapters, by the folder that has a family's code.
CHAPTERS = {
    "exp": "Exponentials and hyperbolic functions",
    "log": "Logarithms and inverse hyperbolic functions",
    "trig": "Circular functions",
    "invtrig": "Inverse circular functions",
    "pow": "Powers and roots of any degree",
    "arith": "Division, square roots, fused multiply-add",
    "special": "Error and gamma functions",
    "exact": "Rounding, parts of numbers, selection, remainders",
    "intdiv": "Integer division",
    "convert": "Conversions",
}
SUFFIXES = {"standard": "standard", "native": "`_native`", "half": "`_half`", "rm": "`_rm`"}
RARE_LANES = {"V": "", "S": "path", "C": "scalar", "SC": "path, scalar", "A": "all scalar"}
USUAL_WIDTHS = {"double": [1, 2, 3, 4, 8, 16], "float": [1, 2, 3, 4, 8, 16, 32]}

INTRODUCTION = """# Kernels

Every family of functions, with the C functions of one full register, what they give for special
operands, how they compute, how precise and how fast they are. Written by the target `documents`
(`tools/document_kernels.py`) from the grammar of the names, [accuracy.md](accuracy.md) and
[performance.md](performance.md), which tell how errors and times were measured.
[contract.md](contract.md) has names, registers and the ways to call.
"""
EXPLANATION = """## How to read

A kernel's name is that of its C function behind two more underscores: `__zorp_z1_exp8`. All
families come in widths 1, 2, 3, 4, 8 and 16, those of float and half in 32, too, unless noted.

- *Tiers*: joined by = where they are one code; write the suffix behind the width: `exp8_native`.
- *Error*: the largest found, in units in the last place (2^n: that many); *exact*: the one right
  result, bit for bit.
- *Rare lanes*: who serves operands that the straight code can't: a second *path* for the whole
  vector, or a *scalar* routine, lane by lane. Nothing there: the straight code serves all.
- *Cycles*, *latency*: of one call of a full register, calls independent or each waiting for the
  one before.
- *SLEEF*, *C library*: our time by theirs, below 1 we are faster: a full register beside SLEEF's
  function of that precision, one lane beside the scalar function. Nothing there: no such function,
  or not measured yet.

![Times by those of SLEEF and of the C library](times.svg)
![Largest errors](errors.svg)

Measured so:
"""


def folders():
    """The folder of each group of families."""
    found = {}
    for folder in CHAPTERS:
        text = (ROOT / folder / "kernels.cmake").read_text()
        for groups in re.findall(r"GROUPS\s+([a-z0-9\s]+)", text):
            found.update((group, folder) for group in groups.split())
    return found


def number(value, digits=0):
    return "" if value is None else f"{value:.{digits}f}"


def error_text(algorithm, measured_families):
    if algorithm.family not in measured_families:
        return "exact"
    if algorithm.error is None:
        return ""
    if algorithm.error < 100:
        return number(algorithm.error, 3)
    return f"2^{math.ceil(10 * math.log2(algorithm.error)) / 10:.1f}"


def ratio_text(speed):
    if speed is None or speed.ratio is None:
        return ""
    accuracy = re.search(r" (u\d+)$", speed.rival)
    return number(speed.ratio, 2) + (f" ({accuracy[1]})" if accuracy else "")


def table(header, rows):
    lines = [header, ["---"] * len(header), *rows]
    return ["| " + " | ".join(cells) + " |" for cells in lines]


def type_text(algorithm):
    lanes = algorithm.wide["operands"].split(",")[:1] + algorithm.wide["results"].split(",")
    if any(lane in ("double", "float", "half") for lane in lanes):
        return algorithm.element
    return lanes[0].removesuffix("_t")


def speed_cells(algorithm):
    speed = algorithm.register
    return [number(speed.cycles, 1), number(speed.latency)] if speed else ["", ""]


def tier_table(members, measured_families):
    """One family: a line for each of its algorithms."""
    header = ["Type", "Tiers", "Error", "Rare lanes", "Cycles", "Latency", "SLEEF", "C library"]
    rows = [
        [
            type_text(a),
            " = ".join(SUFFIXES[tier] for tier in a.tiers),
            error_text(a, measured_families),
            RARE_LANES[a.wide["class"]],
            *speed_cells(a),
            ratio_text(a.register),
            ratio_text(a.lane),
        ]
        for a in members
    ]
    return table(header, rows)


def field_table(members, words):
    """Conversions that differ in rounding and saturation: a line for each, both types beside."""
    elements = list(dict.fromkeys(a.element for a in members))
    header = ["Function", "Gives", "Special operands"]
    header += [f"{element}: {what}" for element in elements for what in ("cycles", "latency")]
    rows = []
    for family, of_family in groupby(members, lambda a: a.family):
        cells = [cell for a in of_family for cell in speed_cells(a)]
        text = words[family]
        rows.append([f"`{family}`", text["value"], text["special"], *cells])
    return table(header, rows)


def section(group, members, words, measured_families):
    """A group of families that share their code: one family, or the conversions of one kind."""
    families = list(dict.fromkeys(a.family for a in members))
    first = words[families[0]]
    standard = [a for a in members if a.tiers[0] == "standard" and a.family == families[0]]
    lines = ["", f"### {group}", ""]
    if len(families) == 1:
        lines += [first["value"], ""]
        if first["special"]:
            lines += [f"Special operands: {first['special']}", ""]
    lines += [f"Method: {first['method']}", ""]
    for a in standard:
        usual = USUAL_WIDTHS["double" if a.element == "double" else "float"]
        if a.widths != usual:
            lines += [f"Widths of {a.element}: {', '.join(map(str, a.widths))}.", ""]
    lines += ["```c", *[a.wide["prototype"] + ";" for a in standard], "```", ""]
    if len(families) == 1:
        return lines + tier_table(members, measured_families)
    return lines + field_table(members, words)


def document(generate):
    words, folder_of = descriptions(generate), folders()
    found = algorithms(generate)
    measured_families = {a.family for a in found if a.error is not None}
    groups = {}
    for algorithm in found:
        groups.setdefault(words[algorithm.family]["group"], []).append(algorithm)
    chapters = {folder: [g for g in groups if folder_of[g] == folder] for folder in CHAPTERS}

    lines = INTRODUCTION.splitlines() + [""]
    lines += table(
        ["Chapter", "Families"],
        [
            [CHAPTERS[folder], " ".join(f"[{group}](#{group})" for group in members)]
            for folder, members in chapters.items()
        ],
    )
    lines += ["", *EXPLANATION.splitlines(), "", *conditions()]
    for folder, members in chapters.items():
        lines += ["", f"## {CHAPTERS[folder]}"]
        for group in members:
            lines += section(group, groups[group], words, measured_families)
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("generate")
    parser.add_argument("--check", action="store_true", help="compare instead of writing")
    arguments = parser.parse_args()

    text = document(arguments.generate)
    if not arguments.check:
        DOCUMENT.write_text(text)
        return
    old = DOCUMENT.read_text()
    if old != text:
        lines = old.splitlines(), text.splitlines()
        changes = difflib.unified_diff(*lines, "there", "due", n=0, lineterm="")
        print(*list(changes)[:40], sep="\n")
        sys.exit(f"{DOCUMENT.name} isn't what its inputs give: build the target `documents`")


if __name__ == "__main__":
    main()
