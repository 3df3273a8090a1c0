#!/usr/bin/python3
"""The pipeline of benchmarks/pipeline/pipeline.zedra with pandas, numexpr and numpy, on two threads where they can.

usage: pipeline.py numbers.csv.gz high|round_trip; how exactly pandas reads numbers: "high", which it does unless told
otherwise, is wrong in the last digit of many, "round_trip" gives the numbers that were written. Prints the time of the work in ms, without that of the imports, and the entries of
the histograms."""
import sys
import time

import numexpr
import numpy
import pandas

begin = time.perf_counter()
numexpr.set_num_threads(2)
table = pandas.read_csv(sys.argv[1], float_precision=sys.argv[2])
c0, c1, c2, c3 = (table[name].to_numpy() for name in ("c0", "c1", "c2", "c3"))
keep = numexpr.evaluate("(c1 > 0.2) & (c3 < 0.9)")
c0, c1, c2, c3 = c0[keep], c1[keep], c2[keep], c3[keep]
r = numexpr.evaluate("sqrt(c0*c0 + c2*c2)*c1 + exp(-c1)")
m = numexpr.evaluate("c0*c3 - c2*c1")
histograms = [
    numpy.histogram(r, bins=50, range=(0, 5))[0],
    numpy.histogram(m, bins=100, range=(-4, 4))[0],
    numpy.histogram(c0, bins=60, range=(-3, 3))[0],
]
print(1e3 * (time.perf_counter() - begin), *(int(counts.sum()) for counts in histograms))
