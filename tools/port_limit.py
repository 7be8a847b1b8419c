#!/usr/bin/env python3
"""The least cycles that a kernel's fast path takes, by llvm-mca's models of two processors.

    port_limit.py LIBRARY KERNEL...

The limit holds for calls that don't wait for each other: execution ports and dispatch are full,
results are always there in time. Return, call and the caller's loop aren't counted.
"""

import re
import shutil
import subprocess
import sys

from machine_code import PREFIX, Library

MODELS = {"znver4": "Zen 4", "sapphirerapids": "Sapphire Rapids"}


def find_mca():
    """An llvm-mca that knows both processors, with its version; None if there is none."""
    for name in ["llvm-mca"] + [f"llvm-mca-{version}" for version in range(22, 15, -1)]:
        if not shutil.which(name):
            continue
        command = [name, "-mtriple=x86_64", "-mcpu=help"]
        known = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True)
        if all(model in known.stderr for model in MODELS):
            version = subprocess.run([name, "--version"], capture_output=True, text=True).stdout
            return name, re.search(r"LLVM version (\S+)", version).group(1)
    return None


def limits(mca, paths, model):
    """Cycles by kernel, for the fast paths given by kernel."""
    lines = []
    for kernel, path in paths.items():
        lines.append(f"# LLVM-MCA-BEGIN {kernel}")
        for instruction in path:
            if instruction.mnemonic not in ("ret", "endbr64"):
                # A target needs its 0x, and no name beside it.
                lines.append(re.sub(r"\b([0-9a-f]+) <.*>", r"0x\1", instruction.text))
        lines.append(f"# LLVM-MCA-END {kernel}")
    command = [mca, "-mtriple=x86_64", f"-mcpu={model}", "-iterations=1"]
    command += ["-instruction-info=0", "-resource-pressure=0"]
    done = subprocess.run(
        command, input="\n".join(lines) + "\n", check=True, capture_output=True, text=True
    )
    region = re.compile(r"Code Region - (\S+)$.*?^Block RThroughput:\s+(\S+)", re.M | re.S)
    return {kernel: float(cycles) for kernel, cycles in region.findall(done.stdout)}


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    found = find_mca()
    if not found:
        sys.exit("no llvm-mca that knows " + " and ".join(MODELS))
    library = Library(sys.argv[1])
    kernels = [name.removeprefix(PREFIX) for name in sys.argv[2:]]
    paths = {name: library.fast_path(PREFIX + name) for name in kernels}
    columns = [limits(found[0], paths, model) for model in MODELS]
    print("kernel".ljust(24), *(name.rjust(16) for name in MODELS.values()))
    for name in kernels:
        print(name.ljust(24), *(f"{column[name]:16.1f}" for column in columns))


if __name__ == "__main__":
    main()
