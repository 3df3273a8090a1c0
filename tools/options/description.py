"""Reads the descriptions of the programs' options: one PROGRAM.toml for each program."""

import dataclasses
import pathlib
import re
import tomllib


class Mistake(Exception):
    """A description that is incomplete or contradicts itself."""


@dataclasses.dataclass
class Option:
    """Names that have the same meaning, as ["--version"], or several options that share one line."""

    names: list
    value: str = ""        # Placeholder; empty for an option without a value.
    complete: object = ""  # What completes the value: see Argument.
    argument: object = ""  # What completes the program's argument after this option.
    repeat: bool = False
    line: str = ""         # Left part of the line in --help.
    help: str = ""         # Right part; empty if the line of another option shows this one.
    brief: str = ""        # For completions; else the first line's worth of help.
    manual: str = ""       # For the manual page; else the help as a sentence.


@dataclasses.dataclass
class Argument:
    """complete is a pattern ("*.json"), "file", "file or -", "directory", a list of words, or empty."""

    name: str
    complete: object = ""


@dataclasses.dataclass
class Command:
    name: str
    usage: str
    help: str
    manual: str
    brief: str = ""
    arguments: list = dataclasses.field(default_factory=list)
    options: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Program:
    name: str
    summary: str
    synopsis: list
    description: str
    arguments: list
    options: list
    commands: list
    sections: list
    exits: list
    help: dict
    environment: list  # Rows of the table of environment variables: name, effect.


def sentence(text):
    return text[:1].upper() + text[1:] + "."


def options_of(rows):
    return [Option(**row) for row in rows]


def arguments_of(rows):
    return [Argument(**row) for row in rows]


def commands_of(rows):
    commands = []
    for row in rows:
        row = dict(row)
        options = options_of(row.pop("option", []))
        arguments = arguments_of(row.pop("arguments", []))
        commands.append(Command(options=options, arguments=arguments, **row))
    return commands


def variables(page, reader):
    """The rows of docs/environment.md whose second column names the reader."""
    rows = re.findall(r"(?m)^\| `(\w+)` \| ([^|]+) \| ([^|]+) \|$", page.read_text(encoding="utf-8"))
    return [(name, effect) for name, readers, effect in rows if reader in re.split(r", ", readers)]


def check(program):
    names = [name for option in program.options for name in option.names]
    if len(set(names)) != len(names):
        raise Mistake(f"{program.name}: an option is described twice")
    lines = " ".join(option.line for option in program.options if option.help)
    for option in program.options:
        shown = option.help or all(re.search(rf"(?<![\w-]){name}(?![\w-])", lines) for name in option.names)
        if program.help and not shown:
            raise Mistake(f"{program.name}: {option.names[0]} has no help, and no other line names it")
        if not (option.help or option.manual):
            raise Mistake(f"{program.name}: {option.names[0]} is not described")


def read(file, environment):
    file = pathlib.Path(file)
    with file.open("rb") as stream:
        told = tomllib.load(stream)
    reader = told.pop("environment", "")
    try:
        program = Program(
            name=file.stem, help=told.pop("help", {}), arguments=arguments_of(told.pop("arguments", [])),
            options=options_of(told.pop("option", [])), commands=commands_of(told.pop("command", [])),
            sections=told.pop("section", []), exits=told.pop("exit", []),
            environment=variables(pathlib.Path(environment), reader) if reader else [], **told)
    except TypeError as error:
        raise Mistake(f"{file}: {error}") from error
    check(program)
    return program


def brief(option):
    """A few words for a completion."""
    return option.brief or option.help
