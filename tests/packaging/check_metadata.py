#!/usr/bin/env python3
"""Checks the metadata of the packages against the sources and, where they are installed, with the validators.

usage: check_metadata.py lists|desktop SOURCE BUILD
"""

import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

SKIPPED = 77
# Of Debian's build-essential.
ESSENTIAL = {"g++"}
# Of every package build.
DEBHELPER = {"debhelper-compat"}


def paragraphs(text):
    """Fields of the paragraphs of a control file."""
    return [{name: value.strip() for name, value in re.findall(r"(?m)^([\w-]+):((?:.*\n?)(?:[ \t].*\n?)*)", each)}
            for each in re.split(r"\n\n+", text.strip())]


def dependencies(field):
    """Names, the first of alternatives."""
    return {re.split(r"[\s(|:]", each.strip())[0] for each in field.split(",") if each.strip() and "${" not in each}


def listed(source, *purposes):
    text = (source / "scripts/packages.txt").read_text(encoding="utf-8")
    return {package for purpose in purposes for package in re.findall(rf"(?m)^(?:optional-)?{purpose} (\S+)$", text)}


def check_dependencies(source, control):
    needed = listed(source, "build") - ESSENTIAL
    stated = dependencies(control["Source"]["Build-Depends"]) - DEBHELPER
    assert stated == needed, ("Build-Depends and packages.txt differ", stated ^ needed)
    run = listed(source, "run")
    packages = {"velmorak", "velmorak-run"}
    stated = set().union(*(dependencies(control[name].get(field, "")) for name in packages
                           for field in ("Depends", "Recommends")))
    assert run <= stated, ("what Velmorak runs with and no package depends on", run - stated)
    assert not dependencies(control["velmorak-run"]["Depends"]) & {"adwaita-icon-theme", "librsvg2-common"}


def check_installed(source, control):
    """Every collection, program and description belongs to one package."""
    lines = {file.stem: file.read_text().split() for file in (source / "debian").glob("*.install")}
    assert set(lines) == set(control) - {"Source"}, set(lines) ^ set(control)
    every = [line for each in lines.values() for line in each]
    assert len(set(every)) == len(every)
    collections = {line.rsplit("/", 1)[1] for line in every if "/collections/" in line}
    text = (source / "collections/CMakeLists.txt").read_text(encoding="utf-8")
    shipped = set(re.findall(r"(?m)^velmorak_collection\((\w+)", text))
    assert collections == shipped, collections ^ shipped
    programs = {file.stem for file in (source / "tools/options").glob("*.toml")}
    assert {line.rsplit("/", 1)[1] for line in every if line.startswith("usr/bin/")} == programs
    for program in programs:
        owners = {package for package, each in lines.items() for line in each
                  if re.search(rf"(/bin/|/man1/|completions(\.d)?/)_?{program}(\.1|\.fish)?$", line)}
        assert len(owners) == 1, (program, owners)


def check_version(source, build):
    declared = re.search(r"project\(Velmorak VERSION ([0-9.]+)", (source / "CMakeLists.txt").read_text())[1]
    first = (source / "debian/changelog").read_text(encoding="utf-8").split("\n", 1)[0]
    assert first.startswith(f"velmorak ({declared}-"), first
    made = (build / "packaging/velmorak.metainfo.xml").read_text(encoding="utf-8")
    assert f'<release version="{declared}"' in made, made


def check_licences(source):
    """docs/licences.md names every library that is linked, and no other."""
    rows = re.findall(r"(?m)^\| `(\S+)` \|", (source / "docs/licences.md").read_text(encoding="utf-8"))
    linked = {package for package in listed(source, "build") if package.startswith("lib") or package.endswith("-dev")}
    assert set(rows) - {"libstdc++", "glibc"} == linked, set(rows) ^ linked


def check_texts(source):
    """The licence in debian/copyright is the one of the sources."""
    def words(text):
        return [word for word in text.split() if word != "."]
    told = (source / "debian/copyright").read_text(encoding="utf-8").split("License: Expat\n Permission", 1)[1]
    assert words("Permission" + told) == words(
        "Permission" + (source / "LICENSE").read_text(encoding="utf-8").split("Permission", 1)[1])
    definition = (source / "packaging/velmorak.def").read_text(encoding="utf-8")
    assert re.match(r"Bootstrap: \w+\nFrom: \S+\n", definition)
    for name in re.findall(r"build/package/([a-z-]+)_", definition):
        assert f"Package: {name}\n" in (source / "debian/control").read_text(encoding="utf-8"), name


def check_lists(source, build):
    found = paragraphs((source / "debian/control").read_text(encoding="utf-8"))
    control = {each.get("Package", "Source"): each for each in found}
    assert set(control) == {"Source", "velmorak", "velmorak-run", "velmorak-formats", "velmorak-dev", "velmorak-doc"}
    check_dependencies(source, control)
    check_installed(source, control)
    check_version(source, build)
    check_licences(source)
    check_texts(source)
    return 0


def check_desktop(source, build):
    entry = source / "packaging/velmorak.desktop"
    metadata = build / "packaging/velmorak.metainfo.xml"
    types = source / "packaging/velmorak-mime.xml"
    mime = "{http://www.freedesktop.org/standards/shared-mime-info}"
    kind = xml.etree.ElementTree.parse(types).getroot().find(f"{mime}mime-type")
    assert f"MimeType={kind.get('type')};" in entry.read_text()
    # The icon of the type is installed under its name.
    icon = kind.find(f"{mime}icon").get("name")
    assert f"RENAME {icon}.svg" in (source / "packaging/CMakeLists.txt").read_text()
    for name in ("velmorak.svg", "velmorak-document.svg"):
        xml.etree.ElementTree.parse(source / "packaging" / name)
    tree = xml.etree.ElementTree.parse(metadata).getroot()
    pictures = [image.text.rsplit("/", 1)[1] for image in tree.iter("image")]
    assert len(pictures) >= 3 and all((source / "docs" / name).is_file() for name in pictures), pictures
    assert tree.find("launchable").text == "velmorak.desktop"
    validators = [["desktop-file-validate", entry], ["appstreamcli", "validate", "--no-net", metadata]]
    missing = [command[0] for command in validators if not shutil.which(command[0])]
    for command in validators:
        if command[0] not in missing:
            done = subprocess.run(command, capture_output=True, text=True, check=False)
            assert done.returncode == 0 and "W:" not in done.stdout, done.stdout + done.stderr
    if missing:
        print("skipped in part: not installed:", *missing)
    return SKIPPED if missing else 0


CHECKS = {"lists": check_lists, "desktop": check_desktop}

if __name__ == "__main__":
    sys.exit(CHECKS[sys.argv[1]](*(pathlib.Path(each).resolve() for each in sys.argv[2:])))
