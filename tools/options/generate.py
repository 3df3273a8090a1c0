#!/usr/bin/env python3
"""Makes --help, manual pages and completions from the descriptions of the options.

usage: generate.py SOURCE OUTPUT VERSION DATE

Writes OUTPUT/PROGRAM/Help.h, OUTPUT/help/PROGRAM.txt, OUTPUT/man/PROGRAM.1, and OUTPUT/bash/PROGRAM,
OUTPUT/zsh/_PROGRAM, OUTPUT/fish/PROGRAM.fish. Files whose text stays the same are not touched.
"""

import pathlib
import sys

import completions
import description
import help_text
import manual_page


def write(file, text):
    file.parent.mkdir(parents=True, exist_ok=True)
    if not file.exists() or file.read_text(encoding="utf-8") != text:
        file.write_text(text, encoding="utf-8")


def files_of(program, version, date):
    name = program.name
    files = {f"man/{name}.1": manual_page.manual_page(program, version, date)}
    if program.options:
        files |= {f"bash/{name}": completions.bash(program), f"zsh/_{name}": completions.zsh(program),
                  f"fish/{name}.fish": completions.fish(program)}
    if program.help:
        files[f"{name}/Help.h"] = help_text.header(program)
        files[f"help/{name}.txt"] = help_text.help_text(program)
    return files


def main(source, output, version, date):
    source = pathlib.Path(source)
    for file in sorted((source / "tools/options").glob("*.toml")):
        program = description.read(file, source / "docs/environment.md")
        for name, text in files_of(program, version, date).items():
            write(pathlib.Path(output) / name, text)


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except description.Mistake as mistake:
        sys.exit(f"tools/options: {mistake}")
