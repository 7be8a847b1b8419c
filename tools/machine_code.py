"""The machine code of libzorp_z1.so as objdump and nm show it, and the kernels' signatures."""

import csv
import re
import subprocess
from dataclasses import dataclass

PREFIX = "__zorp_z1_"


@dataclass(frozen=True)
class Instruction:
    address: int
    mnemonic: str
    operands: str  # AT&T syntax

    @property
    def text(self):
        return f"{self.mnemonic} {self.operands}".strip()

    @property
    def is_conditional_jump(self):
        return self.mnemonic.startswith("j") and self.mnemonic != "jmp"

    @property
    def target(self):
        """Where a direct jump goes."""
        return int(self.operands.split()[0], 16)


class Library:
    """The disassembly, by address; the exported kernels, by name."""

    # A prefix that objdump prints before the mnemonic counts for nothing here.
    _LINE = re.compile(
        r"^\s*([0-9a-f]+):\s+(?:(?:notrack|bnd|rep|repz|cs|ds|data16)\s+)*(\S+)\s*(.*)$"
    )

    def __init__(self, path):
        self.path = path
        self.kernels = {
            name: int(address, 16)
            for address, kind, name in (
                line.split() for line in _output("nm", "-D", "--defined-only", path)
            )
            if kind == "T" and name.startswith(PREFIX)
        }
        self.code = []
        for line in _output("objdump", "-d", "--no-show-raw-insn", "-j", ".text", path):
            match = self._LINE.match(line)
            if match:
                address, mnemonic, operands = match.groups()
                operands = operands.split("#")[0].strip()
                self.code.append(Instruction(int(address, 16), mnemonic, operands))
        self._index = {instruction.address: i for i, instruction in enumerate(self.code)}

    def fast_path(self, symbol):
        """From the entry to the first return, taking no conditional jump."""
        path = []
        for instruction in self.code[self._index[self.kernels[symbol]] :]:
            path.append(instruction)
            if instruction.mnemonic in ("ret", "jmp"):
                break
        return path


def signatures(generate):
    """The kernels' signatures by symbol, from the tool zorp_generate."""
    rows = csv.DictReader(_output(generate, "signatures"), delimiter="\t")
    return {row["symbol"]: {**row, "width": int(row["width"])} for row in rows}


def descriptions(generate):
    """The families in words, by name, from the same tool."""
    rows = csv.DictReader(_output(generate, "descriptions"), delimiter="\t")
    return {row["family"]: row for row in rows}


def _output(*command):
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    return done.stdout.splitlines()
