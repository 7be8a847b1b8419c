#!/usr/bin/env python3
"""Writes a C file with a loop for each call that the plugin should vectorise.

    make_loops.py GENERATE > loops.c

GENERATE is the tool zorp_generate. The file is compiled twice: with the plugin, and with -DREFERENCE
without it, where every loop calls the kernel of width 1. Each loop is named loop_ and the kernel.
"""

import csv
import subprocess
import sys
from dataclasses import dataclass

LETTERS = {"double": "", "float": "f", "half": "s"}
C_TYPES = {"half": "_Float16"}
C_SUFFIX = {"double": "", "float": "f", "half": "f16"}

# Functions of the C library that never set errno under -fno-math-errno.
C_LIBRARY = """acos acosh asin asinh atan atan2 atanh cbrt cos cosh erf erfc exp exp2 expm1 fdim fmod
hypot ilogb ldexp log log10 log1p log2 logb nextafter pow remainder sin sinh tan tanh tgamma""".split()
# Intrinsics: the compiler's built-in functions of all types, and those with the type in their name.
ELEMENTWISE = """acos asin atan cos cosh exp exp2 log log10 log2 pow sin sinh tan tanh""".split()
BUILTINS = {"__builtin_exp10": "exp10", "__builtin_scalbn": "ldexp"}
HALF_BUILTINS = {"__builtin_fmod": "fmod", "__builtin_exp10": "exp10"}


@dataclass(frozen=True)
class Loop:
    name: str
    call: str  # {} stands for the operands
    kernel: str  # of width 1
    operands: tuple
    result: str


def signatures(generate):
    """Kernels of width 1 that return one result, by symbol."""
    table = subprocess.run([generate, "signatures"], check=True, capture_output=True, text=True)
    return {
        row["symbol"]: row
        for row in csv.DictReader(table.stdout.splitlines(), delimiter="\t")
        if row["width"] == "1" and row["pointer"] == "-" and "," not in row["results"]
    }


def loops(generate):
    kernels = signatures(generate)

    def loop(name, call, family, element):
        kernel = f"__zorp_z1_{family}{LETTERS[element]}1"
        row = kernels[kernel]
        suffix = LETTERS[element]
        return Loop(f"{name}{suffix}", call, kernel, tuple(row["operands"].split(",")), row["results"])

    found = [
        Loop(f"own_{symbol[10:]}", symbol, symbol, tuple(row["operands"].split(",")), row["results"])
        for symbol, row in kernels.items()
    ]
    for element in ("double", "float"):
        suffix = C_SUFFIX[element]
        found += [loop(f"c_{name}_", name + suffix, name, element) for name in C_LIBRARY]
        found += [loop(f"{name[2:]}_", name + suffix, family, element) for name, family in BUILTINS.items()]
    for element in LETTERS:
        found += [
            loop(f"elementwise_{name}_", f"__builtin_elementwise_{name}", name, element)
            for name in ELEMENTWISE
        ]
    found += [loop(f"{name[2:]}_", name + "f16", family, "half") for name, family in HALF_BUILTINS.items()]
    return found


def text(loop):
    arguments = ", ".join(f"{operand}[i]" for operand in "xyz"[: len(loop.operands)])
    types = [C_TYPES.get(lane, lane) for lane in loop.operands]
    result = C_TYPES.get(loop.result, loop.result)
    lines = [
        f"{result} {loop.kernel}({', '.join(types)});",
        f"void NAME({loop.name})(void* restrict r_, const void* restrict x_, const void* restrict y_,",
        "    const void* restrict z_) {",
        f"  {result}* r = r_;",
    ]
    lines += [f"  const {lane}* {name} = {name}_;" for name, lane in zip("xyz", types)]
    lines += [
        "  for (int i = 0; i < 256; ++i)",
        f"    r[i] = CALL({loop.call}, {loop.kernel})({arguments});",
        "}",
    ]
    return "\n".join(lines)


def main():
    found = loops(sys.argv[1])
    print('#define __STDC_WANT_IEC_60559_TYPES_EXT__\n#include <math.h>\n#include "loops.h"\n')
    print("#ifdef REFERENCE\n#define NAME(loop) reference_##loop\n#define CALL(program, kernel) kernel")
    print("#else\n#define NAME(loop) loop_##loop\n#define CALL(program, kernel) program\n#endif\n")
    print("\n".join(text(loop) for loop in found))
    print("\nconst Loop NAME(table)[] = {")
    for loop in found:
        codes = "".join(lane[0] if lane[0] != "i" and lane[0] != "u" else "i" for lane in loop.operands)
        result = C_TYPES.get(loop.result, loop.result)
        print(f'    {{"{loop.name}", NAME({loop.name}), sizeof({result}), "{codes}"}},')
    print("    {0}};")


if __name__ == "__main__":
    main()
