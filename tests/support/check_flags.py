#!/usr/bin/env python3
"""Every source is compiled so that its floating-point operations have the roundings that it states.

usage: check_flags.py BUILD
"""

import json
import pathlib
import sys

REFUSED = {"-ffast-math", "-Ofast", "-funsafe-math-optimizations", "-fassociative-math", "-freciprocal-math",
           "-ffinite-math-only", "-fno-signed-zeros", "-frounding-math", "-fsingle-precision-constant",
           "-fexcess-precision=fast", "-mfpmath=387", "-mrecip", "-mdaz-ftz"}


def complaint(words):
    """The reason why a command is wrong, or an empty text."""
    contraction = [word for word in words if word.startswith("-ffp-contract=")]
    if not contraction or contraction[-1] != "-ffp-contract=off":
        return "may fuse a product and a sum: it needs -ffp-contract=off"
    refused = REFUSED.intersection(words)
    return f"may change roundings: {', '.join(sorted(refused))}" if refused else ""


def main(build):
    commands = json.loads((pathlib.Path(build) / "compile_commands.json").read_text(encoding="utf-8"))
    wrong = 0
    for command in commands:
        words = command["arguments"] if "arguments" in command else command["command"].split()
        if what := complaint(words):
            print(f"{command['file']} {what}")
            wrong += 1
    print(f"{len(commands)} commands")
    return 1 if wrong or not commands else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
