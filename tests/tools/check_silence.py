#!/usr/bin/env python3
"""What a user must not have to find out alone: stale files, missing objects, rows and plug-ins that are left out.

usage: check_silence.py VELMORAK-RUN
"""

import sys

from pipelines import Place, plugin, table


# All kinds that read a file.
READERS = (
    "AidaFunction", "AidaHistogram", "AidaPoints", "AidaProfile", "AidaTable", "ArrowTable", "CsvTable", "FitsTable",
    "Geant4Histogram", "Hdf5Table", "HepMcTable", "NumpyTable", "ParquetTable", "RootHistogram", "RootPoints", "RootProfile",
    "RootTable", "RootValue", "SqliteTable", "Table", "YodaObjects")


def histogram(name, source, **others):
    return plugin(name, "Histogram1D", table=[source, "table"],
                  **dict(dict(expression="x", bins="5", low="-5", high="5"), **others))


def names(folder):
    return sorted(str(each.relative_to(folder)) for each in folder.rglob("*") if each.is_file())


def check_former_files(place):
    """A picture whose plug-in fails goes to "former"; the run, its record and its report say so."""
    def document(expression):
        return place.document(*table(1000),
                              plugin("Picture", "Plot", object=["Upper", "histogram"], formats="svg"),
                              histogram("Second", "Rows", expression=expression),
                              plugin("Other", "Plot", object=["Second", "histogram"], formats="svg"),
                              plugin("Page", "Report", object=["Upper", "histogram"]))
    results = place.folder / "test.results"
    good = place.run(document("x"))
    assert good.returncode == 0, good.stderr
    first = names(results)
    assert "Other.svg" in first and "Page.html" in first and place.record()["former"] == [], first
    assert any(each["name"] == "Page" and each["results"] for each in place.record()["plugins"])
    bad = place.run(document("y"))
    assert bad.returncode == 2, bad
    assert "Other.svg" not in names(results) and "former/Other.svg" in names(results), names(results)
    assert "Picture.svg" in names(results), "a result that is reused is confirmed"
    moved = {each["file"] for each in place.record()["former"]}
    assert {"Other.svg", "Other.gp", "Other.dat"} <= moved, moved
    assert 'Other.svg of "Other"' in bad.stderr and str(results / "former") in bad.stderr, bad.stderr
    page = (results / "Page.html").read_text()
    assert "<td>Other.svg</td>" in page and "<td>Page.html</td>" not in page, page
    again = place.run(document("x"))
    assert again.returncode == 0 and names(results) == first, (again.stderr, names(results))


def check_plot_without_an_object(place):
    done = place.run(place.document(
        *table(1000), histogram("Good", "Rows"), histogram("Lost", "Rows", expression="y"),
        plugin("Picture", "Plot", object=["Good", "histogram"], objects="2", object2=["Lost", "histogram"],
               formats="svg"),
        plugin("None", "Plot", object=["Lost", "histogram"], formats="svg")))
    assert done.returncode == 2, done
    assert 'Plot "Picture": warning: "Lost" is missing: there is no column "y"' in done.stderr, done.stderr
    assert 'Plot "None": not run because of "Lost"' in done.stderr, done.stderr
    picture = (place.folder / "test.results" / "Picture.svg").read_text()
    assert "is missing" in picture and "there is no column" in picture, "the picture says it as well"


def check_fit_without_end(place):
    """The curve of a fit that does not converge is drawn with its data, and marked."""
    done = place.run(place.document(
        *table(3000), histogram("Data", "Rows", bins="40", low="-4", high="4"),
        plugin("Fit", "Fit", data=["Data", "histogram"], model="gauss + gauss + gauss",
               start="mean=0, mean_2=0.1, mean_3=-3"),
        plugin("Picture", "Plot", object=["Data", "histogram"], objects="2", object2=["Fit", "function"],
               formats="svg"),
        plugin("After", "Print", object=["Fit", "function"])))
    assert 'Fit "Fit" failed' in done.stderr, done.stderr
    assert "did not converge" in done.stderr, done.stderr
    picture = (place.folder / "test.results" / "Picture.svg").read_text()
    assert "not converged" in picture and "last curve" in picture, "the curve is marked"
    assert 'Print "After": not run because of "Fit"' in done.stderr, done.stderr


def check_nothing_left(place):
    done = place.run(place.document(
        *table(1000), plugin("None", "Filter", table=["Rows", "table"], condition="x > 100"),
        histogram("Empty", "None"), histogram("Beside", "Rows", low="100", high="200"),
        plugin("Blank", "Plot", object=["Empty", "histogram"], formats="svg")))
    assert done.returncode == 0, done
    for line in ('Filter "None": warning: keeps none of its 1000 rows',
                 'Histogram1D "Empty": warning: it has no entries',
                 'Histogram1D "Beside": warning: it has no entries in its range: 1000 outside, 0 with NaN',
                 'Plot "Blank": warning: there is nothing to draw: no object has entries or points'):
        assert done.stderr.splitlines().count(line) == 1, (line, done.stderr)


def check_unconnected(place):
    lonely = [plugin(name, "RandomTable", rows="1", columns="x: gauss(0, 1)") for name in ("Alone", "Other")]
    document = place.document(*table(1000), *lonely)
    line = 'Not run, because nothing leads to them from "Rows": "Alone", "Other"'
    done = place.run(document)
    assert done.returncode == 0 and done.stderr.splitlines().count(line) == 1, done.stderr
    checked = place.run("--check", document)
    assert checked.returncode == 0 and checked.stderr.splitlines().count(line) == 1, checked.stderr


def check_columns(place):
    columns = "; ".join("c%d: gauss(0, 1)" % number for number in range(30))
    done = place.run(place.document(
        plugin("Rows", "RandomTable", rows="10", columns=columns),
        plugin("Wrong", "Formula", table=["Rows", "table"], column="z", expression="d17 + 1"),
        plugin("Also", "Select", table=["Rows", "table"], columns="c1 k2")))
    line = next(each for each in done.stderr.splitlines() if 'no column "d17"' in each)
    assert 'the columns are "c17", ' in line and line.split("; did")[0].count('"c') == 20 and "and 10 more" in line, line
    assert 'there is no column "k2"; the columns are "c2", ' in done.stderr, done.stderr


def check_reasons(place):
    """Errors carry the reason of the system and the full path."""
    folder = place.folder
    plugins = [plugin("Start", "RandomTable", rows="1", columns="x: gauss(0, 1)")]
    for kind in READERS:
        plugins.append(plugin(kind, kind, file="nothing." + kind.lower()))
    document = place.document(*plugins)
    for kind in READERS:
        done = place.run("--start", kind, document)
        path = str(folder / ("nothing." + kind.lower()))
        assert path in done.stderr and "No such file or directory" in done.stderr, (kind, done.stderr)


def main():
    for check in (check_former_files, check_plot_without_an_object, check_fit_without_end, check_nothing_left,
                  check_unconnected, check_columns, check_reasons):
        with Place(sys.argv[1]) as place:
            check(place)
    return 0


if __name__ == "__main__":
    sys.exit(main())
