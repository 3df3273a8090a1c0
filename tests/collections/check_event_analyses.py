#!/usr/bin/env python3
"""Compares the histograms of the examples in Event_analysis with what plain loops over the events and numpy give.

usage: check_event_analyses.py VELMORAK-RUN EXAMPLES

Every cell's height, and the mean of the entries in it, must agree to 1e-12.
"""

import gzip
import itertools
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

import numpy as np

TOLERANCE = 1e-12


def events_in(path):
    """For each event a dictionary: numbers, and arrays for jets, muons and electrons."""
    tuple_ = xml.fromstring(gzip.decompress(path.read_bytes())).find("tuple")
    lists = {"jet": ("pt", "eta", "phi", "m", "btag"), "muon": ("pt", "eta", "phi", "charge"),
             "electron": ("pt", "eta", "phi", "charge")}
    events = []
    for row in tuple_.find("rows"):
        event = {"met": float(row[0].get("value")), "met_phi": float(row[1].get("value"))}
        for (name, columns), nested in zip(lists.items(), row[2:]):
            values = np.array([[float(entry.get("value")) for entry in each] for each in nested])
            values = values.reshape(len(nested), len(columns))
            event[name] = {column: values[:, i] for i, column in enumerate(columns)}
        events.append(event)
    return events


def four_vectors(pt, eta, phi, m):
    z = pt * np.sinh(eta)
    return np.stack([np.sqrt(pt**2 + z**2 + m**2), pt * np.cos(phi), pt * np.sin(phi), z], axis=-1)


def mass(vector):
    return np.sqrt(max(vector[0] ** 2 - np.sum(vector[1:] ** 2), 0.0))


def angle(difference):
    return (difference + np.pi) % (2.0 * np.pi) - np.pi


def leptons_of(event, least=0.0):
    """Muons, then electrons: pt, eta, phi, charge, m and whether it is a muon."""
    all_ = []
    for name, m in (("muon", 0.1057), ("electron", 0.000511)):
        kept = event[name]["pt"] > least
        columns = [event[name][column][kept] for column in ("pt", "eta", "phi", "charge")]
        all_.append(np.stack(columns + [np.full(kept.sum(), m), np.full(kept.sum(), name == "muon")], axis=-1))
    return np.concatenate(all_)


def muon_pair_events(event):
    muon = event["muon"]
    vectors = four_vectors(muon["pt"], muon["eta"], muon["phi"], 0.1057)
    for i, j in itertools.combinations(range(len(vectors)), 2):
        if muon["charge"][i] + muon["charge"][j] == 0 and 60.0 < mass(vectors[i] + vectors[j]) < 120.0:
            return [event["met"]]
    return []


def top_jets(event):
    jet = event["jet"]
    vectors = four_vectors(jet["pt"], jet["eta"], jet["phi"], jet["m"])
    triples = list(itertools.combinations(range(len(vectors)), 3))
    if not triples:
        return None
    best = min(triples, key=lambda triple: abs(mass(sum(vectors[list(triple)])) - 172.5))
    return sum(vectors[list(best)]), jet["btag"][list(best)]


def jets_beside_leptons(event):
    jet, leptons = event["jet"], leptons_of(event, 10.0)
    total = 0.0
    for pt, eta, phi in zip(jet["pt"], jet["eta"], jet["phi"]):
        distances = np.hypot(leptons[:, 1] - eta, angle(leptons[:, 2] - phi))
        if pt > 30.0 and not np.any(distances < 0.4):
            total += pt
    return [total]


def third_lepton(event):
    leptons = leptons_of(event)
    if len(leptons) < 3:
        return []
    vectors = four_vectors(*leptons[:, :3].T, leptons[:, 4])
    pairs = [(i, j) for i, j in itertools.combinations(range(len(leptons)), 2)
             if leptons[i, 3] + leptons[j, 3] == 0 and leptons[i, 5] == leptons[j, 5]]
    if not pairs:
        return []
    pair = min(pairs, key=lambda pair: abs(mass(vectors[pair[0]] + vectors[pair[1]]) - 91.2))
    others = [i for i in range(len(leptons)) if i not in pair]
    pt, _, phi = leptons[max(others, key=lambda i: leptons[i, 0]), :3]
    return [np.sqrt(2.0 * pt * event["met"] * (1.0 - np.cos(phi - event["met_phi"])))]


# For each histogram: document, bins, low, high, and its values in an event.
HISTOGRAMS = {
    "missing_energy": ("Missing_energy", 40, 0, 160, lambda event: [event["met"]]),
    "jet_momenta": ("Jet_momenta", 40, 0, 200, lambda event: event["jet"]["pt"]),
    "central_jets": ("Central_jets", 40, 0, 200, lambda event: event["jet"]["pt"][abs(event["jet"]["eta"]) < 1.0]),
    "two_jets": ("Two_jets", 40, 0, 160, lambda event: [event["met"]] if (event["jet"]["pt"] > 40).sum() >= 2 else []),
    "muon_pair_events": ("Muon_pair_events", 40, 0, 160, muon_pair_events),
    "top_momentum": ("Top_candidates", 40, 0, 200,
                     lambda event: [np.hypot(*top_jets(event)[0][1:3])] if top_jets(event) else []),
    "top_tags": ("Top_candidates", 40, 0, 1, lambda event: [max(top_jets(event)[1])] if top_jets(event) else []),
    "jets_beside_leptons": ("Jets_beside_leptons", 40, 0, 400, jets_beside_leptons),
    "third_lepton": ("Third_lepton", 40, 0, 160, third_lepton),
}


def document_with_files(document, folder):
    """A copy of a document in which each plot is an AIDA file of its histogram."""
    content = json.loads(document.read_text(encoding="utf-8"))
    for plugin in content["plugins"]:
        if plugin["kind"] == "Plot":
            values = {value["name"]: value for value in plugin["inputs"]}
            plugin["kind"] = "AidaWriter"
            plugin["inputs"] = [dict(values["object"], name="object"), {"name": "file", "value": values["file"]["value"] + ".aida"}]
    copy = folder / document.name
    copy.write_text(json.dumps(content), encoding="utf-8")
    return copy


def filled(path):
    """Heights, entries and means of the cells of the histogram in an AIDA file, by bin number or OVERFLOW."""
    content = path.read_bytes()
    root = xml.fromstring(gzip.decompress(content) if content[:2] == b"\x1f\x8b" else content)
    return {each.get("binNum"): (float(each.get("height", each.get("entries"))), float(each.get("weightedMean", "nan")))
            for each in root.iter("bin1d")}


def check(name, cells, values, bins, low, high):
    values = np.asarray(values)
    number = np.floor((values - low) / (high - low) * bins)
    assert len(values) > 20, "%s has only %d entries" % (name, len(values))
    for place in range(-1, bins + 1):
        label = "UNDERFLOW" if place < 0 else "OVERFLOW" if place == bins else str(place)
        inside = values[np.clip(number, -1, bins) == place]
        height, mean = cells.get(label, (0.0, float("nan")))
        assert height == len(inside), "%s, cell %s: %g in place of %d" % (name, label, height, len(inside))
        if len(inside) and 0 <= place < bins and not np.isnan(mean):
            assert abs(mean - inside.mean()) <= TOLERANCE * max(1.0, abs(mean)), "%s, cell %s: mean %.17g, not %.17g" % (
                name, label, mean, inside.mean())


def main():
    runner, examples = str(pathlib.Path(sys.argv[1]).resolve()), pathlib.Path(sys.argv[2]) / "Event_analysis"
    events = events_in(examples / "collisions.aida")
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        shutil.copy(examples / "collisions.aida", folder)
        for name, (document, bins, low, high, values_of) in HISTOGRAMS.items():
            copy = document_with_files(examples / (document + ".zedra"), folder)
            run = subprocess.run([runner, str(copy)], cwd=folder, capture_output=True, text=True, env=dict(os.environ))
            assert run.returncode == 0, run.stderr
            found = sorted(folder.rglob(name + "*.aida"))
            assert found, "%s writes %s" % (document, [str(path) for path in folder.rglob("*.aida")])
            values = [value for event in events for value in values_of(event)]
            check(name, filled(found[0]), values, bins, low, high)
            print("%s: %d entries as numpy fills them" % (name, len(values)))


if __name__ == "__main__":
    main()
