#!/usr/bin/env python3
"""Checks that the links between pages are not broken, and that every page of docs/ can be reached from its index.

usage: check_links.py SOURCE
"""

import pathlib
import re
import sys

LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


def links(page):
    text = re.sub(r"```.*?```", "", page.read_text(encoding="utf-8"), flags=re.DOTALL)
    return [(page.parent / target).resolve() for target in LINK.findall(text)]


def main(source):
    source = pathlib.Path(source).resolve()
    docs = source / "docs"
    pages = {source / "README.md", source / "CONTRIBUTING.md", source / "examples" / "README.md", *docs.rglob("*.md")}
    broken = [(page, target) for page in sorted(pages) for target in links(page) if not target.exists()]
    for page, target in broken:
        print(f"{page.relative_to(source)}: broken link to {target}")

    reached, waiting = set(), [docs / "index.md"]
    while waiting:
        page = waiting.pop()
        if page not in reached and page.suffix == ".md" and page.exists():
            reached.add(page)
            waiting += links(page)
    lost = sorted(set(docs.rglob("*.md")) - reached)
    for page in lost:
        print(f"{page.relative_to(source)} cannot be reached from docs/index.md")
    return 1 if broken or lost else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
