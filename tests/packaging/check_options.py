#!/usr/bin/env python3
"""Checks the descriptions in tools/options: they have exactly the options that the programs accept; --help, the pages
and the completions have exactly those of the descriptions.

usage: check_options.py programs|bash|zsh|fish|manuals SOURCE BUILD
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import tomllib

SKIPPED = 77
# Where a program says what it accepts, and how.
SOURCES = {
    "velmorak": ("src/velko.cpp", r'strcmp\(arguments\[i\], "(-[^"]+)"\)'),
    "velmorak-batch": ("tools/velmorak-batch/velmorak-batch.in", r'add_argument\("(-[^"]+)"'),
    "velmorak-kind": ("tools/velmorak-kind/velmorak-kind.in", r'add_argument\("(-[^"]+)"'),
    "velmorak-recover": ("tools/velmorak-recover/velmorak-recover.in", r'add_argument\("(-[^"]+)"'),
    "velmorak-run": ("tools/velmorak-run/Options.cpp", r'(?:add_option|add_flag|set_version_flag)\("(-[^"]+)"'),
    "velmorak-view": ("tools/velmorak-view/main.cpp", r'(?:add_option|add_flag|set_version_flag)\("(-[^"]+)"'),
}
# Of the parsers' own accord.
HELP = {"-h", "--help"}
UNKNOWN = r"not expected|unrecognized arguments|invalid choice"


class Described:
    def __init__(self, source, build):
        self.source = pathlib.Path(source).resolve()
        self.build = pathlib.Path(build).resolve()
        self.made = self.build / "options"

    def programs(self):
        files = sorted((self.source / "tools/options").glob("*.toml"))
        return {file.stem: tomllib.loads(file.read_text(encoding="utf-8")) for file in files}

    def with_options(self):
        return {name: told for name, told in self.programs().items() if told.get("option")}


def names(told):
    """All options, with those of commands."""
    rows = [*told.get("option", []), *(option for command in told.get("command", []) for option in command.get("option", []))]
    return {name for row in rows for name in row["names"]}


def top_names(told):
    return {name for row in told.get("option", []) for name in row["names"]}


def run(*command, **options):
    return subprocess.run([str(each) for each in command], capture_output=True, text=True, check=False, **options)


def options_in(text):
    return set(re.findall(r"(?<![\w-])(--?[a-z]+(?:-[a-z]+)*)(?![\w-])", text))


def check_accepted(described):
    """Described options are those in the source, and the program knows each."""
    assert set(described.with_options()) == set(SOURCES), set(described.with_options()) ^ set(SOURCES)
    for program, told in described.with_options().items():
        file, pattern = SOURCES[program]
        accepted = set(re.findall(pattern, (described.source / file).read_text(encoding="utf-8")))
        assert len(accepted) > 1, (program, accepted)
        if told.get("help"):
            accepted |= HELP
        assert accepted == names(told), (program, accepted ^ names(told))
        if program == "velmorak":
            continue
        for row in told["option"]:
            for name in set(row["names"]) - HELP - {"--version"}:
                value = [row["value"]] if row.get("value") else []
                # An option of no program at the end must be the only one that is refused.
                done = run(described.build / "bin" / program, name, *value, "--no-such-option")
                assert done.returncode != 0, (program, name)
                refused = [line for line in done.stderr.splitlines() if re.search(UNKNOWN, line)]
                assert not any(name in options_in(line) for line in refused), (program, name, done.stderr)


def check_help(described):
    for program, told in described.programs().items():
        if not told.get("help"):
            continue
        text = (described.made / "help" / f"{program}.txt").read_text()
        lines = text.splitlines()
        assert len(lines) <= 24 and max(map(len, lines)) <= 80, (program, len(lines), max(map(len, lines)))
        assert names(told) <= options_in(text), (program, names(told) - options_in(text))
        for option in ("--help", "-h"):
            done = run(described.build / "bin" / program, option)
            assert (done.returncode, done.stdout, done.stderr) == (0, text, ""), (program, done)
        done = run(described.build / "bin" / program, "--version")
        assert done.returncode == 0 and re.fullmatch(r"(velmorak-\w+ )?\d+\.\d+\.\d+\n", done.stdout), (program, done)


def check_running_page(described):
    """docs/running.md has a table of the runner's options and of its exit statuses."""
    told = described.programs()["velmorak-run"]
    page = (described.source / "docs/running.md").read_text(encoding="utf-8")
    stated = set()
    for line in page.splitlines():
        if re.match(r"\| `-", line):
            stated |= options_in(line.split("|")[1])
    assert stated == names(told), stated ^ names(told)
    statuses = {str(each["status"]) for each in told["exit"]}
    assert set(re.findall(r"(?m)^\| ([0-9]) \|", page)) == statuses, statuses


def check_descriptions(described):
    """The generator refuses incomplete descriptions."""
    whole = (described.source / "tools/options/velmorak-recover.toml").read_text(encoding="utf-8")
    for change, said in ((("help = \"remove an entry, or all of them\"\n", ""), "no other line names it"),
                         (('names = ["--to"]', 'names = ["--forget"]'), "described twice"),
                         (("complete = [", "compleat = ["), "compleat")):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            shutil.copytree(described.source / "tools/options", root / "tools/options")
            (root / "docs").mkdir()
            shutil.copy(described.source / "docs/environment.md", root / "docs")
            assert change[0] in whole
            (root / "tools/options/velmorak-recover.toml").write_text(whole.replace(*change), encoding="utf-8")
            done = run(sys.executable, "-B", root / "tools/options/generate.py", root, root / "made", "1.0.0", "2026-01-01")
            assert done.returncode == 1 and said in done.stderr and "Traceback" not in done.stderr, done.stderr


def check_programs(described):
    check_accepted(described)
    check_help(described)
    check_running_page(described)
    check_descriptions(described)


def bash_completed(described, folder, *words):
    """The completions of the last word."""
    program = words[0]
    line = "source '%s'; COMP_WORDS=(%s); COMP_CWORD=%d; _%s; printf '%%s\\n' \"${COMPREPLY[@]}\"" % (
        described.made / "bash" / program, " ".join("'%s'" % word for word in words), len(words) - 1,
        program.replace("-", "_"))
    done = run("bash", "-c", line, cwd=folder)
    assert done.returncode == 0 and not done.stderr, done.stderr
    return set(done.stdout.split())


def fish_completed(described, folder, *words):
    line = "source '%s'; complete -C '%s'" % (described.made / "fish" / f"{words[0]}.fish", " ".join(words))
    done = run("fish", "--no-config", "-c", line, cwd=folder, env=dict(os.environ, HOME=str(folder)))
    assert done.returncode == 0 and not done.stderr, done.stderr
    return {each.split("\t")[0] for each in done.stdout.splitlines()}


def check_completion(described, completed, is_bash):
    """bash gives options of every form for "-", and no files but those of the pattern; fish has these first."""
    with tempfile.TemporaryDirectory() as folder:
        for name in ("one.zedra", "other.txt", "run.json"):
            (pathlib.Path(folder) / name).touch()
        (pathlib.Path(folder) / "job").mkdir()

        def of(*words):
            return {each.rstrip("/") for each in completed(described, folder, *words)}

        for program, told in described.with_options().items():
            got = of(program, "-")
            expected = top_names(told) if not told.get("command") else top_names(told) & got | {"--help"}
            assert got == expected if is_bash else {each for each in expected if each.startswith("--")} <= got | of(
                program, "--"), (program, got ^ expected)
        assert of("velmorak-run", "--sc") == {"--scan"}
        assert of("velmorak-run", "o") == {"one.zedra"} if is_bash else "one.zedra" in of("velmorak-run", "o")
        assert of("velmorak-run", "--again", "") >= {"run.json", "job"}
        assert not is_bash or "one.zedra" not in of("velmorak-run", "--again", "")
        assert "-" in of("velmorak-run", "--events", "")
        assert of("velmorak-run", "--merge", "j") >= {"job"}
        assert of("velmorak-run", "--part", "") == {"auto"}, of("velmorak-run", "--part", "")
        assert of("velmorak-run", "-a", "o") == {"one.zedra", "other.txt"}
        assert of("velmorak-batch", "sl") == {"slurm"}, of("velmorak-batch", "sl")
        assert of("velmorak-batch", "slurm", "jo") >= {"job"}
        assert {"new", "build", "check", "try", "describe", "install"} <= of("velmorak-kind", "")
        assert of("velmorak-kind", "new", "--sh") == {"--shape"}
        assert "accumulator" in of("velmorak-kind", "new", "--shape", "")
        assert "--strict" in of("velmorak-kind", "check", "--") and "--strict" not in of("velmorak-kind", "new", "--")
        assert of("velmorak-recover", "--forget", "") == {"all"}


def check_bash(described):
    check_completion(described, bash_completed, True)


def check_fish(described):
    if not shutil.which("fish"):
        print("skipped: fish is not installed")
        return SKIPPED
    check_completion(described, fish_completed, False)
    return 0


def check_zsh(described):
    """The specifications that each function gives to zsh's _arguments, which itself works only in a terminal."""
    if not shutil.which("zsh"):
        print("skipped: zsh is not installed")
        return SKIPPED
    stub = ('_arguments() { print -rl -- "$@" }; _describe() { print -rl -- "${(@P)2}" }; state=%s; line=(%s); '
            'words=(); source "%s"')
    for program, told in described.with_options().items():
        file = described.made / "zsh" / f"_{program}"
        assert file.read_text().startswith(f"#compdef {program}\n")
        assert run("zsh", "-f", "-n", file).returncode == 0
        done = run("zsh", "-f", "-c", stub % ("command", "", file))
        assert done.returncode == 0 and not done.stderr, (program, done.stderr)
        specs = done.stdout.splitlines()
        got = {found[1] for each in specs if (found := re.match(r"\*?(--?[a-z][a-z-]*)\[", each))}
        assert got == top_names(told), (program, got ^ top_names(told))
        for row in told["option"]:
            for spec in (each for each in specs if each.startswith((row["names"][0] + "[", "*" + row["names"][0] + "["))):
                assert bool(row.get("value")) == bool(re.search(r"\]:[^:]+:", spec)), spec
    text = (described.made / "zsh/_velmorak-kind").read_text()
    assert re.search(r"new\)\s+_arguments -S '--shape\[", text), text
    return 0


def check_manuals(described):
    found = [each for each in ("mandoc", "lexgrog", "man") if shutil.which(each)]
    if len(found) < 3:
        print("skipped: mandoc and man-db are not installed")
        return SKIPPED
    for program, told in described.programs().items():
        page = described.made / "man" / f"{program}.1"
        done = run("mandoc", "-T", "lint", "-W", "warning", page)
        assert done.returncode == 0 and not done.stdout, done.stdout
        done = run("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page, env=dict(os.environ, MANWIDTH="80"))
        assert done.returncode == 0 and not done.stderr, done.stderr
        done = run("lexgrog", page)
        assert f'"{program} - {told["summary"]}"' in done.stdout, done.stdout
        shown = run("mandoc", "-T", "ascii", page).stdout
        shown = re.sub(".\b", "", shown)
        assert names(told) <= options_in(shown), (program, names(told) - options_in(shown))
    return 0


CHECKS = {"programs": check_programs, "bash": check_bash, "zsh": check_zsh, "fish": check_fish, "manuals": check_manuals}

if __name__ == "__main__":
    sys.exit(CHECKS[sys.argv[1]](Described(*sys.argv[2:])))
