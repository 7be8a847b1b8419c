#!/usr/bin/env python3
"""Draws docs/times.svg and docs/errors.svg from docs/performance.md and docs/accuracy.md.

    draw_measurements.py GENERATE [--check]

GENERATE is the tool zorp_generate. Families that aren't measured yet are left out. --check draws
into memory, compares with the files, and exits with 1 if they differ.
"""

import argparse
import io
import sys

import matplotlib
from matplotlib import pyplot
from matplotlib.lines import Line2D
from matplotlib.ticker import FixedLocator, FuncFormatter, LogLocator, NullLocator

from measured import ROOT, algorithms

DOCS = ROOT / "docs"
COLOURS = {"double": "#0072b2", "float": "#d55e00", "half": "#009e73"}
MARKERS = {"double": "o", "float": "s", "half": "^"}
# Parts of a line by which equal values are set apart.
SHIFTS = {"double": -0.16, "float": 0, "half": 0.16}
# What is the same in every picture of the same tables.
STYLE = {
    "svg.hashsalt": "zorp_z1",
    "svg.fonttype": "none",
    "font.size": 9,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "axes.axisbelow": True,
    "axes.titlesize": 10,
}
ROW = 0.19  # inches


def panels(families, legend, **options):
    """Two fields side by side with a line for each family, the first at the top.

    The legend has (element, filled, text) for each kind of mark.
    """
    height = ROW * len(families) + 1.3
    figure, axes = pyplot.subplots(1, 2, sharey=True, figsize=(9, height), **options)
    figure.subplots_adjust(
        left=0.1, right=0.98, top=1 - 0.75 / height, bottom=0.5 / height, wspace=0.06
    )
    axes[0].set_yticks(range(len(families)), families)
    axes[0].set_ylim(len(families) - 0.4, -0.6)
    for field in axes:
        field.tick_params(axis="y", length=0)
        field.grid(color="#dddddd", linewidth=0.6)
    marks = [Line2D([], [], linestyle="", **mark(element, full)) for element, full, _ in legend]
    figure.legend(
        marks,
        [text for *_, text in legend],
        loc="upper center",
        ncols=len(legend),
        frameon=False,
        bbox_to_anchor=(0.5, 1 - 0.05 / height),
    )
    return figure, axes


def mark(element, full):
    colour = COLOURS[element]
    return {
        "marker": MARKERS[element],
        "markersize": 5,
        "color": colour,
        "markerfacecolor": colour if full else "white",
    }


def draw_points(field, families, found, value):
    """A mark for each algorithm that has a value, filled for standard tiers."""
    for a in found:
        if value(a) is not None:
            line = families.index(a.family) + SHIFTS[a.element]
            field.plot([value(a)], [line], **mark(a.element, is_standard(a)))


def is_standard(algorithm):
    return algorithm.tiers[0] == "standard"


def register_ratio(algorithm):
    return algorithm.register.ratio if algorithm.register else None


def lane_ratio(algorithm):
    return algorithm.lane.ratio if algorithm.lane else None


def times(found):
    """The time of each algorithm by that of SLEEF's and of the C library's function."""
    compared = [a for a in found if register_ratio(a) or lane_ratio(a)]
    families = list(dict.fromkeys(a.family for a in compared))
    legend = [
        (element, full, f"{element}, {'standard tier' if full else 'faster tiers'}")
        for element in ("double", "float")
        for full in (True, False)
    ]
    figure, axes = panels(families, legend, sharex=True)
    axes[0].set_xscale("log", base=2)
    axes[0].xaxis.set_major_locator(FixedLocator([2.0**n for n in range(-8, 5)]))
    axes[0].xaxis.set_minor_locator(NullLocator())
    axes[0].xaxis.set_major_formatter(FuncFormatter(lambda x, _: f"{x:g}"))
    titles = "One register: our time by SLEEF's", "One lane: our time by the C library's"
    for field, value, title in zip(axes, (register_ratio, lane_ratio), titles):
        field.axvline(1, color="#444444", linewidth=1)
        draw_points(field, families, compared, value)
        field.set_title(title)
        field.set_xlabel("left of 1: we are faster")
    return figure


def errors(found):
    """The largest error of each algorithm: standard tiers in ulp, the others by magnitude."""
    measured = [a for a in found if a.error is not None]
    families = list(dict.fromkeys(a.family for a in measured))
    figure, axes = panels(families, [(element, True, element) for element in COLOURS])
    standard = [a for a in measured if is_standard(a)]
    faster = [a for a in measured if not is_standard(a)]
    titles = "Standard tier: largest error, ulp", "Faster tiers: largest error, ulp"
    for field, some, title in zip(axes, (standard, faster), titles):
        draw_points(field, families, some, lambda a: a.error)
        field.set_title(title)
    axes[0].set_xlim(left=0)
    axes[0].axvline(0.5, color="#444444", linewidth=1, zorder=1)
    axes[0].set_xlabel("0.5 or less: correctly rounded")
    axes[1].set_xscale("log", base=2)
    axes[1].xaxis.set_major_locator(LogLocator(base=2**4))
    axes[1].set_xlabel("float has 24 bits, double 53")
    return figure


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("generate")
    parser.add_argument("--check", action="store_true", help="compare instead of writing")
    arguments = parser.parse_args()

    found = algorithms(arguments.generate)
    stale = []
    with matplotlib.rc_context(STYLE):
        for draw in (times, errors):
            picture = io.StringIO()
            draw(found).savefig(picture, format="svg", metadata={"Date": None})
            file = DOCS / f"{draw.__name__}.svg"
            if not arguments.check:
                file.write_text(picture.getvalue())
            elif file.read_text() != picture.getvalue():
                stale.append(file.name)
    if stale:
        sys.exit(f"{', '.join(stale)}: not what the tables give: build the target `documents`")


if __name__ == "__main__":
    main()
