#!/usr/bin/env python3
"""The built libraries take no function from the C library whose last bits depend on the processor or on its version.

usage: check_libm.py LIBRARY...
"""

import re
import subprocess
import sys

REFUSED = re.compile(r"(?:__)?(?:acosh?|asinh?|atan2?|atanh?|cbrt|cosh?|erfc?|exp(?:2|10|m1)?|hypot|j[01n]|lgamma|log(?:2|10|1p)?|pow|"
                     r"sincos|sinh?|tanh?|tgamma|y[01n]|c(?:exp|log|pow|sqrt|abs|arg))(?:[fl]|f128)?(?:_r)?(?:_finite)?|_ZGV\w+")


def main(libraries):
    wrong = 0
    for library in libraries:
        lines = subprocess.run(["nm", "--dynamic", "--undefined-only", "--format=just-symbols", library], check=True,
                               capture_output=True, text=True).stdout.splitlines()
        for symbol in lines:
            name = symbol.split("@")[0]
            if REFUSED.fullmatch(name):
                print(f"{library} takes {name} from the C library; use <velmorak/ElementaryFunctions.h>")
                wrong += 1
        print(f"{library}: {len(lines)} undefined symbols")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
