#!/usr/bin/env python3
"""Checks the machine code of a built library.

    fast_paths.py LIBRARY GENERATE [--half]

LIBRARY is libzorp_z1.so, GENERATE the tool zorp_generate of the same build. For every kernel of one
register or less, the fast path runs from the entry to the first return without taking a jump. It

- has no jump but one, out of the fast path, where the kernel serves special lanes elsewhere;
- calls nothing;
- touches no stack.

Kernels of half are left out: their emulation is long code of another shape. --half lists what they
would violate, for the native flavour; it is no failure. Kernels that hand every lane to a rare
routine have no fast path. In all of the code,

- registers that belong to the caller (zmm16 to zmm31, k4 to k7) don't occur;
- MXCSR is neither read nor written.

Exceptions stand with their reasons in fast_paths.allow beside this script: a line has a pattern of
kernel names, what is allowed (jump, call, stack), and why. One that excuses nothing is an error as
soon as the library has a kernel that it speaks of. Exits with 1 if anything is violated.
"""

import argparse
import fnmatch
import re
import sys
from pathlib import Path

from machine_code import PREFIX, Library, signatures

ALLOWED = Path(__file__).with_name("fast_paths.allow")
FULL_WIDTH = {"double": 8, "float": 16, "half": 32}
CALLERS_REGISTER = re.compile(r"\b(?:[xyz]mm(?:1[6-9]|2\d|3[01])|k[4-7])\b")
STACK_OPERAND = re.compile(r"\b[re]?[sb]pl?\b")
STACK_MNEMONICS = {"push", "pop", "pushf", "popf", "enter", "leave"}
MXCSR_MNEMONICS = re.compile(r"v?(?:ld|st)mxcsr|fx(?:save|rstor)\w*|xsave\w*|xrstor\w*")


class Exceptions:
    def __init__(self, path):
        self.rules = []
        for line in path.read_text().splitlines():
            if line and not line.startswith("#"):
                pattern, what, reason = line.split(maxsplit=2)
                assert reason and what in ("jump", "call", "stack"), line
                self.rules.append((pattern, what))
        self.used = set()

    def allow(self, kernel, what):
        found = [r for r in self.rules if r[1] == what and fnmatch.fnmatchcase(kernel, r[0])]
        self.used.update(found)
        return bool(found)

    def unused(self, kernels):
        for pattern, what in self.rules:
            if (pattern, what) not in self.used and fnmatch.filter(kernels, pattern):
                yield f"fast_paths.allow: {pattern} needs no {what}"


def violations(path, serves_special_lanes):
    """What a fast path does that it shouldn't, as pairs (what, description)."""
    jumps = 0
    for instruction in path:
        where = f"{instruction.address:x}: {instruction.text}"
        if instruction.mnemonic == "call":
            yield "call", where
        elif instruction.mnemonic == "jmp":
            yield "jump", where
        elif instruction.is_conditional_jump:
            jumps += 1
            leaves = not path[0].address <= instruction.target <= path[-1].address
            if not serves_special_lanes:
                yield "jump", f"{where}, but every lane is served here"
            elif jumps > 1:
                yield "jump", f"{where}, the second one"
            elif not leaves:
                yield "jump", f"{where}, inside the fast path"
        elif instruction.mnemonic in STACK_MNEMONICS or STACK_OPERAND.search(instruction.operands):
            yield "stack", where


def check_kernels(library, table, exceptions):
    checked, failures, notes = 0, [], []
    for symbol in sorted(library.kernels):
        kernel = table[symbol]
        if kernel["width"] > FULL_WIDTH[kernel["element"]] or kernel["class"] == "A":
            continue
        name = symbol.removeprefix(PREFIX)
        found = violations(library.fast_path(symbol), kernel["class"] != "V")
        if kernel["element"] == "half":
            notes += [f"{name}: {what}: {text}" for what, text in found]
            continue
        checked += 1
        failures += [
            f"{name}: {what}: {text}" for what, text in found if not exceptions.allow(name, what)
        ]
    return checked, failures, notes


def check_code(library):
    for instruction in library.code:
        if CALLERS_REGISTER.search(instruction.operands):
            yield f"{instruction.address:x}: {instruction.text}: a register of the caller's"
        if MXCSR_MNEMONICS.fullmatch(instruction.mnemonic):
            yield f"{instruction.address:x}: {instruction.text}: MXCSR"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("generate")
    parser.add_argument("--half", action="store_true", help="list what kernels of half violate")
    arguments = parser.parse_args()

    library = Library(arguments.library)
    exceptions = Exceptions(ALLOWED)
    checked, failures, notes = check_kernels(library, signatures(arguments.generate), exceptions)
    failures += check_code(library)
    failures += exceptions.unused([s.removeprefix(PREFIX) for s in library.kernels])
    if checked == 0:
        failures.append("no kernel found")

    for failure in failures:
        print(failure)
    if arguments.half:
        for note in notes:
            print(f"(half) {note}")
    print(f"{checked} fast paths, {len(library.code)} instructions: {len(failures)} violations")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
