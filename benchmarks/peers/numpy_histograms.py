"""Times numpy's histograms on the columns that the benchmark of the histograms wrote.

usage: numpy_histograms.py FILE

FILE holds the columns x, y and w one after the other, in doubles. Two lines go to standard output, for one dimension
with weights and for two: the median of the processor time in ms, and the sum of the heights.
"""

import sys
import time

import numpy

ROUNDS = 3
RANGE = (-3.0, 3.0)


def report(work):
    times = []
    for _ in range(ROUNDS):
        begin = time.process_time()
        heights = work()
        times.append(time.process_time() - begin)
    print("%r %r" % (1e3 * sorted(times)[ROUNDS // 2], float(heights.sum())))


def main():
    x, y, w = numpy.fromfile(sys.argv[1]).reshape(3, -1)
    report(lambda: numpy.histogram(x, bins=100, range=RANGE, weights=w)[0])
    report(lambda: numpy.histogram2d(x, y, bins=100, range=(RANGE, RANGE))[0])


if __name__ == "__main__":
    main()
