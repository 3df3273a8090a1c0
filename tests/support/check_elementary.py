#!/usr/bin/env python3
"""No source of the library, its kinds and its formats calls a function of the C or C++ library whose last bits depend on the
processor or on the version of that library; <velmorak/ElementaryFunctions.h> has these functions.

Exact by IEEE 754, and therefore allowed: sqrt, fma, fmod, remainder, floor, ceil, round, trunc, rint, nearbyint, ldexp,
frexp, modf, copysign, nextafter, fabs, fmin, fmax and the classifications.

usage: check_elementary.py SOURCE
"""

import pathlib
import re
import sys

FOLDERS = ["collections", "engine", "formats", "qz", "sdk", "tools"]
# Defines the functions, so that it calls them without a namespace.
OWN = ["engine/elementary/", "sdk/include/velmorak/ElementaryFunctions.h"]

FUNCTIONS = ("acosh? asinh? atan2? atanh? cbrt cosh? erfc? exp(?:2|10|m1)? hypot lgamma(?:_r)? log(?:2|10|1p)? pow(?:10)? "
             "sincos sinh? tanh? tgamma beta expint riemann_zeta (?:cyl|sph)_\\w+ (?:comp_)?ellint_\\w+ (?:assoc_)?legendre "
             "(?:assoc_)?laguerre hermite").split()
NAME = "(?:" + "|".join(FUNCTIONS) + ")[fl]?"
QUALIFIED = re.compile(r"(?<!\w)(?:std)?::" + NAME + r"\b(?!::)|\b__builtin_" + NAME + r"\b|\b_ZGV\w+")
UNQUALIFIED = re.compile(r"(?<![\w.:>\"&~])" + NAME + r"\s*\(")
RANDOM = re.compile(r"\bstd::\w+_distribution\b|\bstd::generate_canonical\b|[<\"]boost/(?:math|random|multiprecision)/|<complex>")
LITERAL = re.compile(r'R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)


def blank(match):
    """Keeps the lines of a literal or comment."""
    return re.sub(r"[^\n]", " ", match.group())


def findings(text, is_own):
    without = LITERAL.sub(blank, text) + "\n" + "\n".join(re.findall(r"^[ \t]*#[ \t]*include[^\n]*", text, re.MULTILINE))
    patterns = [QUALIFIED, RANDOM] if is_own else [QUALIFIED, UNQUALIFIED, RANDOM]
    return sorted({(without.count("\n", 0, match.start()) + 1, match.group().strip("( "))
                   for pattern in patterns for match in pattern.finditer(without)})


def main(source):
    source = pathlib.Path(source)
    count = 0
    for folder in FOLDERS:
        for file in sorted((source / folder).rglob("*")):
            name = str(file.relative_to(source))
            if file.suffix not in (".cpp", ".h"):
                continue
            is_own = any(name.startswith(own) for own in OWN)
            for line, what in findings(file.read_text(encoding="utf-8"), is_own):
                print(f"{name}:{line}: {what} has other bits on other processors; use <velmorak/ElementaryFunctions.h>")
                count += 1
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
