"""The text of --help: at most 80 columns wide."""

import textwrap

WIDTH = 80


def left_of(option):
    return option.line or " ".join([", ".join(option.names), option.value]).strip()


def row(left, text, column):
    """Lines with the left part and, from the column on, the text."""
    left = "  " + left
    lines = textwrap.wrap(text, WIDTH - column, break_on_hyphens=False)
    if len(left) >= column:
        # One blank apart, where that fits; else below.
        if len(left) + 1 + len(lines[0]) <= WIDTH:
            return [f"{left} {lines[0]}"] + [" " * column + line for line in lines[1:]]
        return [left] + [" " * column + line for line in lines]
    first = [left.ljust(column) + lines[0]]
    return first + [" " * column + line for line in lines[1:]]


def exits(program):
    told = ", ".join(f"{each['status']} {each['help']}" for each in program.exits)
    return f"Exit status: {told}. See man {program.name}."


def help_text(program):
    column = program.help["column"]
    lines = ["Usage: " + program.help["usage"][0], *program.help["usage"][1:]]
    for command in program.commands:
        lines += row(f"{command.name} {command.usage}", command.help, column)
    for option in program.options:
        if option.help:
            lines += row(left_of(option), option.help, column)
    if notes := program.help.get("notes"):
        lines += textwrap.wrap(notes, WIDTH)
    lines += textwrap.wrap(exits(program), WIDTH, break_on_hyphens=False)
    return "\n".join(lines) + "\n"


def header(program):
    """The text as a C++ header."""
    return ("#pragma once\n\n/// Made from tools/options/%s.toml.\nconstexpr const char* helpText = R\"help(%s)help\";\n" %
            (program.name, help_text(program)))
