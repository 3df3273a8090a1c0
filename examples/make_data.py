#!/usr/bin/env python3
"""Regenerates the data of the examples, bit for bit.

usage: make_data.py FOLDER

Writes the data files of each group below FOLDER. The random numbers come from a generator of its own, and every number is
written with four digits behind the point, so that no last bit of a function decides what the files hold.
"""

import contextlib
import gzip
import io
import math
import pathlib
import sqlite3
import struct
import sys


class Random:
    """xorshift64*: S. Vigna, ACM Trans. Math. Softw. 42 (2016) 30."""

    def __init__(self, seed):
        self.state = seed

    def uniform(self):
        """Greater than 0 and less than 1."""
        self.state ^= self.state >> 12
        self.state ^= (self.state << 25) & 0xFFFFFFFFFFFFFFFF
        self.state ^= self.state >> 27
        bits = (self.state * 0x2545F4914F6CDD1D) & 0xFFFFFFFFFFFFFFFF
        return ((bits >> 12) + 0.5) / 2.0**52

    def between(self, low, high):
        return low + (high - low) * self.uniform()

    def gauss(self, mean, sigma):
        """Box-Muller transform."""
        radius = math.sqrt(-2.0 * math.log(self.uniform()))
        return mean + sigma * radius * math.cos(2.0 * math.pi * self.uniform())

    def exponential(self, mean):
        return -mean * math.log(self.uniform())

    def breit_wigner(self, mass, width):
        return mass + 0.5 * width * math.tan(math.pi * (self.uniform() - 0.5))


def text(number):
    """Four decimals, without trailing zeros."""
    digits = "%.4f" % number
    digits = digits.rstrip("0").rstrip(".")
    return "0" if digits == "-0" else digits


def header():
    return (
        '<?xml version="1.0" encoding="UTF-8"?>\n'
        '<!DOCTYPE aida SYSTEM "http://aida.freehep.org/schemas/3.2.1/aida.dtd">\n'
        '<aida version="3.2.1">\n'
        '<implementation package="Velmorak" version="1"/>\n'
    )


def write_compressed(path, content):
    """gzip without time and name, so that equal content gives equal bytes."""
    packed = io.BytesIO()
    with gzip.GzipFile(filename="", mode="wb", compresslevel=9, fileobj=packed, mtime=0) as stream:
        stream.write(content.encode("utf-8"))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(packed.getvalue())


def muons_of(random, mass):
    """Two muons, each as pt in GeV, eta and phi, from the decay of a particle of this mass that moves along the beam
    with a small transverse momentum. The muon mass is negligible at these momenta and is neglected."""
    cosine = random.between(-1.0, 1.0)
    sine = math.sqrt(1.0 - cosine * cosine)
    phi = random.between(-math.pi, math.pi)
    half = 0.5 * mass
    first = (half, half * sine * math.cos(phi), half * sine * math.sin(phi), half * cosine)
    second = (half, -first[1], -first[2], -first[3])
    across = random.exponential(9.0)
    direction = random.between(-math.pi, math.pi)
    rapidity = random.gauss(0.0, 1.1)
    boosted = [boost_across(boost_along(muon, rapidity), mass, across, direction) for muon in (first, second)]
    return [pt_eta_phi(muon) for muon in boosted]


def boost_along(vector, rapidity):
    energy, px, py, pz = vector
    return (
        energy * math.cosh(rapidity) + pz * math.sinh(rapidity),
        px,
        py,
        pz * math.cosh(rapidity) + energy * math.sinh(rapidity),
    )


def boost_across(vector, mass, momentum, direction):
    energy, px, py, pz = vector
    beta_gamma = momentum / mass
    gamma = math.sqrt(1.0 + beta_gamma * beta_gamma)
    along = px * math.cos(direction) + py * math.sin(direction)
    gain = (gamma - 1.0) * along + beta_gamma * energy
    return (
        gamma * energy + beta_gamma * along,
        px + gain * math.cos(direction),
        py + gain * math.sin(direction),
        pz,
    )


def pt_eta_phi(vector):
    _, px, py, pz = vector
    pt = math.hypot(px, py)
    return pt, math.asinh(pz / pt), math.atan2(py, px)


def smeared(random, muon):
    """Detector resolution: 1.5 % in momentum, one milliradian in the angles."""
    pt, eta, phi = muon
    return pt * random.gauss(1.0, 0.015), eta + random.gauss(0.0, 0.001), phi + random.gauss(0.0, 0.001)


def signal_or_background(random):
    """A mass in GeV, and whether both muons come from one decay: a Z boson with its natural width, or a falling
    background."""
    if random.uniform() < 0.62:
        return min(max(random.breit_wigner(91.19, 2.495), 20.0), 300.0), True
    return 20.0 + random.exponential(38.0), random.uniform() < 0.6


def event_row(random, number):
    mass, is_one_decay = signal_or_background(random)
    muons = [smeared(random, muon) for muon in muons_of(random, mass)]
    charge = 1 if random.uniform() < 0.5 else -1
    charges = (charge, -charge if is_one_decay else charge)
    if not is_one_decay and random.uniform() < 0.5:
        charges = (charge, -charge)
    row = [str(1 + number // 1000), str(number)]
    for (pt, eta, phi), q in zip(muons, charges):
        row += [text(pt), text(eta), text(phi), str(q)]
    return row


def dimuon(path):
    random = Random(0x5A17B0501)
    columns = [("run", "int"), ("event", "int")]
    for i in ("1", "2"):
        columns += [("pt" + i, "double"), ("eta" + i, "double"), ("phi" + i, "double"), ("charge" + i, "int")]
    out = [header(), '<tuple name="events" title="Simulated events with two muons" path="/dimuon">\n<columns>\n']
    out += ['<column name="%s" type="%s"/>\n' % column for column in columns]
    out.append("</columns>\n<rows>\n")
    for number in range(4000):
        entries = ('<entry value="%s"/>' % value for value in event_row(random, number))
        out.append("<row>" + "".join(entries) + "</row>\n")
    out.append("</rows>\n</tuple>\n</aida>\n")
    write_compressed(path, "".join(out))


def decays(path):
    """Decay times of muons at rest, in microseconds, with a small constant background."""
    random = Random(0x0DECA1ED)
    out = [header(), '<cloud1d name="times" title="Decay times of stopped muons [us]" path="/" maxEntries="-1">\n']
    out.append("<entries1d>\n")
    for _ in range(2000):
        time = random.exponential(2.197) if random.uniform() < 0.96 else random.between(0.0, 20.0)
        out.append('<entry1d valueX="%s"/>\n' % text(time))
    out.append("</entries1d>\n</cloud1d>\n</aida>\n")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


def filled_bins(values, bins, low, high):
    """Entries and sums of the values and their squares, in equal bins."""
    sums = [[0, 0.0, 0.0] for _ in range(bins)]
    for x, value in values:
        if low <= x < high:
            cell = sums[int((x - low) * bins / (high - low))]
            cell[0] += 1
            cell[1] += value
            cell[2] += value * value
    return sums


def spectrum(random):
    values = [(random.gauss(662.0, 28.0) if random.uniform() < 0.3 else random.exponential(300.0), 1.0) for _ in range(3000)]
    out = ['<histogram1d name="spectrum" title="Energies of a source" path="/lab">\n<annotation>\n']
    out.append('<item key="XLabel" value="energy [keV]"/>\n</annotation>\n')
    out.append('<axis direction="x" min="0" max="1000" numberOfBins="50"/>\n<data1d>\n')
    for number, (count, _, _) in enumerate(filled_bins(values, 50, 0.0, 1000.0)):
        if count:
            out.append('<bin1d binNum="%d" entries="%d" weightedMean="%d" weightedRms="0"/>\n' % (number, count, 20 * number + 10))
    return "".join(out) + "</data1d>\n</histogram1d>\n"


def gain(random):
    values = [(random.between(0.0, 8.0), random.gauss(11.0, 0.5)) for _ in range(200)]
    out = ['<profile1d name="gain" title="Gain of each channel" path="/lab">\n']
    out.append('<axis direction="x" min="0" max="8" numberOfBins="8"/>\n<data1d>\n')
    for number, (count, first, second) in enumerate(filled_bins(values, 8, 0.0, 8.0)):
        mean = first / count
        rms = math.sqrt(second / count - mean * mean)
        numbers = (number, count, text(mean), text(rms / math.sqrt(count)), text(rms), text(number + 0.5))
        out.append('<bin1d binNum="%d" entries="%d" height="%s" error="%s" rms="%s" weightedMean="%s"/>\n' % numbers)
    return "".join(out) + "</data1d>\n</profile1d>\n"


def calibration(random):
    out = ['<dataPointSet name="calibration" title="Known lines" path="/lab" dimension="2">\n']
    for energy in (59.5, 511.0, 661.7, 1173.2, 1332.5):
        out.append('<dataPoint><measurement value="%s"/>' % text(energy))
        out.append('<measurement value="%s" errorPlus="0.5"/></dataPoint>\n' % text(random.gauss(3.0 + 0.25 * energy, 0.5)))
    return "".join(out) + "</dataPointSet>\n"


LINE = """<function name="line" title="From energy to channel" path="/lab" isNormalized="false">
<codelet>codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null</codelet>
<arguments><argument name="x0"><range min="0" max="1500"/></argument></arguments>
<parameters><parameter name="a" value="3"/><parameter name="b" value="0.25"/></parameters>
</function>
"""


def stored(path):
    """One object of each kind that is not a table."""
    random = Random(0x570BED)
    content = header() + spectrum(random) + gain(random) + calibration(random) + LINE + "</aida>\n"
    path.write_text(content, encoding="utf-8")


def measured(path):
    """Masses in GeV with a quality from 0 to 1; some values are missing, and one line is damaged."""
    random = Random(0x0C5F)
    out = ["# Masses that were measured\n", "run;mass;quality;comment\n"]
    for number in range(1000):
        mass = min(max(random.breit_wigner(91.19, 2.495), 20.0), 300.0)
        quality = "NA" if random.uniform() < 0.02 else text(random.uniform())
        comment = '"noisy; looked at again"' if number % 250 == 100 else ""
        out.append("%d;%s;%s;%s\n" % (1 + number // 100, text(mass), quality, comment))
        if number == 499:
            out.append("6;the power failed\n")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


def samples(folder):
    """Simulated masses in GeV: files of two processes, and a table with the properties of each process."""
    random = Random(0x5A3B1E5)
    folder.mkdir(parents=True, exist_ok=True)
    for sample, files, rows in (("top", 2, 300), ("z", 3, 300)):
        for number in range(files):
            out = ["mass,quality\n"]
            for _ in range(rows):
                mass = random.breit_wigner(91.19, 2.495) if sample == "z" else 60.0 + random.exponential(45.0)
                out.append("%s,%s\n" % (text(min(max(mass, 20.0), 300.0)), text(random.uniform())))
            (folder / ("%s_%d.csv" % (sample, number + 1))).write_text("".join(out), encoding="utf-8")
    (folder / "samples.csv").write_text(
        "# Cross sections in pb, luminosity in 1/pb, and the events that were generated in all files of a line\n"
        "file,sample,cross_section,luminosity,generated\n"
        "z_*.csv,Z,1.25,800,900\n"
        "top_*.csv,top,0.5,800,600\n", encoding="utf-8")


def recorded(folder):
    """Masses in GeV as an experiment records them: a luminosity of 800/pb of both processes of samples()."""
    random = Random(0x2ECD)
    out = ["mass,quality\n"]
    for sample, rows in (("z", 1000), ("top", 400)):
        for _ in range(rows + int(random.gauss(0.0, rows ** 0.5))):
            mass = random.breit_wigner(91.19, 2.495) if sample == "z" else 60.0 + random.exponential(45.0)
            out.append("%s,%s\n" % (text(min(max(mass, 20.0), 300.0)), text(random.uniform())))
    (folder / "recorded.csv").write_text("".join(out), encoding="utf-8")
    (folder / "with_data.csv").write_text(
        "# As samples.csv, and the recorded events, each with a weight of 1\n"
        "file,sample,cross_section,luminosity,generated\n"
        "recorded.csv,data,1,1,1\n"
        "z_*.csv,Z,1.25,800,900\n"
        "top_*.csv,top,0.5,800,600\n", encoding="utf-8")


def tracks(path):
    """Events with up to seven tracks each, as nested rows; momenta in GeV."""
    random = Random(0x7AC5)
    out = [header(), '<tuple name="events" title="Simulated events with tracks" path="/">\n<columns>\n']
    out.append('<column name="event" type="int"/>\n<column name="trk" type="ITuple">\n<columns>\n')
    out.append('<column name="px" type="double"/>\n<column name="py" type="double"/>\n</columns>\n</column>\n</columns>\n')
    out.append("<rows>\n")
    for number in range(500):
        out.append('<row><entry value="%d"/><entryITuple>' % number)
        for _ in range(int(8.0 * random.uniform())):
            momentum, phi = random.exponential(1.8), random.between(-math.pi, math.pi)
            values = (text(momentum * math.cos(phi)), text(momentum * math.sin(phi)))
            out.append('<row><entry value="%s"/><entry value="%s"/></row>' % values)
        out.append("</entryITuple></row>\n")
    out.append("</rows>\n</tuple>\n</aida>\n")
    write_compressed(path, "".join(out))


def trigger(path):
    """Transverse momenta in GeV, and whether the trigger accepted the event: it turns on at 20 GeV and reaches 94 %."""
    random = Random(0x7121663)
    out = ["pt,passed\n"]
    for _ in range(4000):
        momentum = 5.0 + random.exponential(20.0)
        taken = random.uniform() < 0.47 * (1.0 + math.erf((momentum - 20.0) / (4.0 * math.sqrt(2.0))))
        out.append("%s,%d\n" % (text(momentum), taken))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


def hits_of_runs(folder):
    """Hits of three detectors in twelve runs, and two tables of constants: gains by run, of which one is missing, and
    pedestals of each detector by ranges of runs."""
    random = Random(0x417B)
    folder.mkdir(parents=True, exist_ok=True)
    gains = {run: 0.5 + 0.01 * (run - 101) for run in range(101, 113)}
    out = ["run,detector,adc,passed\n"]
    for number in range(3000):
        run = 101 + number // 250
        detector = "ABC"[int(3.0 * random.uniform())]
        pedestal = 20.0 + (4.0 if run > 106 else 0.0) + (2.0 if detector == "B" else 0.0)
        adc = pedestal + random.gauss(60.0, 6.0) / gains[run]
        out.append("%d,%s,%s,%d\n" % (run, detector, text(adc), random.uniform() < 0.97 - 0.01 * (run - 101)))
    (folder / "hits.csv").write_text("".join(out), encoding="utf-8")
    (folder / "gains.csv").write_text(
        "run,gain\n" + "".join("%d,%s\n" % (run, text(gain)) for run, gain in gains.items() if run != 110),
        encoding="utf-8")
    (folder / "pedestals.csv").write_text(
        "detector,first_run,last_run,pedestal\n" + "".join(
            "%s,%d,%d,%d\n" % (detector, first, last, 20 + (4 if first > 106 else 0) + (2 if detector == "B" else 0))
            for detector in "ABC" for first, last in ((101, 106), (107, 112))), encoding="utf-8")


def lines(path):
    """Channels of known gamma lines (in keV), with their errors."""
    random = Random(0xCA11B)
    out = [header(), '<dataPointSet name="lines" title="Known gamma lines" path="/" dimension="2">\n']
    out.append('<annotation>\n<item key="xAxisLabel" value="channel"/>\n')
    out.append('<item key="yAxisLabel" value="energy [keV]"/>\n</annotation>\n')
    for energy in (59.54, 121.78, 244.70, 344.28, 511.0, 661.66, 778.90, 964.06, 1112.08, 1173.23, 1332.49, 1408.01):
        error = 0.4 + 0.0006 * energy
        channel = random.gauss((energy + 11.3) / 0.487, error / 0.487)
        out.append('<dataPoint><measurement value="%s"/>' % text(channel))
        out.append('<measurement value="%s" errorPlus="%s"/></dataPoint>\n' % (text(energy), text(error)))
    out.append("</dataPointSet>\n</aida>\n")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


def scattering(path):
    """Directions of scattered particles, cosine and azimuth (in rad), and their energies in MeV. The density of
    directions is proportional to (1 + cos^2) (1 + 0.5 cos 2phi sin^2)."""
    random = Random(0x5CA77E2)
    out = [header(), '<tuple name="scattered" title="Scattered particles" path="/">\n<columns>\n']
    out.append('<column name="cosine" type="double"/>\n<column name="phi" type="double"/>\n')
    out.append('<column name="energy" type="double"/>\n</columns>\n<rows>\n')
    kept = 0
    while kept < 8000:
        cosine, phi = random.between(-1.0, 1.0), random.between(-math.pi, math.pi)
        density = (1.0 + cosine * cosine) * (1.0 + 0.5 * math.cos(2.0 * phi) * (1.0 - cosine * cosine))
        if random.uniform() * 2.0 < density:
            energy = random.gauss(50.0 / (1.0 + 0.3 * (1.0 - cosine)), 1.5)
            entries = ('<entry value="%s"/>' % text(value) for value in (cosine, phi, energy))
            out.append("<row>" + "".join(entries) + "</row>\n")
            kept += 1
    out.append("</rows>\n</tuple>\n</aida>\n")
    write_compressed(path, "".join(out))


def stopped(path):
    """Decay times of stopped muons in microseconds, on a flat background of accidental coincidences."""
    random = Random(0x57099ED)
    out = ["time\n"]
    for _ in range(6000):
        time = random.exponential(2.197) if random.uniform() < 0.94 else random.between(0.0, 20.0)
        out.append(text(time) + "\n")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


class RootFile:
    """A small ROOT file: numbers as TParameter and texts as TObjString, uncompressed."""

    begin, moment = 100, 0x6B0A0000

    def __init__(self, name):
        self.name, self.keys = name, []
        self.content = bytearray(self.begin)
        head = self.text(name) + self.text("")
        self.name_bytes = len(self.key("TFile", name, "", b"")) + len(head)
        self.record("TFile", name, "", head + bytes(60))

    @staticmethod
    def text(words):
        return bytes([len(words)]) + words.encode()

    @staticmethod
    def counted(content):
        return struct.pack(">I", len(content) | 0x40000000) + content

    def key(self, kind, name, title, content, position=0):
        names = self.text(kind) + self.text(name) + self.text(title)
        head = 26 + len(names)
        numbers = head + len(content), 4, len(content), self.moment, head, 1, position, 0 if not position else self.begin
        return struct.pack(">IHIIHHII", *numbers) + names

    def record(self, kind, name, title, content):
        position = len(self.content)
        key = self.key(kind, name, title, content, position)
        self.content += key + content
        return position, key

    def add(self, kind, name, title, version, members):
        plain = struct.pack(">HII", 1, 0, 0x03000000)
        content = self.counted(struct.pack(">H", version) + plain + members)
        self.keys.append(self.record(kind, name, title, content)[1])

    def add_number(self, name, number):
        self.add("TParameter<double>", name, "", 2, self.text(name) + struct.pack(">d", number))

    def add_text(self, name, words):
        self.add("TObjString", name, "Collectable string class", 1, self.text(words))

    def object(self, kind, content):
        return self.counted(struct.pack(">I", 0xFFFFFFFF) + kind.encode() + b"\0" + content)

    def named(self, name, title=""):
        return self.counted(struct.pack(">HHII", 1, 1, 0, 0x00010000) + self.text(name) + self.text(title))

    def member(self, kind, version, name, number, size, type_name, rest=b""):
        shape = struct.pack(">9I", number, size, 0, 0, 0, 0, 0, 0, 0)
        element = self.counted(struct.pack(">H", 4) + self.named(name) + shape + self.text(type_name))
        return self.object(kind, self.counted(struct.pack(">H", version) + element + rest))

    def described(self, name, checksum, version, members):
        plain = struct.pack(">HII", 1, 0, 0)
        array = struct.pack(">H", 3) + plain + self.text("") + struct.pack(">II", len(members), 0) + b"".join(members)
        elements = self.object("TObjArray", self.counted(array))
        numbers = struct.pack(">II", checksum, version)
        return self.object("TStreamerInfo", self.counted(struct.pack(">H", 9) + self.named(name) + numbers + elements))

    def classes(self):
        base = self.member("TStreamerBase", 3, "TObject", 66, 0, "BASE", struct.pack(">I", 1))
        words = self.member("TStreamerString", 2, "fString", 65, 24, "TString")
        name = self.member("TStreamerString", 2, "fName", 65, 24, "TString")
        value = self.member("TStreamerBasicType", 2, "fVal", 8, 8, "double")
        found = [
            self.described("TObjString", 0x9C8E4800, 1, [base, words]),
            self.described("TParameter<double>", 0xA9B4F4B7, 2, [base, name, value]),
        ]
        plain = struct.pack(">HII", 1, 0, 0)
        items = b"".join(each + b"\0" for each in found)
        return self.counted(struct.pack(">H", 5) + plain + self.text("") + struct.pack(">I", len(found)) + items)

    def write(self, path):
        info, info_key = self.record("TList", "StreamerInfo", "Doubly linked list", self.classes())
        info_bytes = len(self.content) - info
        listed = struct.pack(">I", len(self.keys)) + b"".join(self.keys)
        keys = self.record("TFile", self.name, "", listed)[0]
        keys_bytes = len(self.content) - keys
        free = len(self.content)
        end = free + len(self.key("TFile", self.name, "", b"", 1)) + 10
        self.record("TFile", self.name, "", struct.pack(">HII", 1, end, 2_000_000_000))
        numbers = self.begin, end, free, end - free, 1, self.name_bytes, 4, 0, info, info_bytes
        header = b"root" + struct.pack(">I6IBIII", 62400, *numbers) + struct.pack(">H", 1) + bytes(16)
        self.content[: len(header)] = header
        directory = struct.pack(">HIIIIIII", 5, self.moment, self.moment, keys_bytes, self.name_bytes, self.begin, 0, keys)
        at = self.begin + self.name_bytes
        self.content[at : at + len(directory)] = directory
        self.content[at + len(directory) : at + len(directory) + 2] = struct.pack(">H", 1)
        path.write_bytes(self.content)


def run_values(path):
    """What a number and a text that belong to a run look like in a ROOT file."""
    file = RootFile(path.name)
    file.add_number("luminosity", 11.58)
    file.add_text("selection", "two muons of opposite charge")
    path.parent.mkdir(parents=True, exist_ok=True)
    file.write(path)


def decay(random, mass, first, second):
    """Two vectors (E, px, py, pz) of these masses, from a decay at rest in any direction."""
    momentum = math.sqrt((mass**2 - (first + second) ** 2) * (mass**2 - (first - second) ** 2)) / (2.0 * mass)
    cosine = random.between(-1.0, 1.0)
    sine = math.sqrt(1.0 - cosine * cosine)
    phi = random.between(-math.pi, math.pi)
    across = (momentum * sine * math.cos(phi), momentum * sine * math.sin(phi), momentum * cosine)
    return (
        (math.hypot(momentum, first),) + across,
        (math.hypot(momentum, second),) + tuple(-component for component in across),
    )


def seen_with(vector, frame):
    """A vector in the rest frame of another as it is where the other moves."""
    mass = math.sqrt(frame[0] ** 2 - sum(component**2 for component in frame[1:]))
    along = sum(own * other for own, other in zip(vector[1:], frame[1:]))
    factor = along / (mass * (frame[0] + mass)) + vector[0] / mass
    return ((vector[0] * frame[0] + along) / mass,) + tuple(
        own + factor * other for own, other in zip(vector[1:], frame[1:])
    )


def moving(random, mass, across):
    """A particle with a transverse momentum of this mean."""
    momentum, phi = random.exponential(across), random.between(-math.pi, math.pi)
    rapidity = random.gauss(0.0, 0.9)
    energy = math.hypot(mass, momentum)
    return (energy * math.cosh(rapidity), momentum * math.cos(phi), momentum * math.sin(phi),
            energy * math.sinh(rapidity))


def top_jets(random):
    """The three jets of a top quark, each as pt, eta, phi, mass and b-tag discriminant."""
    top = moving(random, 172.5, 60.0)
    boson, beauty = decay(random, 172.5, 80.4, 4.8)
    light = [seen_with(quark, boson) for quark in decay(random, 80.4, 0.5, 0.5)]
    jets = []
    for vector, is_beauty in ((light[0], False), (light[1], False), (beauty, True)):
        pt, eta, phi = pt_eta_phi(seen_with(vector, top))
        jets.append(jet(random, pt * random.gauss(1.0, 0.08), eta, phi, is_beauty))
    return jets


def jet(random, pt, eta, phi, is_beauty):
    tag = math.sqrt(random.uniform()) if is_beauty else random.uniform() ** 3
    return max(pt, 5.0), eta, phi, 0.1 * max(pt, 5.0) * random.uniform(), tag


def other_jet(random):
    return jet(random, 15.0 + random.exponential(25.0), random.gauss(0.0, 1.6), random.between(-math.pi, math.pi),
               random.uniform() < 0.05)


def collision(random):
    """Jets, muons and electrons of an event, and its missing transverse momentum and direction. Leptons are pt, eta,
    phi and charge. An electron is also seen as a jet."""
    jets = [other_jet(random) for _ in range(int(4.0 * random.uniform()))]
    leptons = {"muon": [], "electron": []}
    missing = random.exponential(14.0)
    process = random.uniform()
    if process < 0.35:
        jets += top_jets(random)
    if process > 0.30 and process < 0.8:
        flavour = "muon" if random.uniform() < 0.6 else "electron"
        boson = min(max(random.breit_wigner(91.19, 2.495), 40.0), 200.0)
        charge = 1 if random.uniform() < 0.5 else -1
        for lepton in muons_of(random, boson):
            leptons[flavour].append(smeared(random, lepton) + (charge,))
            charge = -charge
    if process > 0.6:
        flavour = "muon" if random.uniform() < 0.5 else "electron"
        missing += random.exponential(25.0)
        direction = (random.gauss(0.0, 1.2), random.between(-math.pi, math.pi))
        leptons[flavour].append((8.0 + random.exponential(22.0),) + direction + (1 if random.uniform() < 0.5 else -1,))
    jets += [jet(random, pt, eta, phi, False) for pt, eta, phi, _ in leptons["electron"] if random.uniform() < 0.7]
    for particles in (jets, leptons["muon"], leptons["electron"]):
        particles.sort(key=lambda particle: -particle[0])
    return jets, leptons, missing, random.between(-math.pi, math.pi)


def nested(particles):
    """Rows of a nested tuple; the last value of a lepton is its integer charge."""
    rows = []
    for particle in particles:
        values = (str(value) if isinstance(value, int) else text(value) for value in particle)
        rows.append("<row>" + "".join('<entry value="%s"/>' % value for value in values) + "</row>")
    return "<entryITuple>" + "".join(rows) + "</entryITuple>"


def collisions(path):
    """Events with lists of jets, muons and electrons; momenta and masses in GeV, angles in radians."""
    random = Random(0xC0111510)
    out = [header(), '<tuple name="events" title="Simulated collisions" path="/">\n<columns>\n']
    out.append('<column name="met" type="double"/>\n<column name="met_phi" type="double"/>\n')
    for name, last in (("jet", '"m" type="double"/>\n<column name="btag" type="double"'), ("muon", '"charge" type="int"'),
                       ("electron", '"charge" type="int"')):
        out.append('<column name="%s" type="ITuple">\n<columns>\n' % name)
        out += ['<column name="%s" type="double"/>\n' % column for column in ("pt", "eta", "phi")]
        out.append("<column name=%s/>\n</columns>\n</column>\n" % last)
    out.append("</columns>\n<rows>\n")
    for _ in range(1200):
        jets, leptons, missing, direction = collision(random)
        out.append('<row><entry value="%s"/><entry value="%s"/>' % (text(missing), text(direction)))
        out.append(nested(jets) + nested(leptons["muon"]) + nested(leptons["electron"]) + "</row>\n")
    out.append("</rows>\n</tuple>\n</aida>\n")
    write_compressed(path, "".join(out))
def weather(path):
    """Temperature and air pressure of a station, as a spreadsheet with German settings exports them."""
    random = Random(0x3EA7)
    out = ["Zeit;Ort;Temperatur;Druck\n", ";;°C;Pa\n"]
    for hour in range(24 * 30):
        temperature = 10.0 + 6.0 * math.sin(2.0 * math.pi * (hour - 9) / 24.0) + random.gauss(0.0, 1.5)
        pressure = int(round(random.gauss(101325.0, 400.0)))
        number = "-" if hour % 97 == 50 else ("%.1f" % temperature).replace(".", ",")
        out.append("2024-04-%02d %02d:00+01:00;Zürich;%s;%d.%03d\n" %
                   (1 + hour // 24, hour % 24, number, pressure // 1000, pressure % 1000))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="iso-8859-1")


def geant4(folder):
    """Energy deposits of a run on two threads, as ntuples and as the histogram that the run fills."""
    random = Random(0x6EA47)
    folder.mkdir(parents=True, exist_ok=True)
    cells = [[0, 0.0, 0.0] for _ in range(42)]
    for thread in range(2):
        out = ["#class tools::wcsv::ntuple\n#title Hits in the calorimeter\n#separator 44\n#vector_separator 59\n"
               "#column double edep\n#column int layer\n#column double[] times\n"]
        for _ in range(1500):
            edep = float(text(random.exponential(4.0)))
            times = [text(random.between(0.0, 30.0)) for _ in range(int(random.between(0.0, 4.0)))]
            out.append("%s,%d,%s\n" % (text(edep), int(random.between(0.0, 10.0)), ";".join(times)))
            cell = cells[min(41, 1 + int(edep / 0.5))]
            cell[0] += 1
            cell[1] += edep
            cell[2] += edep * edep
        (folder / ("run_nt_hits_t%d.csv" % thread)).write_text("".join(out), encoding="utf-8")
    out = ["#class tools::histo::h1d\n#title Energy deposits\n#dimension 1\n#axis fixed 40 0 20\n"
           "#annotation axis_x.title energy (MeV)\n#bin_number 42\nentries,Sw,Sw2,Sxw0,Sx2w0\n"]
    for count, first, second in cells:
        out.append("%d,%d,%d,%s,%s\n" % (count, count, count, text(first), text(second)))
    (folder / "run_h1_edep.csv").write_text("".join(out), encoding="utf-8")


def reference(path):
    """A histogram of a generator and points of a measurement, in versions 2 and 3 of the format."""
    random = Random(0x40DA)
    cells = [[0, 0.0, 0.0] for _ in range(22)]
    for _ in range(4000):
        mass = float(text(random.breit_wigner(91.19, 2.5)))
        cell = cells[0 if mass < 81.0 else min(21, 1 + int(mass - 81.0))]
        cell[0] += 1
        cell[1] += mass
        cell[2] += mass * mass
    rows = ["%d\t%d\t%s\t%s\t%d\n" % (n, n, text(first), text(second), n) for n, first, second in cells]
    out = ["BEGIN YODA_HISTO1D_V3 /MC/mass\nPath: /MC/mass\nTitle: Mass of two muons\nType: Histo1D\n---\n"
           "Edges(A1): [%s]\n# sumW\t sumW2\t sumW(A1)\t sumW2(A1)\t numEntries\n" %
           ", ".join(str(81 + i) for i in range(21))] + rows + ["END YODA_HISTO1D_V3\n\n"]
    out.append("BEGIN YODA_SCATTER2D_V2 /REF/mass\nPath: /REF/mass\nTitle: Mass of two muons\nType: Scatter2D\n---\n"
               "# xval\t xerr-\t xerr+\t yval\t yerr-\t yerr+\n")
    for i in range(0, 20, 2):
        mean = 0.5 * (cells[1 + i][0] + cells[2 + i][0])
        error = math.sqrt(mean)
        out.append("%d\t1\t1\t%s\t%s\t%s\n" %
                   (82 + i, text(random.gauss(mean, error)), text(error), text(1.1 * error)))
    out.append("END YODA_SCATTER2D_V2\n")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


def generated(path):
    """Z bosons that decay to two muons, as HepMC 3 writes them."""
    random = Random(0x9E4E)
    out = ["HepMC::Version 3.02.05\nHepMC::Asciiv3-START_EVENT_LISTING\n"]
    for number in range(400):
        mass = min(120.0, max(60.0, random.breit_wigner(91.19, 2.5)))
        cosine, phi = random.between(-1.0, 1.0), random.between(-math.pi, math.pi)
        across, half = 0.5 * mass * math.sqrt(1.0 - cosine * cosine), text(0.5 * mass)
        momentum = [text(across * math.cos(phi)), text(across * math.sin(phi)), text(0.5 * mass * cosine)]
        opposite = [text(-float(part)) for part in momentum]
        out.append("E %d 2 5\nU GEV MM\nW %s\nA 0 event_scale %s\n" % (number, text(random.between(0.5, 1.5)), text(mass)))
        out.append("P 1 0 2 0 0 %s %s 0 21\nP 2 0 -2 0 0 -%s %s 0 21\nV -1 0 [1,2]\n" % (half, half, half, half))
        out.append("P 3 -1 23 0 0 0 %s %s 22\n" % (text(mass), text(mass)))
        out.append("P 4 3 13 %s %s 0.1057 1\n" % (" ".join(momentum), half))
        out.append("P 5 3 -13 %s %s 0.1057 1\n" % (" ".join(opposite), half))
    out.append("HepMC::Asciiv3-END_EVENT_LISTING\n")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("".join(out), encoding="utf-8")


def hits(random, count):
    """Energies in MeV of a line on a falling background, and the layers of a calorimeter that were hit."""
    return [
        (float(text(random.gauss(12.0, 0.8) if random.uniform() < 0.4 else random.exponential(8.0))),
         int(random.between(0.0, 10.0)))
        for _ in range(count)
    ]


def numbers(code, values):
    return struct.pack("<%d%s" % (len(values), code), *values)


class Compact:
    """The parts of Thrift's compact protocol that describe a Parquet file."""

    INT, LONG, TEXT, LIST, STRUCT = 5, 6, 8, 9, 12

    def varint(self, number):
        low = number & 0x7F
        return bytes([low]) if number < 0x80 else bytes([low | 0x80]) + self.varint(number >> 7)

    def value(self, kind, value):
        if kind in (self.INT, self.LONG):
            return self.varint(2 * value)
        if kind == self.TEXT:
            return self.varint(len(value)) + value.encode()
        if kind == self.STRUCT:
            return self.struct(value)
        item, values = value
        return bytes([len(values) << 4 | item]) + b"".join(self.value(item, each) for each in values)

    def struct(self, fields):
        """@param fields number, type and value of each, in order."""
        out, last = b"", 0
        for number, kind, value in fields:
            out += bytes([(number - last) << 4 | kind]) + self.value(kind, value)
            last = number
        return out + b"\0"


def parquet(path, rows):
    """Two required columns in one row group, plain and uncompressed."""
    thrift = Compact()
    integer, long, words, several, record = thrift.INT, thrift.LONG, thrift.TEXT, thrift.LIST, thrift.STRUCT
    content, chunks, schema = b"PAR1", [], [[(4, words, "hits"), (5, integer, 2)]]
    for name, kind, code, values in (("energy", 5, "d", [row[0] for row in rows]), ("layer", 2, "q", [row[1] for row in rows])):
        data = numbers(code, values)
        page = [(1, integer, len(rows)), (2, integer, 0), (3, integer, 3), (4, integer, 3)]
        head = thrift.struct([(1, integer, 0), (2, integer, len(data)), (3, integer, len(data)), (5, record, page)])
        size, place = len(head) + len(data), len(content)
        content += head + data
        column = [(1, integer, kind), (2, several, (integer, [0])), (3, several, (words, [name])), (4, integer, 0),
                  (5, long, len(rows)), (6, long, size), (7, long, size), (9, long, place)]
        chunks.append([(2, long, place), (3, record, column)])
        schema.append([(1, integer, kind), (3, integer, 0), (4, words, name)])
    group = [(1, several, (record, chunks)), (2, long, len(content) - 4), (3, long, len(rows))]
    unit = [(1, words, "velmorak.unit.energy"), (2, words, "MeV")]
    footer = thrift.struct([(1, integer, 1), (2, several, (record, schema)), (3, long, len(rows)),
                            (4, several, (record, [group])), (5, several, (record, [unit])), (6, words, "make_data.py")])
    path.write_bytes(content + footer + numbers("I", [len(footer)]) + b"PAR1")


class Flat:
    """A FlatBuffer. A table is a dictionary of its slots: a scalar is its code and its value, other values are tables,
    texts, lists of tables, or pairs of numbers."""

    def __init__(self, root):
        self.out = bytearray(4)
        struct.pack_into("<I", self.out, 0, self.add(root))
        self.align(8)

    def align(self, size, after=0):
        self.out += bytes(-(len(self.out) + after) % size)

    def add(self, value):
        if isinstance(value, dict):
            return self.table(value)
        self.align(8, after=4)
        place = len(self.out)
        self.out += numbers("I", [len(value)])
        if isinstance(value, str):
            self.out += value.encode() + b"\0"
        elif value and isinstance(value[0], tuple):
            self.out += b"".join(numbers("q", pair) for pair in value)
        else:
            self.out += bytes(4 * len(value))
            for i, each in enumerate(value):
                self.link(place + 4 + 4 * i, each)
        return place

    def link(self, place, value):
        struct.pack_into("<I", self.out, place, self.add(value) - place)

    def table(self, slots):
        def size(value):
            return struct.calcsize(value[0]) if isinstance(value, tuple) else 4

        self.align(2)
        slots_at = len(self.out)
        count = 1 + max(slots, default=-1)
        self.out += bytes(4 + 2 * count)
        self.align(8, after=4)
        place = len(self.out)
        self.out += numbers("i", [place - slots_at])
        links = []
        for slot, value in sorted(slots.items(), key=lambda item: -size(item[1])):
            struct.pack_into("<H", self.out, slots_at + 4 + 2 * slot, len(self.out) - place)
            if isinstance(value, tuple):
                self.out += struct.pack("<" + value[0], value[1])
            else:
                links.append((len(self.out), value))
                self.out += bytes(4)
        struct.pack_into("<HH", self.out, slots_at, 4 + 2 * count, len(self.out) - place)
        for at, value in links:
            self.link(at, value)
        return place


def arrow(path, rows):
    """A stream with one batch."""
    def message(kind, header, body):
        flat = Flat({0: ("h", 4), 1: ("B", kind), 2: header, 3: ("q", len(body))}).out
        return b"\xff\xff\xff\xff" + numbers("I", [len(flat)]) + bytes(flat) + body

    def field(name, kind, about):
        return {0: name, 1: ("?", False), 2: ("B", kind), 3: about, 5: []}

    schema = {0: ("h", 0), 1: [field("energy", 3, {0: ("h", 2)}), field("layer", 2, {0: ("i", 64), 1: ("?", True)})]}
    count = len(rows)
    body = numbers("d", [row[0] for row in rows]) + numbers("q", [row[1] for row in rows])
    batch = {0: ("q", count), 1: [(count, 0), (count, 0)], 2: [(0, 0), (0, 8 * count), (8 * count, 0), (8 * count, 8 * count)]}
    path.write_bytes(message(1, schema, b"") + message(3, batch, body) + b"\xff\xff\xff\xff\0\0\0\0")


def npy(path, rows):
    """Records."""
    head = "{'descr': [('energy', '<f8'), ('layer', '<i8')], 'fortran_order': False, 'shape': (%d,), }" % len(rows)
    head += " " * (-(10 + len(head) + 1) % 64) + "\n"
    content = b"".join(struct.pack("<dq", *row) for row in rows)
    path.write_bytes(b"\x93NUMPY\x01\0" + numbers("H", [len(head)]) + head.encode() + content)


def hdf5(path, rows):
    """A group of two datasets, stored as they are."""
    nowhere = b"\xff" * 8
    place = 96  # Behind the superblock.
    out = b""

    def padded(content):
        return content + bytes(-len(content) % 8)

    def add(content):
        nonlocal out
        at = place + len(out)
        out += padded(content)
        return at

    def headed(messages):
        body = b"".join(struct.pack("<HHB3x", kind, len(padded(data)), 0) + padded(data) for kind, data in messages)
        return add(struct.pack("<BxHII4x", 1, len(messages), 1, len(body)) + body)

    def group(members):
        links = [(6, struct.pack("<BBB", 1, 0, len(name)) + name.encode() + numbers("Q", [at])) for name, at in members]
        return headed([(2, b"\0\0" + nowhere + nowhere), (10, b"\0\0")] + links)

    def unit(words):
        kind, space = struct.pack("<BBBBI", 0x13, 0, 0, 0, len(words) + 1), struct.pack("<BBB5x", 1, 0, 0)
        head = struct.pack("<BxHHH", 1, 6, len(kind), len(space))
        return [(12, head + padded(b"units\0") + kind + space + words.encode() + b"\0")]

    def dataset(kind, content, attributes):
        space = struct.pack("<BBB5xQ", 1, 1, 0, len(rows))
        layout = struct.pack("<BBQQ", 3, 1, add(content), len(content))
        return headed([(1, space), (3, kind), (5, b"\2\1\0\0"), (8, layout)] + attributes)

    real = struct.pack("<BBBBIHHBBBBI", 0x11, 0x20, 0x3F, 0, 8, 0, 64, 52, 11, 0, 52, 1023)
    whole = struct.pack("<BBBBIHH", 0x10, 8, 0, 0, 8, 0, 64)
    energy = dataset(real, numbers("d", [row[0] for row in rows]), unit("MeV"))
    layer = dataset(whole, numbers("q", [row[1] for row in rows]), [])
    root = group([("hits", group([("energy", energy), ("layer", layer)]))])
    head = b"\x89HDF\r\n\x1a\n" + bytes([0, 0, 0, 0, 0, 8, 8, 0]) + struct.pack("<HHI", 4, 16, 0)
    head += numbers("Q", [0]) + nowhere + numbers("Q", [place + len(out)]) + nowhere
    path.write_bytes(head + struct.pack("<QQ24x", 0, root) + out)


def database(path, rows):
    """Hits in layers that respond less the deeper they lie, with the depths in a table beside them."""
    rows = [(float(text(energy * (1.0 - 0.05 * layer))), layer) for energy, layer in rows]
    path.unlink(missing_ok=True)
    with contextlib.closing(sqlite3.connect(path)) as connection:
        connection.execute("CREATE TABLE layers (layer INTEGER PRIMARY KEY, depth REAL)")
        connection.execute("CREATE TABLE hits (energy REAL, layer INTEGER)")
        connection.executemany("INSERT INTO layers VALUES (?, ?)", [(i, 1.5 + 3.0 * i) for i in range(10)])
        connection.executemany("INSERT INTO hits VALUES (?, ?)", rows)
        connection.commit()
    content = bytearray(path.read_bytes())
    content[96:100] = struct.pack(">I", 3040001)  # The version of the library that wrote the file.
    path.write_bytes(content)


def fits(path):
    """Photons of a source above a flat background, and the times during which the detector was live."""
    random = Random(0xF175)

    def header(cards):
        lines = ["%-80s" % ("%-8s= %20s" % card) for card in cards] + ["%-80s" % "END"]
        return "".join(lines).encode().ljust(-(-len(lines) * 80 // 2880) * 2880)

    def table(name, columns, rows):
        count = len(columns)
        cards = [("XTENSION", "'BINTABLE'"), ("BITPIX", 8), ("NAXIS", 2), ("NAXIS1", 8 * count), ("NAXIS2", len(rows)),
                 ("PCOUNT", 0), ("GCOUNT", 1), ("TFIELDS", count), ("EXTNAME", "'%-8s'" % name)]
        for i, (column, unit) in enumerate(columns):
            cards += [("TTYPE%d" % (i + 1), "'%-8s'" % column), ("TFORM%d" % (i + 1), "'1D      '"),
                      ("TUNIT%d" % (i + 1), "'%-8s'" % unit)]
        content = b"".join(struct.pack(">%dd" % count, *row) for row in rows)
        return header(cards) + content + bytes(-len(content) % 2880)

    photons = []
    for _ in range(2500):
        is_source = random.uniform() < 0.5
        place = [random.gauss(0.2, 0.15) if is_source else random.between(-1.0, 1.0) for _ in range(2)]
        photons.append([float(text(x)) for x in (*place, random.exponential(2.0))])
    live = [[100.0 * i, 100.0 * i + float(text(random.between(60.0, 95.0)))] for i in range(12)]
    first = header([("SIMPLE", "T"), ("BITPIX", 8), ("NAXIS", 0), ("EXTEND", "T")])
    events = table("EVENTS", [("x", "deg"), ("y", "deg"), ("energy", "keV")], photons)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(first + events + table("LIVE", [("start", "s"), ("stop", "s")], live))


def runs(folder):
    """The same detector in five runs, each kept by another program."""
    random = Random(0x5EED5)
    folder.mkdir(parents=True, exist_ok=True)
    for number, (name, write) in enumerate([("run_1.parquet", parquet), ("run_2.arrow", arrow), ("run_3.npy", npy),
                                            ("run_4.h5", hdf5), ("run_5.db", database)]):
        write(folder / name, hits(random, 600 + 100 * number))


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: make_data.py FOLDER")
    folder = pathlib.Path(sys.argv[1])
    dimuon(folder / "Particle_physics" / "dimuon.aida")
    decays(folder / "First_steps" / "decays.aida")
    stored(folder / "First_steps" / "stored.aida")
    measured(folder / "Tables" / "measured.csv")
    samples(folder / "Tables" / "samples")
    recorded(folder / "Tables" / "samples")
    tracks(folder / "Tables" / "tracks.aida")
    trigger(folder / "Detectors" / "trigger.csv")
    hits_of_runs(folder / "Detectors" / "hits")
    lines(folder / "Detectors" / "lines.aida")
    scattering(folder / "Nuclear_physics" / "scattering.aida")
    stopped(folder / "Particle_physics" / "stopped.csv")
    run_values(folder / "First_steps" / "run.root")
    collisions(folder / "Event_analysis" / "collisions.aida")
    weather(folder / "Tables" / "weather.csv")
    geant4(folder / "Detectors" / "geant4")
    reference(folder / "Particle_physics" / "reference.yoda")
    generated(folder / "Particle_physics" / "generated.hepmc")
    runs(folder / "Tables" / "runs")
    fits(folder / "Tables" / "photons.fits")


if __name__ == "__main__":
    main()
