"""Names in expressions that are columns, or numbers at inputs: in documents and on the command line."""

import sys

from pipelines import Place, plugin


def rows():
    return plugin("Rows", "RandomTable", rows="100", columns="mass: gauss(5, 1); energy: gauss(0, 1)", seed="3")


def inputs_of(place, document, name):
    """The lines of --list about a plug-in."""
    lines = place.run("--list", document).stdout.splitlines()
    first = next(i for i, line in enumerate(lines) if name in line and not line.startswith(" "))
    rest = lines[first + 1:]
    last = next((i for i, line in enumerate(rest) if not line.startswith(" ")), len(rest))
    return [line.strip() for line in rest[:last]]


def check_old_documents(place):
    document = place.document(
        rows(), plugin("Cut", "Filter", table=["Rows", "table"], condition="mass > low", mass="", low="4"),
        plugin("Mean", "Statistics", data=["Cut", "table"], expression="mass"))
    assert inputs_of(place, document, "Cut") == [
        'table (table): from "Rows" table', "condition (text): mass > low", "low (number): 4"]
    assert place.run(document).returncode == 0


def check_command_line(place):
    """A bare name without an input can be set as before, and its number counts."""
    document = place.document(
        rows(), plugin("Cut", "Filter", table=["Rows", "table"], condition="mass > low and energy < @high"),
        plugin("Count", "Statistics", data=["Cut", "table"], expression="mass"))
    done = place.run("--set", "Cut.low=4", "--set", "Cut.high=0", document)
    assert done.returncode == 0 and "no column" not in done.stderr, done.stderr
    failed = place.run("--set", "Cut.high=0", document)
    assert failed.returncode != 0 and 'there is no column "low" (a number at an input is written @low)' in \
        failed.stderr, failed.stderr
    wrong = place.run("--set", "Cut.lwo=4", document)
    assert wrong.returncode != 0 and 'has no input "lwo"' in wrong.stderr, wrong.stderr


def check_check(place):
    """--check reads the columns and names those that are missing, without a run."""
    (place.folder / "rows.csv").write_text("energy,tag\n1,2\n")
    file = plugin("File", "CsvTable", file="rows.csv")
    twice = plugin("Twice", "Formula", table=["File", "table"], column="twice", expression="2 * energy")
    good = place.document(file, twice, plugin("Cut", "Filter", table=["Twice", "table"], condition="twice > @cut"),
                          plugin("Peak", "Histogram1D", table=["Cut", "table"], expression="twice + tag"))
    done = place.run("--check", good)
    assert done.returncode == 0 and done.stderr == "", done
    bad = place.document(file, twice, plugin("Cut", "Filter", table=["Twice", "table"], condition="twise > 1"),
                         plugin("Peak", "Histogram1D", table=["Twice", "table"], expression="tagg"))
    done = place.run("--check", bad)
    assert done.returncode != 0, done
    assert 'there is no column "twise"' in done.stderr and 'did you mean "twice"?' in done.stderr, done.stderr
    assert 'there is no column "tagg"' in done.stderr and 'did you mean "tag"?' in done.stderr, done.stderr
    assert not (place.folder / "test.results").exists(), "a check runs nothing"


def main():
    for check in (check_old_documents, check_command_line, check_check):
        with Place(sys.argv[1]) as place:
            check(place)
    return 0


if __name__ == "__main__":
    sys.exit(main())
