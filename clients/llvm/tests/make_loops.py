#!/usr/bin/env python3
"""Writes a C file with a loop for each call that the plugin should vectorise.

    make_loops.py GENERATE > loops.c

GENERATE is the tool zorp_generate. The file is compiled twice: with the plugin, and without it but
with -DREFERENCE, where every loop calls the kernel of width 1.
"""

import csv
import subprocess
import sys
from dataclasses import dataclass

LETTERS = {"double": "", "float": "f", "half": "s"}
C_TYPES = {"half": "_Float16"}
C_SUFFIX = {"double": "", "float": "f", "half": "f16"}

# Functions of the C library that never set errno under -fno-math-errno.
C_LIBRARY = """acos acosh asin asinh atan atan2 atanh cbrt cos cosh erf erfc exp exp2 expm1 fdim
fmod hypot ldexp log log10 log1p log2 logb nextafter pow remainder sin sinh tan tanh
tgamma""".split()
# Intrinsics: the compiler's built-in functions of all types, and those with the type in their name.
ELEMENTWISE = """acos asin atan cos cosh exp exp2 log log10 log2 pow sin sinh tan tanh""".split()
BUILTINS = {"__builtin_exp10": "exp10", "__builtin_scalbn": "ldexp"}
HALF_BUILTINS = {"__builtin_fmod": "fmod", "__builtin_exp10": "exp10"}


@dataclass(frozen=True)
class Loop:
    name: str
    call: str
    kernel: str  # of width 1
    operands: list
    results: list  # the second one is stored through a pointer


def signatures(generate):
    """Kernels of width 1 that return one result, by symbol."""
    table = subprocess.run([generate, "signatures"], check=True, capture_output=True, text=True)
    return {
        row["symbol"]: row
        for row in csv.DictReader(table.stdout.splitlines(), delimiter="\t")
        if row["width"] == "1" and "," not in row["results"]
    }


def loops(generate):
    kernels = signatures(generate)

    def loop(name, call, kernel):
        row = kernels[kernel]
        results = [lane for lane in (row["results"], row["pointer"]) if lane != "-"]
        return Loop(name, call, kernel, row["operands"].split(","), results)

    def of_program(name, call, family, element):
        letter = LETTERS[element]
        return loop(f"{name}_{element}", call, f"__zorp_z1_{family}{letter}1")

    found = [loop(f"own_{symbol[10:]}", symbol, symbol) for symbol in kernels]
    for element in ("double", "float"):
        suffix = C_SUFFIX[element]
        found += [of_program(f"c_{name}", name + suffix, name, element) for name in C_LIBRARY]
        found += [
            of_program(name[2:], name + suffix, family, element)
            for name, family in BUILTINS.items()
        ]
    for element in LETTERS:
        found += [
            of_program(f"elementwise_{name}", f"__builtin_elementwise_{name}", name, element)
            for name in ELEMENTWISE
        ]
    found += [
        of_program(name[2:], name + "f16", family, "half") for name, family in HALF_BUILTINS.items()
    ]
    return found


def text(loop):
    operands = [C_TYPES.get(lane, lane) for lane in loop.operands]
    results = [C_TYPES.get(lane, lane) for lane in loop.results]
    parameters = operands + [f"{second}*" for second in results[1:]]
    arguments = [f"{name}[i]" for name, _ in zip("xyz", operands)] + ["s + i"] * (len(results) - 1)
    lines = [f"{results[0]} {loop.kernel}({', '.join(parameters)});", f"LOOP({loop.name}) {{"]
    lines += [f"  {lane}* {name} = {name}_;" for name, lane in zip("rs", results)]
    lines += [f"  const {lane}* {name} = {name}_;" for name, lane in zip("xyz", operands)]
    lines += [
        "  for (int i = 0; i < kElements; ++i)",
        f"    r[i] = CALL({loop.call}, {loop.kernel})({', '.join(arguments)});",
        "}",
    ]
    return "\n".join(lines)


def main():
    found = loops(sys.argv[1])
    print('#include <math.h>\n\n#include "loops.h"\n')
    print("#ifdef REFERENCE\n#define NAME(loop) reference_##loop")
    print("#define CALL(program, kernel) kernel")
    print("#else\n#define NAME(loop) loop_##loop\n#define CALL(program, kernel) program\n#endif")
    print("#define LOOP(name) void NAME(name) PARAMETERS\n")
    print("\n".join(text(loop) for loop in found))
    print("\nconst Loop NAME(table)[] = {")
    for loop in found:
        # d, f, h; all integers are alike.
        codes = "".join(lane[0].replace("u", "i") for lane in loop.operands)
        sizes = [f"sizeof({C_TYPES.get(lane, lane)})" for lane in loop.results]
        print(f'    {{"{loop.name}", NAME({loop.name}), "{codes}", {{{", ".join(sizes)}}}}},')
    print("    {0}};")


if __name__ == "__main__":
    main()
