#!/usr/bin/env python3
"""Draws eight pictures of the examples twice: as the examples' Plots do, and from the same numbers with matplotlib.

usage: draw_both.py VELMORAK-RUN EXAMPLES FOLDER

The style of mplhep is not packaged in Debian 12; STYLE sets the rcParams that make its look: tics inside on all four
sides, minor tics, titles at the ends of the axes, a legend without a frame.
"""

import datetime
import pathlib
import shutil
import subprocess
import sys
import tempfile

import matplotlib

matplotlib.use("agg")
import matplotlib.dates
import matplotlib.pyplot as plt

STYLE = {"figure.figsize": (16 / 2.54, 10 / 2.54), "figure.dpi": 127, "font.size": 11, "axes.linewidth": 1.2,
         "xtick.direction": "in", "ytick.direction": "in", "xtick.top": True, "ytick.right": True,
         "xtick.minor.visible": True, "ytick.minor.visible": True, "xtick.major.size": 8, "ytick.major.size": 8,
         "xtick.minor.size": 4, "ytick.minor.size": 4, "xaxis.labellocation": "right", "yaxis.labellocation": "top",
         "legend.frameon": False, "savefig.bbox": "tight"}

PICTURES = ("Tables/Data_and_simulation/mass", "First_steps/Peak_fit/peak", "Statistics/Compare_shapes/shapes",
            "Histograms/Plane/signals", "Nuclear_physics/Angular_distribution/directions",
            "Detectors/Trigger_efficiency/efficiency", "Histograms/Categories/hits",
            "Tables/Weather_station/temperature")


def blocks_of(file):
    """The numbers of each block of a data file; lines of NaN are left out."""
    blocks, empty = [[]], 0
    for line in file.read_text(encoding="utf-8").splitlines():
        empty = empty + 1 if not line else 0
        if empty == 2:
            blocks.append([])
        if line and not line.startswith("#") and not line.startswith("NaN"):
            blocks[-1].append([float(word) for word in line.split()])
    return blocks


def column(rows, number):
    return [row[number] for row in rows]


def points(axes, rows, label=None, moved=lambda x: x, **look):
    x, y = [moved(each) for each in column(rows, 0)], column(rows, 1)
    errors = [[row[1] - row[4] for row in rows], [row[5] - row[1] for row in rows]]
    axes.errorbar(x, y, yerr=errors, fmt="o", label=label, **look)


def steps(axes, rows, label=None, **look):
    axes.plot(column(rows, 0), column(rows, 1), label=label, **look)


def mass(blocks):
    figure, (axes, lower) = plt.subplots(2, 1, sharex=True, gridspec_kw={"height_ratios": [3, 1], "hspace": 0.08},
                                         figsize=(16 / 2.54, 12 / 2.54))
    for number, label in ((4, r"$Z \to \mu\mu$"), (2, r"$t\bar{t}$")):
        axes.fill_between(column(blocks[number], 0), column(blocks[number], 1), label=label)
    points(axes, blocks[0], "Data", color="black")
    axes.set(ylabel="Events / (2 GeV)", ylim=(0, None))
    axes.legend()
    lower.fill_between(column(blocks[7], 0), column(blocks[7], 1), column(blocks[7], 2), color="grey", alpha=0.4)
    points(lower, blocks[8], color="black")
    lower.set(xlabel=r"$m_{\mu\mu}$ [GeV]", ylabel="Ratio", xlim=(60, 120), ylim=(0.4, 1.6))


def peak(blocks):
    axes = plt.gca()
    points(axes, blocks[0], "Energies of a source", color="black")
    steps(axes, blocks[2], "Peak on an exponential")
    axes.set(xlabel="energy [keV]", ylabel="counts per 20 keV")
    axes.legend()


def shapes(blocks):
    axes = plt.gca()
    steps(axes, blocks[0], "first")
    steps(axes, blocks[2], "second")
    axes.set(xlabel="energy [keV]", ylabel="Sum of weights / (2.5 keV)")
    axes.legend()


def signals(blocks):
    axes = plt.gca()
    steps(axes, blocks[0])
    axes.set(xlabel="signal [GeV]", ylabel="Entries / (5 GeV)", yscale="log")


def directions(blocks):
    rows = blocks[0]
    x = sorted(set(column(rows, 0) + column(rows, 1)))
    y = sorted(set(column(rows, 2) + column(rows, 3)))
    cells = [[float("nan")] * (len(x) - 1) for _ in range(len(y) - 1)]
    for row in rows:
        cells[y.index(row[2])][x.index(row[0])] = row[4]
    axes = plt.gca()
    drawn = axes.pcolormesh(x, y, cells)
    plt.colorbar(drawn, label="Entries / bin")
    axes.set(xlabel=r"cos $\theta$", ylabel=r"$\varphi$ [rad]")


def efficiency(blocks):
    axes = plt.gca()
    points(axes, blocks[0], "Efficiency")
    steps(axes, blocks[2], "Fit")
    axes.set(xlabel="energy [GeV]", ylabel="efficiency")
    axes.legend()


def hits(blocks):
    axes = plt.gca()
    steps(axes, blocks[0])
    axes.set(xlabel="number of hits", ylabel="Sum of weights / bin")


def temperature(blocks):
    def moved(seconds):
        return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc)
    axes = plt.gca()
    points(axes, blocks[0], moved=moved)
    axes.set(xlabel="Zeit", ylabel="Temperatur")


def main():
    runner, examples, target = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    plt.rcParams.update(STYLE)
    target.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "examples"
        shutil.copytree(examples, copy)
        for picture in PICTURES:
            document, name = copy / pathlib.Path(picture).parent, pathlib.Path(picture).name
            subprocess.run([str(runner), "%s.zedra" % document], cwd=folder, check=True, stderr=subprocess.DEVNULL)
            results = document.parent / (document.name + ".results")
            shutil.copy(results / (name + ".png"), target / (name + ".png"))
            plt.figure()
            globals()[name](blocks_of(results / (name + ".dat")))
            plt.savefig(target / (name + "-matplotlib.png"), metadata={"Software": None})
            plt.close("all")
            print("%s drawn twice" % name)


if __name__ == "__main__":
    main()
