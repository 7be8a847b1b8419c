#!/usr/bin/env python3
"""Times ordinary loops as compilers make them, with and without the clients, and writes the tables.

    loop_performance.py TIME_LOOPS FILE... [--repetitions N] [--document FILE]

TIME_LOOPS is the program of bench/loops, FILE a shared object that it times: COMPILER_CLIENT.so, or
by_hand.so. The text between the two markers of the document is replaced. Every time is the least of
the repetitions.
"""

import argparse
import datetime
import os
import subprocess
from pathlib import Path

from performance import ROOT, number, processor, table

BEGIN, END = "<!-- loops: begin -->", "<!-- loops: end -->"
BY_HAND, NONE = "by_hand", "none"


def measure(program, files, repetitions):
    """ns/element by loop and by file's stem."""
    command = [program, str(repetitions), *files]
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    times = {}
    for line in lines.splitlines():
        path, loop, time = line.split()
        times.setdefault(loop, {})[Path(path).stem] = float(time)
    return times


def black_scholes(times):
    header = ["compiler", "client", "ns/option", "to without", "to by hand"]
    rows = []
    for name, time in times.items():
        compiler, _, client = name.rpartition("_")
        if name == BY_HAND:
            rows.append(["(by hand, g++)", "", number(time, 2), "", number(1, 2)])
            continue
        without = times[f"{compiler}_{NONE}"]
        speed = "" if client == NONE else number(time / without, 2)
        ratio = number(time / times[BY_HAND], 2)
        rows.append([compiler, "" if client == NONE else client, number(time, 2), speed, ratio])
    return table(header, rows)


def functions(times):
    names = [n for n in next(iter(times.values())) if n != BY_HAND and not n.endswith("_" + NONE)]
    header = ["loop", "C library", "by hand"]
    for name in names:
        header += [name.replace("_", " "), "ratio"]
    rows = []
    for loop, found in times.items():
        row = [loop.removesuffix("_loop"), number(found["gcc_" + NONE], 3), number(found[BY_HAND], 3)]
        for name in names:
            row += [number(found[name], 3), number(found[name] / found[BY_HAND], 2)]
        rows.append(row)
    return table(header, rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("files", nargs="+")
    parser.add_argument("--repetitions", type=int, default=300)
    parser.add_argument("--document", type=Path, default=ROOT / "docs" / "performance.md")
    arguments = parser.parse_args()

    load = ", ".join(f"{average:.1f}" for average in os.getloadavg())
    times = measure(arguments.program, arguments.files, arguments.repetitions)
    options = times.pop("black_scholes")
    lines = [
        f"- Processor: {processor()}",
        f"- Least of {arguments.repetitions} repetitions, on {datetime.date.today()}; load average "
        f"at the start: {load}",
        "",
        "### Black-Scholes",
        "",
        *black_scholes(options),
        "",
        "### One function",
        "",
        *functions(times),
        "",
    ]
    before, rest = arguments.document.read_text().split(BEGIN)
    after = rest.split(END)[1]
    arguments.document.write_text("\n".join([before + BEGIN, "", *lines]) + END + after)


if __name__ == "__main__":
    main()
