#!/usr/bin/env python3
"""Times plain loops that were compiled with the pass plugin, and writes their table.

    llvm_performance.py PROGRAM [--repetitions N] [--document FILE]

PROGRAM is llvm_loops, of clients/llvm/bench. The text between the two markers of the document is
replaced. Every time is the least of the repetitions.
"""

import argparse
import datetime
import subprocess
from pathlib import Path

from performance import ROOT, number, processor, table

BEGIN, END = "<!-- llvm loops: begin -->", "<!-- llvm loops: end -->"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("--repetitions", type=int, default=500)
    parser.add_argument("--document", type=Path, default=ROOT / "docs" / "performance.md")
    arguments = parser.parse_args()

    command = [arguments.program, str(arguments.repetitions)]
    times = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    rows = []
    for line in times.splitlines():
        name, *measured = line.split()
        plain, kernels, library = map(float, measured)
        cells = [number(value, 3) for value in (library, plain, kernels)]
        rows.append([name, *cells, number(plain / kernels, 2)])
    lines = [
        f"- Processor: {processor()}",
        f"- Least of {arguments.repetitions} repetitions, on {datetime.date.today()}",
        "",
        *table(["loop", "without plugin", "with plugin", "by hand", "ratio"], rows),
        "",
    ]
    before, rest = arguments.document.read_text().split(BEGIN)
    after = rest.split(END)[1]
    arguments.document.write_text("\n".join([before + BEGIN, "", *lines]) + END + after)


if __name__ == "__main__":
    main()
