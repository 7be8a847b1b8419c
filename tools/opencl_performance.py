#!/usr/bin/env python3
"""Times the built-ins of OpenCL C under PoCL, with the layer and without it.

    opencl_performance.py served MEASURE LAYER     writes clients/opencl/layer/served.txt: which
                                                   built-ins the kernels serve by default
    opencl_performance.py document MEASURE LAYER   writes the table of docs/performance.md, between
                                                   its markers

MEASURE is the program zorp_opencl_measure, LAYER libzorp_z1_opencl_layer.so. --rounds N measures so
often; a time is the least of all rounds. --times FILE keeps what was measured; a file that exists
already is taken instead of a measurement.
"""

import argparse
import math
import os
import subprocess
from collections import defaultdict
from pathlib import Path

from performance import processor

ROOT = Path(__file__).resolve().parent.parent
SERVED = ROOT / "clients" / "opencl" / "layer" / "served.txt"
DOCUMENT = ROOT / "docs" / "performance.md"
BEGIN, END = "<!-- opencl: begin -->", "<!-- opencl: end -->"
# A kernel serves if it takes less than this part of the time: what is less than noise is no gain.
LEAST_GAIN = 0.95
COLUMNS = {"double": (1, 8), "float": (1, 4, 16)}


def measure(program, layer, mode, rounds, keep):
    """Least times in ns an element: by signature and element type, then width: (own, layer's)."""
    if keep and keep.exists():
        text = keep.read_text()
    else:
        environment = {**os.environ, "ZORP_Z1_OPENCL": mode}
        options = {"check": True, "env": environment, "stdout": subprocess.PIPE, "text": True}
        text = ""
        for _ in range(rounds):
            text += subprocess.run([program, layer], **options).stdout
        if keep:
            keep.write_text(text)
    times = defaultdict(dict)
    for line in text.splitlines():
        signature, element, width, *pair = line.split("\t")
        by_width = times[signature, element]
        before = by_width.get(int(width), (math.inf, math.inf))
        by_width[int(width)] = tuple(min(old, float(new)) for old, new in zip(before, pair))
    return times


def write_served(times):
    lines = [
        "# The built-ins that kernels serve by default: faster than the runtime's own, by",
        "# tools/opencl_performance.py. Signature: widths.",
    ]
    for (signature, _), by_width in times.items():
        faster = [width for width, (own, kernel) in by_width.items() if kernel < LEAST_GAIN * own]
        if faster:
            lines.append(f"{signature}: {' '.join(map(str, faster))}")
    SERVED.write_text("\n".join(lines) + "\n")


def served():
    """The widths that SERVED lists, by signature."""
    table = {}
    for line in SERVED.read_text().splitlines():
        if not line.startswith("#"):
            signature, widths = line.split(":")
            table[signature] = {int(width) for width in widths.split()}
    return table


def geometric_mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios)) if ratios else 1


def table(times, by_kernel, is_conversion):
    """The rows of functions or of conversions, after a line that sums them up."""
    rows, ratios = {}, []
    for (signature, element), by_width in times.items():
        name, operand = signature.split()
        if name.startswith("convert_") != is_conversion:
            continue
        row = rows.setdefault(signature if is_conversion else name, {})
        for width in COLUMNS[element]:
            own, layer = by_width[width]
            if width in by_kernel.get(signature, ()):
                ratios.append(own / layer)
                row[element, width] = f"{own:.3g} → {layer:.3g}"
            else:
                ratios.append(1)
                row[element, width] = f"{own:.3g}"
    columns = [(element, width) for element, widths in COLUMNS.items() for width in widths]
    names = [element + (str(width) if width > 1 else "") for element, width in columns]
    faster = [ratio for ratio in ratios if ratio != 1]
    lines = [
        f"{len(ratios)} entries, {len(faster)} by kernels, the slowest of them {min(faster):.2f} "
        f"times as fast; geometric mean of all {geometric_mean(ratios):.2f} times as fast, of "
        f"those by kernels {geometric_mean(faster):.2f}.",
        "",
        "| built-in | " + " | ".join(names) + " |",
        "|" + " :-- |" + " --: |" * len(columns),
    ]
    lines += [
        f"| `{name}` | " + " | ".join(row.get(column, "") for column in columns) + " |"
        for name, row in rows.items()
    ]
    return lines + [""]


def write_document(times, rounds):
    by_kernel = served()
    load = ", ".join(f"{average:.1f}" for average in os.getloadavg())
    lines = [f"- Processor: {processor()}", f"- Rounds: {rounds}; load average: {load}", ""]
    lines += ["### OpenCL C, functions", ""] + table(times, by_kernel, False)
    lines += ["### OpenCL C, conversions", ""] + table(times, by_kernel, True)
    before, rest = DOCUMENT.read_text().split(BEGIN)
    after = rest.split(END)[1]
    DOCUMENT.write_text("\n".join([before + BEGIN, "", *lines]) + END + after)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("what", choices=["served", "document"])
    parser.add_argument("measure")
    parser.add_argument("layer")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--times", type=Path)
    arguments = parser.parse_args()
    # Which kernels are faster shows where all serve; what a user gets, by default.
    mode = "all" if arguments.what == "served" else ""
    times = measure(arguments.measure, arguments.layer, mode, arguments.rounds, arguments.times)
    if arguments.what == "served":
        write_served(times)
    else:
        write_document(times, arguments.rounds)


if __name__ == "__main__":
    main()
