"""Manual pages. Texts are Markdown as far as this: `code`, *emphasis*, paragraphs, "- term: text", code blocks."""

import re

from description import sentence

TOKEN = re.compile(r"\\\*|`([^`]+)`|\*([^*]+)\*")


def plain(text):
    return text.replace("\\", "\\e").replace("'", "\\(aq").replace("~", "\\(ti").replace("^", "\\(ha")


def literal(text):
    return plain(text).replace("-", "\\-")


def inline(text):
    """One line of text with its fonts. A line must not begin with a dot."""
    made = ""
    end = 0
    for token in TOKEN.finditer(text):
        made += plain(text[end:token.start()])
        if token[1]:
            made += "\\fB" + literal(token[1]) + "\\fR"
        elif token[2]:
            made += "\\fI" + literal(token[2].replace("\\", "")) + "\\fR"
        else:
            made += "*"
        end = token.end()
    made += plain(text[end:])
    return "\\&" + made if made.startswith(".") else made


def escaped_stars(text):
    return text.replace("\\*", "\0")


def block(text, is_first):
    """Lines of roff for one paragraph."""
    lines = text.split("\n")
    if all(line.startswith("    ") for line in lines):
        return [".PP" if not is_first else "", ".nf", *(literal(line[4:]) for line in lines), ".fi"]
    made = [] if is_first or lines[0].startswith("- ") else [".PP"]
    joined = re.sub(r"\n(?!- )\s*", " ", text)
    for line in joined.split("\n"):
        if item := re.match(r"- (.+?): (.*)", line):
            made += [".TP", term(item[1]), inline(item[2])]
        else:
            made += sentences(line)
    return made


def term(text):
    return inline(text) if re.search(r"[`*]", text) else "\\fI" + literal(text) + "\\fR"


def sentences(text):
    """Each sentence on a line of its own, as roff has it."""
    return [inline(each) for each in re.split(r"(?<=[a-z)`*][.;]) (?=[A-Z*`])", text)]


def prose(text):
    lines = []
    for number, paragraph in enumerate(re.split(r"\n\n+", text.strip("\n"))):
        lines += [line for line in block(paragraph, number == 0) if line]
    return lines


def usage(words):
    """Options bold, placeholders slanted."""
    made = re.sub(r"(?<![\w-])(--?[a-z][a-z-]*)", lambda found: "\\fB" + literal(found[1]) + "\\fR", plain(words))
    return re.sub(r"(?<![\w\\])(?!\\)([A-Z][A-Z-]*(?:\.JSON|\.INPUT=[A-Z]+|=[A-Z]+)?)(?![\w])",
                  lambda found: "\\fI" + literal(found[1]) + "\\fR", made)


def option_lines(option):
    names = ", ".join("\\fB" + literal(name) + "\\fR" for name in option.names)
    value = " " + "|".join(word if word.islower() else "\\fI" + literal(word) + "\\fR"
                           for word in option.value.split("|")) if option.value else ""
    return [".TP", names + value, *prose(option.manual or sentence(option.help))]


def synopsis(program):
    lines = []
    for each in program.synopsis:
        lines += [".br"] if lines else []
        lines.append(f"\\fB{literal(program.name)}\\fR {usage(each)}")
    return lines


def commands(program):
    lines = [".SH COMMANDS"]
    for command in program.commands:
        lines += [".TP", f"\\fB{command.name}\\fR {usage(command.usage)}", *prose(command.manual)]
    return lines


def tagged(title, rows):
    lines = [f".SH {title}"]
    for left, text in rows:
        lines += [".TP", f"\\fB{left}\\fR", *prose(text)]
    return lines


def text_of_page(text):
    """A cell of a table in docs/, without links."""
    return sentence(re.sub(r"\[([^]]+)\]\([^)]*\)", r"\1", text))


def manual_page(program, version, date):
    lines = [f'.TH {literal(program.name).upper()} 1 "{date}" "Velmorak {version}" "User commands"',
             ".SH NAME", f"{literal(program.name)} \\- {program.summary}", ".SH SYNOPSIS", *synopsis(program),
             ".SH DESCRIPTION", *prose(program.description)]
    if program.commands:
        lines += commands(program)
    if program.options:
        lines.append(".SH OPTIONS")
        for option in program.options:
            lines += option_lines(option)
    sections = {section["title"]: [f".SH {section['title'].upper()}", *prose(section["text"])]
                for section in program.sections}
    late = [sections.pop(title, []) for title in ("Files", "Examples", "See also")]
    for section in sections.values():
        lines += section
    if program.exits:
        lines += tagged("EXIT STATUS", [(each["status"], each["manual"]) for each in program.exits])
    if program.environment:
        lines += tagged("ENVIRONMENT", [(name, text_of_page(effect)) for name, effect in program.environment])
    for section in late:
        lines += section
    return "\n".join(lines) + "\n"
