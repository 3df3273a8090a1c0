#!/usr/bin/python3
"""Compares 200 random fits, by chi square and by likelihood, with iminuit: parameters to a millionth of their errors,
errors to a thousandth.

iminuit ends where its estimated distance is below a limit, a few millionths of an error away; one Newton step with exact
derivatives takes its minimum to the end. Its errors come from differences of the cost and are themselves off by more
than a thousandth in a few of the fits, which the exact second derivatives tell; there these count alone.

usage: check_fits.py FIT_ANSWERS
"""

import subprocess
import sys

import iminuit
import numpy

COUNT = 200
CLOSE = 1e-6
CLOSE_ERRORS = 1e-3
CLOSE_EXACT_ERRORS = 1e-4
MOST_INEXACT = 10


def peak_on_line(x, amplitude, mean, sigma, p0, p1):
    return amplitude * numpy.exp(-0.5 * ((x - mean) / sigma) ** 2) + p0 + p1 * x


def resonance(x, amplitude, mean, gamma, norm, slope):
    return amplitude / (1 + (2 * (x - mean) / gamma) ** 2) + norm * numpy.exp(slope * x)


def decay(x, n, tau, b):
    return n * numpy.exp(-x / tau) + b


def wave(x, a, w, f, c):
    return a * numpy.sin(w * x + f) + c


def polynomial(x, p0, p1, p2):
    return p0 + x * (p1 + x * p2)


# Model, its names, the same in Python, bounds that the truth is drawn from, range of x.
FAMILIES = [
    ("gauss + pol1", "amplitude mean sigma p0 p1", peak_on_line,
     [(50, 500), (3, 7), (0.4, 1.2), (30, 80), (-1, 4)], (0, 10)),
    ("breitwigner + exponential", "amplitude mean gamma norm slope", resonance,
     [(100, 900), (4, 6), (0.6, 1.5), (50, 200), (-0.3, -0.1)], (0, 10)),
    ("n*exp(-x/tau) + b", "n tau b", decay, [(100, 2000), (1, 3), (5, 50)], (0, 10)),
    ("a*sin(w*x + f) + c", "a w f c", wave, [(20, 60), (0.8, 1.2), (-0.5, 0.5), (90, 150)], (0, 10)),
    ("pol2", "p0 p1 p2", polynomial, [(60, 300), (0, 9), (-0.5, 5)], (0, 8)),
]


class Problem:
    def __init__(self, number, random):
        self.model, names, self.formula, bounds, (low, high) = FAMILIES[number % len(FAMILIES)]
        self.names = names.split()
        self.is_likelihood = number // len(FAMILIES) % 2 == 1
        self.start = [float(random.uniform(*bound)) for bound in bounds]
        self.edges = numpy.linspace(low, high, random.integers(30, 200) + 1)
        self.x = 0.5 * (self.edges[1:] + self.edges[:-1])
        self.y = random.poisson(self.formula(self.x, *self.start)).astype(float)
        self.error = numpy.sqrt(self.y if self.is_likelihood else numpy.maximum(self.y, 1.0))

    def text(self):
        lines = [self.model, "likelihood" if self.is_likelihood else "chi2"]
        lines.append(", ".join("%s=%r" % pair for pair in zip(self.names, self.start)))
        rows = zip(self.edges, self.edges[1:], self.y, self.error)
        lines += [" ".join(repr(float(value)) for value in row) for row in rows]
        return "\n".join(lines) + "\n\n"

    def cost(self, *parameters):
        f = self.formula(self.x, *parameters)
        if not self.is_likelihood:
            return (((self.y - f) / self.error) ** 2).sum()
        filled = self.y > 0
        return 2 * ((f - self.y).sum() + (self.y[filled] * numpy.log(self.y[filled] / f[filled])).sum())

    def gradient(self, *parameters):
        """Exact: by the imaginary part of a step too small to be seen."""
        step = 1e-100
        slopes = []
        for i in range(len(parameters)):
            shifted = [complex(value) for value in parameters]
            shifted[i] += 1j * step
            slopes.append(self.cost(*shifted).imag / step)
        return slopes

    def solved(self):
        minuit = iminuit.Minuit(self.cost, *self.start, name=self.names, grad=self.gradient)
        minuit.errordef = 1
        minuit.strategy = 2
        minuit.tol = 1e-9
        minuit.migrad()
        minuit.migrad()
        minuit.hesse()
        values = numpy.array(minuit.values)
        errors = numpy.array(minuit.errors)
        inverse = numpy.linalg.inv(self.second_derivatives(values, errors))
        values -= inverse @ numpy.array(self.gradient(*values))
        inverse = numpy.linalg.inv(self.second_derivatives(values, errors))
        return values, errors, numpy.sqrt(2 * numpy.diag(inverse)), minuit.fval

    def second_derivatives(self, values, errors):
        """By differences of the exact gradient."""
        columns = []
        for i, error in enumerate(errors):
            step = numpy.zeros(len(values))
            step[i] = 1e-4 * error
            above, below = self.gradient(*(values + step)), self.gradient(*(values - step))
            columns.append((numpy.array(above) - numpy.array(below)) / (2 * step[i]))
        return numpy.array(columns)


def main():
    random = numpy.random.default_rng(20)
    problems = [Problem(number, random) for number in range(COUNT)]
    run = subprocess.run([sys.argv[1]], input="".join(problem.text() for problem in problems), text=True,
                         stdout=subprocess.PIPE, check=True)
    answers = [numpy.array(line.split(), dtype=float) for line in run.stdout.splitlines()]
    assert len(answers) == COUNT, "%d answers" % len(answers)
    worst = worst_error = 0.0
    inexact = 0
    for problem, answer in zip(problems, answers):
        count = len(problem.names)
        values, errors, exact, least = problem.solved()
        away = numpy.abs((answer[:count] - values) / exact).max()
        error_away = numpy.abs(answer[count : 2 * count] / exact - 1).max()
        what = "%s by %s" % (problem.model, "likelihood" if problem.is_likelihood else "chi square")
        assert answer[-1] <= least + 1e-9 * abs(least), "%s: %r is not the minimum, %r is" % (what, answer[-1], least)
        assert away < CLOSE, "%s: %s instead of %s +- %s" % (what, answer[:count], values, errors)
        assert error_away < CLOSE_EXACT_ERRORS, "%s: errors %s instead of %s" % (what, answer[count:-1], exact)
        is_exact = numpy.abs(errors / exact - 1).max() < 0.5 * CLOSE_ERRORS
        is_close = numpy.abs(answer[count : 2 * count] / errors - 1).max() < CLOSE_ERRORS
        assert is_close or not is_exact, "%s: errors %s instead of %s" % (what, answer[count:-1], errors)
        inexact += not is_close
        worst, worst_error = max(worst, away), max(worst_error, error_away)
    assert inexact <= MOST_INEXACT, "%d errors are not those of iminuit" % inexact
    print("%d fits: parameters agree to %.1e of their errors, errors to %.1e; %d of iminuit's own errors are less exact"
          % (COUNT, worst, worst_error, inexact))


main()
