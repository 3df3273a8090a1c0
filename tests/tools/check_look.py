#!/usr/bin/env python3
"""Checks what velmorak-run --look prints about files of each format.

usage: check_look.py VELMORAK-RUN SOURCE
"""

import json
import pathlib
import subprocess
import sys
import tempfile


def look(runner, *arguments):
    return subprocess.run([runner, "--look", *map(str, arguments)], capture_output=True, text=True, check=False)


def objects_of(runner, file):
    done = look(runner, file, "--json")
    assert done.returncode == 0, done.stderr
    return json.loads(done.stdout)


def check_root(runner, source):
    file = source / "tests/data/root/uproot-sample-6.20.04-lz4.root"
    found = objects_of(runner, file)
    assert found["format"] == "ROOT" and found["file"] == str(file), found
    tree = found["objects"][0]
    assert (tree["path"], tree["type"], tree["rows"], tree["table"]) == ("sample", "TTree", 30, True), tree
    columns = {column["name"]: column for column in tree["columns"]}
    assert columns["f8"] == {"name": "f8", "type": "real", "list": False, "unit": ""}, columns["f8"]
    assert columns["Ai4"]["list"] and columns["Ai4"]["type"] == "integer", columns["Ai4"]
    text = look(runner, file).stdout.splitlines()
    assert text[0] == f"{file}: ROOT", text[0]
    assert text[1].startswith("  sample  TTree, 30 rows, "), text[1]
    assert any(line.split() == ["f8", "real"] for line in text), text


def check_text(runner, folder):
    file = folder / "a.txt"
    file.write_text("x,n,name\n0.5,1,a\n1.5,2,b\n")
    assert look(runner, file).stdout == (
        f"{file}: CSV\n  table, 2 rows, 3 columns\n    x     real\n    n     integer\n    name  text\n")


def check_aida(runner, folder):
    file = folder / "a.aida"
    file.write_text('<?xml version="1.0"?><aida><tuple name="t"><columns><column name="x" type="double"/></columns>'
                    '<rows><row><entry value="3"/></row></rows></tuple><histogram1d name="h" title="energy"><axis '
                    'direction="x" min="0" max="4" numberOfBins="4"/><data1d><bin1d binNum="1" entries="2" height="2" '
                    'error="1.5"/></data1d></histogram1d></aida>')
    tuple_, histogram = objects_of(runner, file)["objects"]
    assert tuple_["rows"] == 1 and tuple_["columns"][0]["name"] == "x", tuple_
    assert histogram["type"] == "histogram1d" and not histogram["table"], histogram
    assert histogram["description"].startswith('"energy", 4 bins from 0 to 4, 2 entries, mean '), histogram


def check_yoda(runner, source):
    found = objects_of(runner, source / "examples/Particle_physics/reference.yoda")
    assert found["format"] == "YODA", found
    mass, points = found["objects"]
    assert (mass["path"], mass["type"], mass["table"]) == ("/MC/mass", "HISTO1D_V3", False), mass
    assert mass["description"].startswith('"Mass of two muons", 20 bins from 81 to 101, '), mass
    assert points["path"] == "/REF/mass" and "10 points" in points["description"], points


def check_events(runner, source, folder):
    found = objects_of(runner, source / "examples/Particle_physics/generated.hepmc")
    assert found["format"] == "HepMC3", found
    (events,) = found["objects"]
    assert (events["type"], events["rows"], events["table"]) == ("events", 400, True), events
    assert {"name": "px", "type": "real", "list": True, "unit": "GeV"} in events["columns"], events
    for name, text in (("HepMC2", "\nHepMC::Version 2.06.09\nHepMC::IO_GenEvent-START_EVENT_LISTING\n"
                                  "HepMC::IO_GenEvent-END_EVENT_LISTING\n"),
                       ("LHE", '<?xml version="1.0"?>\n<LesHouchesEvents version="3.0">\n</LesHouchesEvents>\n')):
        file = folder / "events.txt"
        file.write_text(text)
        found = objects_of(runner, file)
        assert found["format"] == name and found["objects"][0]["rows"] == 0, found


def check_geant4(runner, source):
    files = source / "examples/Detectors/geant4"
    found = objects_of(runner, files / "run_nt_hits_t0.csv")
    assert found["format"] == "Geant4 ntuple" and found["objects"][0]["rows"] == 1500, found
    assert [column["name"] for column in found["objects"][0]["columns"]] == ["edep", "layer", "times"], found
    found = objects_of(runner, files / "run_h1_edep.csv")
    assert found["format"] == "Geant4 histogram" and found["objects"][0]["type"] == "h1d", found
    assert "40 bins from 0 to 20, 3000 entries" in found["objects"][0]["description"], found


def check_failures(runner, folder):
    file = folder / "unknown"
    file.write_bytes(b"\x7fELF\0\0\0\1")
    done = look(runner, file)
    assert done.returncode == 1 and ("unknown has no known format; known are AIDA, ROOT, YODA, HepMC2, HepMC3, LHE, Geant4 ntuple, "
            "Geant4 histogram, CSV" in done.stderr), done.stderr
    done = look(runner, folder / "missing")
    assert done.returncode == 1 and "missing cannot be opened: No such file" in done.stderr, done.stderr
    done = look(runner, folder)
    assert done.returncode == 1 and "is a folder" in done.stderr, done.stderr
    done = subprocess.run([runner, "--json", "a.zedra"], capture_output=True, text=True, check=False)
    assert done.returncode == 1 and "--look" in done.stderr, done.stderr


def main(runner, source):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        check_root(runner, pathlib.Path(source))
        check_text(runner, folder)
        check_aida(runner, folder)
        check_yoda(runner, pathlib.Path(source))
        check_events(runner, pathlib.Path(source), folder)
        check_geant4(runner, pathlib.Path(source))
        check_failures(runner, folder)


if __name__ == "__main__":
    main(*sys.argv[1:])
