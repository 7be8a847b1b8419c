#!/usr/bin/env python3
"""Measures the library and writes the tables of docs/performance.md.

    performance.py BENCH LIBRARY GENERATE [--filter REGEX] [--repetitions N] [--json FILE]
                   [--document FILE]

BENCH is the program zorp_bench, LIBRARY libzorp_z1.so, GENERATE the tool zorp_generate. The text
between the two markers of the document is replaced. --angles writes the table of large angles instead. --json keeps what was measured; a file that
exists already is taken instead of a measurement. Every time is the least of the repetitions: what
else runs on the machine can only add to it.
"""

import argparse
import datetime
import json
import math
import os
import platform
import re
import subprocess
import tempfile
from pathlib import Path

import port_limit
from machine_code import PREFIX, Library, signatures

ROOT = Path(__file__).resolve().parent.parent
BEGIN, END = "<!-- tables: begin -->", "<!-- tables: end -->"
ANGLES_BEGIN, ANGLES_END = "<!-- angles: begin -->", "<!-- angles: end -->"
ANGLES = r"^(sin|cos|tan|sincos|sincosreg)(8|f16)(_native)?/.*/throughput$"
# Cycles for each of the dependent multiplications that `clock` times.
MULTIPLICATION = 3
HALF_INSTRUCTION = re.compile(r"v(add|mul|sub|fn?m(add|sub)\d+)ph")


def measure(bench, library, pattern, repetitions, output):
    command = [
        bench,
        f"--benchmark_filter=^(clock|call)$|{pattern}",
        "--benchmark_min_time=0.01",
        f"--benchmark_repetitions={repetitions}",
        "--benchmark_enable_random_interleaving=true",
        "--benchmark_report_aggregates_only=true",
        "--benchmark_out_format=json",
        f"--benchmark_out={output}",
    ]
    environment = {**os.environ, "ZORP_LIBRARY": str(Path(library).resolve())}
    silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    subprocess.run(command, check=True, env=environment, **silent)


class Times:
    """Least times in ns for all operands: by kernel, contender and measure."""

    def __init__(self, path):
        results = json.loads(Path(path).read_text())
        self.context = results["context"]
        self.operands = int(self.context["operands"])
        self.kernels = {}
        alone = {}
        for entry in results["benchmarks"]:
            if entry.get("aggregate_name") != "min":
                continue
            time, name = entry["cpu_time"], entry["run_name"]
            if "/" in name:
                kernel, contender, measure = name.split("/")
                self.kernels.setdefault(kernel, {}).setdefault(contender, {})[measure] = time
            else:
                alone[name] = time
        self.ghz = MULTIPLICATION * self.operands / alone["clock"]
        self.call_cycles = alone["call"] / self.operands * self.ghz


def processor():
    fields = {}
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        key, _, value = line.partition(":")
        fields.setdefault(key.strip(), value.strip())
    return (
        f"{fields['model name']} (family {fields['cpu family']}, model {fields['model']}), "
        f"{os.cpu_count()} processors"
    )


def sleef_name(contender):
    """exp u10, of Sleef_expd8_u10avx512f."""
    match = re.fullmatch(r"Sleef_(\w+?)(?:d8|f16)_(u\d+)?avx512f", contender)
    return " ".join(part for part in match.groups() if part) if match else contender


def row(times, name, signature):
    """What a table shows of one kernel; times in ns, for one element and for one call."""
    contenders = times.kernels[name]
    calls = times.operands / signature["width"]
    own = contenders["zorp_z1"]
    rival = next((c for c in contenders if c != "zorp_z1"), None)
    found = {
        "name": name,
        "element": own["throughput"] / times.operands,
        "cycles": own["throughput"] / calls * times.ghz,
        "latency": own["latency"] / calls * times.ghz if "latency" in own else None,
        "rival": sleef_name(rival) if rival else "",
    }
    if rival:
        theirs = contenders[rival]
        found["rival element"] = theirs["throughput"] / times.operands
        found["ratio"] = own["throughput"] / theirs["throughput"]
        if "latency" in own and "latency" in theirs:
            found["latency ratio"] = own["latency"] / theirs["latency"]
    return found


def number(value, digits):
    return "" if value is None else f"{value:.{digits}f}"


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |"]
    lines.append("|" + "|".join(" :-- " if i == 0 else " --: " for i in range(len(header))) + "|")
    lines += ["| " + " | ".join(cells) + " |" for cells in rows]
    return lines


def summary(rows, rivals):
    ratios = [(r["ratio"], r["name"]) for r in rows if "ratio" in r]
    if not ratios:
        return []
    mean = math.exp(sum(math.log(ratio) for ratio, _ in ratios) / len(ratios))
    slower = sorted((pair for pair in ratios if pair[0] >= 1.02), reverse=True)
    text = f"{len(ratios)} kernels beside {rivals}: geometric mean of the ratios {mean:.2f}"
    if slower:
        text += "; slower: " + ", ".join(f"{name} {ratio:.2f}" for ratio, name in slower)
    return [text + ".", ""]


def speed_table(rows, unit, rival, digits, limits):
    header = ["kernel", unit, rival, unit, "ratio", "latency ratio", "latency, cycles"]
    header += ["cycles/call"] + [f"limit {model}" for model in limits]
    return table(
        header,
        [
            [
                r["name"],
                number(r["element"], digits),
                r["rival"],
                number(r.get("rival element"), digits),
                number(r.get("ratio"), 2),
                number(r.get("latency ratio"), 2),
                number(r["latency"], 0),
                number(r["cycles"], 1),
            ]
            + [number(column.get(r["name"]), 1) for column in limits.values()]
            for r in rows
        ],
    )


def report(times, library, table_of, repetitions):
    half_is_native = any(HALF_INSTRUCTION.fullmatch(i.mnemonic) for i in library.code)
    mca = port_limit.find_mca()
    load = ", ".join(f"{average:.1f}" for average in times.context["load_avg"])
    lines = [
        f"- Processor: {processor()}, {times.ghz:.2f} GHz as measured",
        f"- Compiler: {times.context['compiler']}; C library: {' '.join(platform.libc_ver())}",
        f"- Half arithmetic: {'native' if half_is_native else 'emulated'}",
        f"- Limits: {'llvm-mca ' + mca[1] if mca else 'no llvm-mca that knows both processors'}",
        f"- A call of a function of one instruction: {times.call_cycles:.1f} cycles",
        f"- Least of {repetitions} repetitions, on {datetime.date.today()}; load average at the "
        f"start: {load}",
        "",
    ]
    for element in ("double", "float", "half"):
        # In the order of the grammar; the measurement's order is random.
        of_element = [s for s, signature in table_of.items() if signature["element"] == element]
        names = [s.removeprefix(PREFIX) for s in of_element]
        names = [n for n in names if n in times.kernels]
        rows = [row(times, n, table_of[PREFIX + n]) for n in names]
        wide = [r for r in rows if table_of[PREFIX + r["name"]]["width"] > 1]
        narrow = [r for r in rows if table_of[PREFIX + r["name"]]["width"] == 1]
        limits = {}
        if mca and rows and not (element == "half" and not half_is_native):
            paths = {r["name"]: library.fast_path(PREFIX + r["name"]) for r in rows}
            for model, title in port_limit.MODELS.items():
                limits[title] = port_limit.limits(mca[0], paths, model)
        if wide:
            lines += [f"### {element}, one register", ""] + summary(wide, "SLEEF")
            lines += speed_table(wide, "ns/element", "SLEEF", 3, limits) + [""]
        if narrow:
            lines += [f"### {element}, one lane", ""] + summary(narrow, "the C library")
            lines += speed_table(narrow, "ns", "C library", 2, limits) + [""]
    return lines


def angles_table(bench, library, repetitions, scratch):
    """Times of the trigonometric functions by the share of large operands, beside SLEEF's."""
    columns = {}
    for share in ("ordinary", "mixed", "large"):
        if share != "ordinary":
            os.environ["ZORP_ANGLES"] = share
        measured = Path(scratch) / f"{share}.json"
        measure(bench, library, ANGLES, repetitions, measured)
        columns[share] = Times(measured)
    header = ["large angles", "ordinary", "one a vector", "ratio", "all large", "ratio"]
    rows = []
    for kernel in columns["ordinary"].kernels:
        cells = [kernel]
        for share, times in columns.items():
            contenders = {name: c["throughput"] for name, c in times.kernels[kernel].items()}
            own = contenders.pop("zorp_z1")
            cells.append(number(own / times.operands, 3))
            if share != "ordinary":
                cells += [number(own / rival, 2) for rival in contenders.values()]
        rows.append(cells)
    return ["", *table(header, sorted(rows)), ""]


def replace(document, begin, end, lines):
    before, rest = document.read_text().split(begin)
    document.write_text("\n".join([before + begin, *lines]) + end + rest.split(end)[1])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("bench")
    parser.add_argument("library")
    parser.add_argument("generate")
    parser.add_argument("--filter", default=".", help="the benchmarks to run")
    parser.add_argument("--repetitions", type=int, default=15)
    parser.add_argument("--json", type=Path)
    parser.add_argument("--document", type=Path, default=ROOT / "docs" / "performance.md")
    parser.add_argument("--angles", action="store_true", help="large angles, not all kernels")
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as scratch:
        if arguments.angles:
            lines = angles_table(
                arguments.bench, arguments.library, arguments.repetitions, scratch
            )
            return replace(arguments.document, ANGLES_BEGIN, ANGLES_END, lines)
        measured = arguments.json or Path(scratch) / "times.json"
        if not measured.exists():
            count = arguments.repetitions
            measure(arguments.bench, arguments.library, arguments.filter, count, measured)
        times = Times(measured)
    lines = report(
        times, Library(arguments.library), signatures(arguments.generate), arguments.repetitions
    )
    replace(arguments.document, BEGIN, END, ["", *lines])


if __name__ == "__main__":
    main()
