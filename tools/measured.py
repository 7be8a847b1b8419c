"""What docs/accuracy.md and docs/performance.md tell of each algorithm of the library."""

import re
from dataclasses import dataclass, field
from pathlib import Path

from machine_code import PREFIX, signatures

ROOT = Path(__file__).resolve().parent.parent
ACCURACY = ROOT / "docs" / "accuracy.md"
PERFORMANCE = ROOT / "docs" / "performance.md"
LANE_BYTES = {"double": 8, "float": 4, "half": 2}


@dataclass
class Speed:
    """A row of a table of times; what the table leaves empty is None."""

    time: float  # ns, for an element
    rival: str
    ratio: float | None  # our time by the rival's
    latency: float | None  # cycles
    cycles: float | None  # for a call; one register only


@dataclass
class Algorithm:
    """What some tiers of a family and element type run."""

    family: str
    element: str
    tiers: list = field(default_factory=list)  # the first names the algorithm
    widths: list = field(default_factory=list)
    wide: dict = None  # the signature of the kernel of one full register
    error: float | None = None  # in ulp
    register: Speed | None = None  # the speed of that kernel, beside SLEEF
    lane: Speed | None = None  # of width 1, beside the C library


def full_width(signature):
    lanes = signature["operands"].split(",") + signature["results"].split(",")
    sizes = [LANE_BYTES.get(lane) or int(re.search(r"\d+", lane)[0]) // 8 for lane in lanes]
    return 64 // max(sizes)


def algorithms(generate):
    """All algorithms in the order of the grammar. What hasn't been measured is None."""
    errors, speeds = read_errors(), read_speeds()
    found = {}
    for symbol, signature in signatures(generate).items():
        key = signature["family"], signature["element"], signature["runs"]
        algorithm = found.setdefault(key, Algorithm(*key[:2]))
        width, tier = signature["width"], signature["tier"]
        if tier not in algorithm.tiers:
            algorithm.tiers.append(tier)
        if tier != signature["runs"]:
            continue
        algorithm.widths.append(width)
        if width == full_width(signature):
            algorithm.wide = signature
            algorithm.register = speeds.get(symbol.removeprefix(PREFIX))
        elif width == 1:
            algorithm.lane = speeds.get(symbol.removeprefix(PREFIX))
    for key, algorithm in found.items():
        algorithm.error = errors.get(key)
    return list(found.values())


def tables(path, first):
    """The header and the cells of each row of a document's tables whose first column is `first`."""
    header = None
    for line in path.read_text().splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if not line.startswith("|"):
            header = None
        elif header is None:
            header = cells
        elif header[0] == first and not set(cells[0]) <= set(":-"):
            yield header, cells


def read_errors():
    """The largest errors by family, element type and tier."""
    errors = {}
    for _, (family, element, tiers, error, *_) in tables(ACCURACY, "Family"):
        for tier in tiers.split(", "):
            errors[family, element, tier.replace("default", "standard")] = float(error)
    return errors


def read_speeds():
    """The times by kernel, without prefix."""
    speeds = {}
    for header, (kernel, *cells) in tables(PERFORMANCE, "kernel"):
        # Names of columns repeat: the first is ours.
        columns = dict(zip(reversed(header[1:]), reversed(cells)))

        def value(name):
            return float(columns[name]) if columns.get(name) else None

        rival = columns.get("SLEEF", columns.get("C library"))
        speeds[kernel] = Speed(
            value(header[1]), rival, value("ratio"), value("latency, cycles"), value("cycles/call")
        )
    return speeds


def conditions():
    """The lines of docs/performance.md that tell where and when the times were measured."""
    lines = PERFORMANCE.read_text().split("<!-- tables: begin -->")[1].split("###")[0].splitlines()
    return [line for line in lines if line.startswith("- ") and not line.startswith("- Limits")]
