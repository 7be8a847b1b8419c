#!/usr/bin/env python3
"""Makes the angles that are hardest to reduce: numbers of a format next to multiples of pi/2.

    make_hard_angles.py            writes tests/values/hard_angles.h
    make_hard_angles.py --check    compares the file in the tree with what the rule gives

x = m 2^e is next to a multiple of pi/2 where m a is next to an integer, a = 2^e 2/pi. The m below a
bound that come closest are the denominators of the convergents of a's continued fraction, so the
last convergent for each e gives that exponent's hardest number. The best of all are kept.
"""

import sys
from fractions import Fraction

from make_tables import FORMATS, ROOT, encode, scaled_inverse_two_pi

PRECISION = 1400
TWO_OVER_PI = Fraction(4 * scaled_inverse_two_pi(PRECISION), 1 << PRECISION)
KEPT = {"double": 120, "float": 40}


def last_convergent(a, bound):
    """The last convergent p/q with q below the bound, as (p, q)."""
    p, q, p_next, q_next = 1, 0, a.numerator // a.denominator, 1
    rest = a - p_next
    while rest:
        rest = 1 / rest
        digit = rest.numerator // rest.denominator
        p, q, p_next, q_next = p_next, q_next, digit * p_next + p, digit * q_next + q
        if q_next >= bound:
            return p, q
        rest -= digit
    return p_next, q_next


def hardest(element):
    """(distance in quarter turns, number), the hardest first."""
    _, fraction, bias = FORMATS[element]
    found = {}
    # From about 2^20 on: smaller numbers are served without any care.
    for exponent in range(20 - fraction, bias + 1 - fraction):
        scale = Fraction(2) ** exponent
        quarters, m = last_convergent(scale * TWO_OVER_PI, 2 << fraction)
        if quarters:
            found[m * scale] = abs(m * scale * TWO_OVER_PI - quarters)
    return sorted((distance, x) for x, distance in found.items())[: KEPT[element]]


def header():
    text = (
        "// Numbers next to multiples of pi/2, the closest first.\n"
        "// Written by tools/make_hard_angles.py.\n// clang-format off\n#pragma once\n\n"
        "#include <cstdint>\n\nnamespace zorp::test {\n\n"
    )
    for element in KEPT:
        bits = FORMATS[element][0]
        angles = hardest(element)
        patterns = [f"0x{encode(x, element):0{bits // 4}X}" for _, x in angles]
        per_line = 256 // bits
        lines = [
            "    " + ", ".join(patterns[i : i + per_line]) + ","
            for i in range(0, len(patterns), per_line)
        ]
        log = lambda v: v.numerator.bit_length() - v.denominator.bit_length()
        text += (
            f"/// From about 2^{log(angles[0][0])} to 2^{log(angles[-1][0])} quarter turns away.\n"
            f"constexpr std::uint{bits}_t kHardAngles{bits}[] = {{\n" + "\n".join(lines) + "\n};\n\n"
        )
    return text + "}  // namespace zorp::test\n"


def main():
    path = ROOT / "tests/values/hard_angles.h"
    if sys.argv[1:] == ["--check"]:
        if path.read_text() != header():
            sys.exit("differs from its rule: " + str(path.relative_to(ROOT)))
    else:
        path.write_text(header())


if __name__ == "__main__":
    main()
