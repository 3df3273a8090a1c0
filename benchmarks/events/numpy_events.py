#!/usr/bin/python3
"""The eight analyses of events with numpy on values and offsets.

usage: numpy_events.py FILE

For each analysis a line with the processor time in ms, the median of five, and the sum of its values. Events are taken
together by the number of their particles, so that combinations need no loop over events.
"""

import itertools
import statistics
import sys
import time

import numpy as np


def read(path):
    with open(path, "rb") as file:
        def array():
            return np.fromfile(file, np.float64, int(np.fromfile(file, np.uint64, 1)[0]))

        events = {"met": array(), "met_phi": array()}
        for name in ("jet", "muon", "electron"):
            events[name] = {"offsets": array().astype(np.int64)}
            for column in ("pt", "eta", "phi", "last"):
                events[name][column] = array()
    return events


def by_count(particles):
    """Events with equal numbers of particles, and the places of these as a matrix."""
    counts = np.diff(particles["offsets"])
    for count in np.unique(counts):
        events = np.flatnonzero(counts == count)
        yield count, events, particles["offsets"][events][:, None] + np.arange(count)


def sums(values, offsets):
    total = np.concatenate([[0.0], np.cumsum(values)])
    return total[offsets[1:]] - total[offsets[:-1]]


def vectors(pt, eta, phi, m):
    z = pt * np.sinh(eta)
    return np.stack([pt * np.cos(phi), pt * np.sin(phi), z, np.sqrt(pt**2 + z**2 + m**2)], axis=-1)


def mass(vector):
    square = vector[..., 3] ** 2 - vector[..., 0] ** 2 - vector[..., 1] ** 2 - vector[..., 2] ** 2
    return np.sqrt(np.maximum(square, 0.0))


def angle(difference):
    return (difference + np.pi) % (2.0 * np.pi) - np.pi


def missing_energy(events):
    return events["met"].copy()


def jet_momenta(events):
    return events["jet"]["pt"].copy()


def central_jets(events):
    return events["jet"]["pt"][np.abs(events["jet"]["eta"]) < 1.0]


def two_jets(events):
    hard = np.add.reduceat(np.append(events["jet"]["pt"] > 40.0, 0), events["jet"]["offsets"][:-1])
    hard[np.diff(events["jet"]["offsets"]) == 0] = 0
    return np.where(hard >= 2, events["met"], 0.0)


def muon_pairs(events):
    muon = events["muon"]
    momenta = vectors(muon["pt"], muon["eta"], muon["phi"], 0.1057)
    found = np.zeros(len(events["met"]), bool)
    for count, rows, places in by_count(muon):
        for i, j in itertools.combinations(range(count), 2):
            first, second = places[:, i], places[:, j]
            masses = mass(momenta[first] + momenta[second])
            found[rows] |= (muon["last"][first] + muon["last"][second] == 0) & (masses > 60.0) & (masses < 120.0)
    return np.where(found, events["met"], 0.0)


def top_candidates(events):
    jet = events["jet"]
    momenta = vectors(jet["pt"], jet["eta"], jet["phi"], 5.0)
    values = np.zeros(len(events["met"]))
    for count, rows, places in by_count(jet):
        triples = np.array(list(itertools.combinations(range(count), 3)))
        if len(triples):
            total = momenta[places][:, triples].sum(axis=2)
            best = np.argmin(np.abs(mass(total) - 172.5), axis=1)
            chosen = total[np.arange(len(rows)), best]
            values[rows] = np.hypot(chosen[:, 0], chosen[:, 1])
    return values


def jets_beside_leptons(events):
    jet = events["jet"]
    owner = np.repeat(np.arange(len(events["met"])), np.diff(jet["offsets"]))
    near = np.zeros(len(jet["pt"]), bool)
    for name in ("muon", "electron"):
        leptons = events[name]
        counts = np.diff(leptons["offsets"])[owner]
        for i in range(counts.max()):
            jets = np.flatnonzero(counts > i)
            other = leptons["offsets"][owner[jets]] + i
            square = (jet["eta"][jets] - leptons["eta"][other]) ** 2
            square += angle(jet["phi"][jets] - leptons["phi"][other]) ** 2
            near[jets] |= (leptons["pt"][other] > 10.0) & (square < 0.16)
    return sums(np.where((jet["pt"] > 30.0) & ~near, jet["pt"], 0.0), jet["offsets"])


def joined(events, column, factors=(1.0, 1.0)):
    """Muons, then electrons, of each event."""
    parts = [factor * events[name][column] for name, factor in zip(("muon", "electron"), factors)]
    return np.concatenate(parts)[joined_order(events)]


def joined_order(events):
    owners = [np.repeat(np.arange(len(events["met"])), np.diff(events[name]["offsets"])) for name in ("muon", "electron")]
    return np.argsort(np.concatenate(owners), kind="stable")


def third_lepton(events):
    leptons = {column: joined(events, column) for column in ("pt", "eta", "phi")}
    leptons["offsets"] = events["muon"]["offsets"] + events["electron"]["offsets"]
    kind = joined(events, "last", (1.0, 2.0))
    momenta = vectors(leptons["pt"], leptons["eta"], leptons["phi"], np.where(np.abs(kind) == 1.0, 0.1057, 0.000511))
    values = np.zeros(len(events["met"]))
    for count, rows, places in by_count(leptons):
        if count < 3:
            continue
        pairs = np.array(list(itertools.combinations(range(count), 2)))
        distances = np.abs(mass(momenta[places][:, pairs].sum(axis=2)) - 91.2)
        distances[kind[places][:, pairs].sum(axis=2) != 0] = np.inf
        best = np.argmin(distances, axis=1)
        pt = leptons["pt"][places].copy()
        each = np.arange(len(rows))
        pt[each, pairs[best, 0]] = pt[each, pairs[best, 1]] = -1.0
        leading = np.argmax(pt, axis=1)
        phi = leptons["phi"][places][each, leading]
        transverse = 2.0 * np.sqrt(pt[each, leading] * events["met"][rows])
        transverse *= np.abs(np.sin(0.5 * (phi - events["met_phi"][rows])))
        values[rows] = np.where(np.isfinite(distances[each, best]), transverse, 0.0)
    return values


def main():
    events = read(sys.argv[1])
    for analysis in (missing_energy, jet_momenta, central_jets, two_jets, muon_pairs, top_candidates,
                     jets_beside_leptons, third_lepton):
        times = []
        for _ in range(5):
            begin = time.process_time()
            total = analysis(events).sum()
            times.append(1e3 * (time.process_time() - begin))
        print(statistics.median(times), repr(float(total)), flush=True)


if __name__ == "__main__":
    main()
