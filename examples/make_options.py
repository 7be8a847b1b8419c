#!/usr/bin/env python3
"""Makes examples/options.csv: European options with plausible terms, the same on every run."""

import random
from pathlib import Path

COUNT = 4000
SEED = 20240229


def main():
    random.seed(SEED)
    lines = ["type,spot,strike,rate,volatility,years"]
    for _ in range(COUNT):
        kind = random.choice(["call", "put"])
        spot = random.lognormvariate(4.5, 0.6)
        strike = spot * random.uniform(0.6, 1.5)
        rate = random.uniform(0.0, 0.06)
        volatility = random.uniform(0.08, 0.75)
        years = random.choice([1, 2, 3, 6, 9, 12, 18, 24, 36, 60]) / 12
        lines.append(f"{kind},{spot:.2f},{strike:.2f},{rate:.4f},{volatility:.4f},{years:.4f}")
    path = Path(__file__).resolve().parent / "options.csv"
    path.write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
