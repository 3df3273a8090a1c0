"""Times numexpr, on one thread, on the columns that the benchmark of the expressions wrote.

usage: numexpr_expression.py FILE EXPRESSION...

FILE holds the columns x, y and w one after the other, in doubles. For each expression a line goes to standard output:
the median of the processor time in ms, and the sum of the results.
"""

import sys
import time

import numexpr
import numpy

ROUNDS = 3


def median(times):
    return sorted(times)[len(times) // 2]


def main():
    numexpr.set_num_threads(1)
    columns = dict(zip("xyw", numpy.fromfile(sys.argv[1]).reshape(3, -1)))
    for expression in sys.argv[2:]:
        result = numexpr.evaluate(expression, columns)
        times = []
        for _ in range(ROUNDS):
            begin = time.process_time()
            numexpr.evaluate(expression, columns)
            times.append(time.process_time() - begin)
        print("%r %r" % (1e3 * median(times), float(result.sum())))


if __name__ == "__main__":
    main()
