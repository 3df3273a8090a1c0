#!/usr/bin/env python3
"""Checks that HepMcTable reads random events in each format, to the last bit.

usage: check_generated_events.py VELMORAK-RUN
"""

import random
import sys

from roundtrip import Reader, compare

MOMENTUM = ("px", "py", "pz", "e", "m")


def real(generator):
    return generator.choice([0.0, -0.0, generator.uniform(-1e3, 1e3), generator.gauss(0.0, 1e-12), 5e-324, 1.7e308,
                             float(generator.randrange(-9, 9)), generator.uniform(-1, 1) * 1e250])


def particle(generator, position):
    """Its mother comes before it, or it has none."""
    mother = generator.randrange(position) if position and generator.random() < 0.7 else -1
    made = {"pdg": generator.choice([1, -13, 22, 2212, 1000020040, -9]), "status": generator.randrange(1, 99),
            "mother": mother}
    return made | {name: real(generator) for name in MOMENTUM}


def event(generator, number):
    return {"event": number, "process": generator.randrange(-5, 9999), "scale": real(generator),
            "weights": [real(generator) for _ in range(generator.choice([1, 1, 2, 40]))],
            "particles": [particle(generator, i) for i in range(generator.choice([0, 1, 2, 9, 60]))]}


def words(*values):
    return " ".join(repr(value) if isinstance(value, float) else str(value) for value in values)


def momentum(each):
    return words(*(each[name] for name in MOMENTUM))


def version_two(events):
    """A vertex for each particle that has daughters, and one for all that come from nowhere."""
    out = ["HepMC::Version 2.06.09", "HepMC::IO_GenEvent-START_EVENT_LISTING"]
    order = []  # In which the file has the particles.
    for each in events:
        particles = each["particles"]
        mothers = sorted({one["mother"] for one in particles if one["mother"] >= 0})
        ends = {mother: -2 - i for i, mother in enumerate(mothers)}
        orphans = [i for i, one in enumerate(particles) if one["mother"] < 0]
        vertices = [(-1, orphans, True)] + [
            (ends[mother], [i for i, one in enumerate(particles) if one["mother"] == mother], False) for mother in mothers]
        vertices = [vertex for vertex in vertices if vertex[1]]
        out += ["E " + words(each["event"], -1, each["scale"], 0.1, 0.1, each["process"], 0, len(vertices), 0, 0, 0,
                             len(each["weights"]), *each["weights"]), "N 1 \"0\"", "U GEV MM"]
        order.append([])
        for vertex, members, are_orphans in vertices:
            count = len(members)
            out.append("V " + words(vertex, 0, 0, 0, 0, 0, count if are_orphans else 0, 0 if are_orphans else count, 0))
            for i in members:
                one = particles[i]
                out.append("P %d %d %s %d 0 0 %d 0" % (i + 1, one["pdg"], momentum(one), one["status"], ends.get(i, 0)))
                order[-1].append(i)
    return out + ["HepMC::IO_GenEvent-END_EVENT_LISTING"], order


def version_three(events):
    out = ["HepMC::Version 3.02.05", "HepMC::Asciiv3-START_EVENT_LISTING"]
    for each in events:
        out += ["E %d 0 %d" % (each["event"], len(each["particles"])), "U GEV MM", "W " + words(*each["weights"]),
                "A 0 event_scale " + words(each["scale"]), "A 0 signal_process_id %d" % each["process"]]
        out += ["P %d %d %d %s %d" % (i + 1, one["mother"] + 1, one["pdg"], momentum(one), one["status"])
                for i, one in enumerate(each["particles"])]
    return out + ["HepMC::Asciiv3-END_EVENT_LISTING"], [range(len(each["particles"])) for each in events]


def les_houches(events):
    out = ['<LesHouchesEvents version="3.0">', "<init>", "2212 2212 6500 6500 0 0 0 0 3 1", "1 0.1 1.0 1", "</init>"]
    for each in events:
        out += ["<event>", words(len(each["particles"]), each["process"], each["weights"][0], each["scale"], 0.1, 0.1)]
        out += [words(one["pdg"], one["status"], one["mother"] + 1, 0, 0, 0) + " " + momentum(one) + " 0 9"
                for one in each["particles"]]
        out += ["<rwgt>"] + ["<wgt id='%d'> %s </wgt>" % (i, words(weight)) for i, weight in enumerate(each["weights"])
                             if i > 0] + ["</rwgt>", "</event>"]
    return out + ["</LesHouchesEvents>"], [range(len(each["particles"])) for each in events]


def expected(events, order):
    columns = {name: [each[name] for each in events] for name in ("event", "process", "scale")}
    columns["weight"] = [each["weights"][0] for each in events]
    columns["weights"] = [each["weights"] for each in events]
    for name in ("pdg", "status"):
        columns[name] = [[each["particles"][i][name] for i in listed] for each, listed in zip(events, order)]
    columns["mother"] = []
    for each, listed in zip(events, order):
        place = {i: at for at, i in enumerate(listed)} | {-1: -1}
        columns["mother"].append([place[each["particles"][i]["mother"]] for i in listed])
    for name in MOMENTUM:
        columns[name] = [[each["particles"][i][name] for i in listed] for each, listed in zip(events, order)]
    return columns


def check(reader, generator):
    for count in (0, 1, 7, 400):
        for write in (version_two, version_three, les_houches):
            events = [event(generator, i if write is les_houches else generator.randrange(10**9)) for i in range(count)]
            lines, order = write(events)
            (reader.folder / "events.txt").write_text("\n".join(lines) + "\n")
            found = reader.columns(reader.folder / "events.txt")
            wanted = expected(events, order)
            compare(found, wanted)
            assert reader.columns(reader.folder / "events.txt", threads=1) == found


def main(runner):
    seed = random.randrange(2**32)
    print("seed", seed)
    for kind in ("HepMcTable", "Table"):
        with Reader(runner, kind) as reader:
            check(reader, random.Random(seed))


if __name__ == "__main__":
    main(*sys.argv[1:])
