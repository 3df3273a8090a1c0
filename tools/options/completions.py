"""Completions for bash, zsh and fish."""

import re

from description import brief


def function_name(program):
    return "_" + program.name.replace("-", "_")


def bare(text):
    return re.sub(r"[`*]", "", text)


# bash

def bash_words(complete):
    """A command whose output completes the word."""
    if isinstance(complete, list):
        return 'compgen -W "%s" -- "$current"' % " ".join(complete)
    if complete == "directory":
        return 'compgen -d -- "$current"'
    if complete == "file":
        return 'compgen -f -- "$current"'
    if complete == "file or -":
        return 'compgen -W - -- "$current"; compgen -f -- "$current"'
    if complete:
        return 'compgen -d -- "$current"; compgen -f -X \'!%s\' -- "$current"' % complete
    return ""


def bash_reply(complete, indent):
    words = bash_words(complete)
    return " " * indent + (f"mapfile -t COMPREPLY < <({words})" if words else "COMPREPLY=()")


def bash_values(options, indent):
    """Cases of the word before the current one."""
    lines = []
    for option in options:
        complete = option.complete if option.value else option.argument
        if option.value or option.argument:
            lines += [" " * indent + " | ".join(option.names) + ")", bash_reply(complete, indent + 4),
                      " " * (indent + 4) + "return", " " * (indent + 4) + ";;"]
    return lines


def bash_options(options, indent):
    names = " ".join(name for option in options for name in option.names)
    return " " * indent + f'mapfile -t COMPREPLY < <(compgen -W "{names}" -- "$current")'


def bash_arguments(arguments, first, indent):
    """What completes the arguments; the first one is the word at this position."""
    if not arguments:
        return [" " * indent + "COMPREPLY=()"]
    if len(arguments) == 1:
        return [bash_reply(arguments[0].complete, indent)]
    return [" " * indent + f'if [ "$COMP_CWORD" -eq {first} ]; then', bash_reply(arguments[0].complete, indent + 4),
            " " * indent + "else", bash_reply(arguments[-1].complete, indent + 4), " " * indent + "fi"]


def bash_body(options, arguments, first, indent):
    values = bash_values(options, indent)
    lines = [" " * indent + "case $previous in", *values, " " * indent + "esac"] if values else []
    lines += [" " * indent + 'if [[ $current == -* ]]; then', bash_options(options, indent + 4),
              " " * indent + "else", *bash_arguments(arguments, first, indent + 4), " " * indent + "fi"]
    return lines


def bash(program):
    name = function_name(program)
    lines = [f"# Completion of {program.name} for bash.", name + "() {",
             "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}"]
    if program.commands:
        words = [command.name for command in program.commands]
        words += [each for option in program.options for each in option.names]
        lines += ['    if [ "$COMP_CWORD" -eq 1 ]; then', bash_reply(words, 8), "        return", "    fi",
                  "    case ${COMP_WORDS[1]} in"]
        for command in program.commands:
            lines += [f"        {command.name})", *bash_body(command.options + helps(program), command.arguments, 2, 12),
                      "            ;;"]
        lines += ["    esac"]
    else:
        lines += bash_body(program.options, program.arguments, 1, 4)
    return "\n".join(lines + ["}", f"complete -o filenames -F {name} {program.name}"]) + "\n"


def helps(program):
    """Every command has --help."""
    from description import Option
    has = any("--help" in option.names for option in program.options)
    return [Option(names=["--help"], help="print and end")] if has else []


# zsh

def zsh_message(text):
    return re.sub(r"([\[\]:])", r"\\\1", bare(text)).replace("'", "'\\''")


def zsh_action(complete):
    if isinstance(complete, list):
        return "(%s)" % " ".join(complete)
    if complete == "directory":
        return "_files -/"
    if complete in ("file", "file or -"):
        return "_files"
    return '_files -g "%s"' % complete if complete else " "


def zsh_option(name, option):
    value = f":{zsh_message(option.value)}:{zsh_action(option.complete)}" if option.value else ""
    return "'%s%s[%s]%s'" % ("*" if option.repeat else "", name, zsh_message(brief(option)), value)


def zsh_specs(options, arguments):
    specs = [zsh_option(name, option) for option in options for name in option.names]
    return specs + [f"'{number}:{argument.name}:{zsh_action(argument.complete)}'"
                    for number, argument in enumerate(arguments, 1)]


def zsh_call(options, arguments, indent):
    specs = zsh_specs(options, arguments)
    joined = (" \\\n" + " " * (indent + 4)).join(specs)
    return " " * indent + "_arguments -S " + joined


def zsh(program):
    name = function_name(program)
    lines = [f"#compdef {program.name}", f"# Completion of {program.name} for zsh.", name + "() {"]
    if program.commands:
        described = " ".join("'%s:%s'" % (command.name, zsh_message(command.brief or command.help))
                             for command in program.commands)
        options = " ".join(zsh_specs(program.options, []))
        lines += ["    local state line", "    local -a commands", f"    commands=({described})",
                  f"    _arguments -C {options} '1:command:->command' '*::argument:->argument'",
                  "    case $state in", "        command) _describe command commands ;;", "        argument)",
                  "            case $line[1] in"]
        for command in program.commands:
            lines += [f"                {command.name})",
                      zsh_call(command.options + helps(program), command.arguments, 20), "                    ;;"]
        lines += ["            esac", "            ;;", "    esac"]
    else:
        lines.append(zsh_call(program.options, program.arguments, 4))
    return "\n".join(lines + ["}", f'{name} "$@"']) + "\n"


# fish

def quoted(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish_words(complete):
    """The options of complete for a value."""
    if isinstance(complete, list):
        return "-x -a " + quoted(" ".join(complete))
    if complete == "directory":
        return "-x -a '(__fish_complete_directories)'"
    if complete == "file":
        return "-r -F"
    if complete == "file or -":
        return "-r -F -a -"
    return "-x -k -a " + quoted(f"(__fish_complete_suffix {complete[1:]})") if complete else "-x"


def fish_option(program, name, option, condition):
    if name.startswith("--"):
        form = "-l " + name[2:]
    else:
        form = ("-s " if len(name) == 2 else "-o ") + name[1:]
    words = " " + fish_words(option.complete) if option.value else ""
    return f"complete -c {program.name}{condition} {form}{words} -d {quoted(bare(brief(option)))}"


def fish_argument(program, complete, condition):
    if not complete:
        return []
    return [f"complete -c {program.name}{condition} {fish_words(complete)}"]


def fish(program):
    lines = [f"# Completion of {program.name} for fish.", f"complete -c {program.name} -f"]
    first = " -n __fish_use_subcommand" if program.commands else ""
    for option in program.options:
        lines += [fish_option(program, name, option, first) for name in option.names]
        if option.argument:
            seen = " -n '__fish_contains_opt %s'" % option.names[0].lstrip("-")
            lines += fish_argument(program, option.argument, seen)
    for command in program.commands:
        lines.append(f"complete -c {program.name}{first} -x -a {command.name} "
                     f"-d {quoted(bare(command.brief or command.help))}")
        seen = f" -n '__fish_seen_subcommand_from {command.name}'"
        for option in command.options + helps(program):
            lines += [fish_option(program, name, option, seen) for name in option.names]
        for argument in command.arguments:
            lines += fish_argument(program, argument.complete, seen)
    for argument in program.arguments:
        lines += fish_argument(program, argument.complete, "")
    return "\n".join(lines) + "\n"
