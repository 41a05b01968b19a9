#!/usr/bin/python3
"""Writes the man pages: section 3 from the comments of ipodctl.h, section 1 from what --help prints.

usage: scripts/parts/make_man.py --header FILE --date YYYY-MM-DD --to DIR [PROGRAM...]

DIR gets man3/ and man1/, in the language mdoc. index.txt in it has the tasks with their functions.
"""

import argparse
import datetime
import pathlib
import re
import subprocess
import sys
import textwrap
import typing

# What a person wants to do, and the functions for it. Each function is in one task.
TASKS = {
    "connect": "IpodConnect IpodDisconnect IpodIsConnect isIpodAudioPresent IpodSetSameIpod",
    "show a list": "IpodGetFirstItem IpodGetNextItem IpodGetPrevItem IpodGetParentItem "
                   "IpodGetItemName IpodGetType IpodIsTrack IpodIsPlayAll IpodCurItemIsEmpty "
                   "IpodGetMediaFileCount",
    "show a long list in tabs": "IpodIsTabActive IpodIsTabVisualizationActive "
                                "IpodEnableTabVisualizationActive IpodDisableTabVisualizationActive",
    "play from a list": "IpodSongPlay IpodSongGetNumElem IpodValidateUpDownTree "
                        "IpodGetParentUpDownName IpodGetNumberOfPlaylist",
    "control what plays": "IpodCommand IpodSetShuffleMode IpodGetShuffleMode IpodSetRepeatMode "
                          "IpodGetRepeatMode",
    "follow what plays": "IpodGetCurrentPlayStatus IpodGetCurrentTrackPosition IpodGetTrackIndex "
                         "IpodGetTrackInfo",
    "show the device": "IpodGetName IpodGetSerialNumber",
}
LABEL = re.compile(r"([A-Za-z]\w*(?:, [a-z]\w*)*):(?: +|$)")


class Function(typing.NamedTuple):
    """A function of the header."""

    name: str
    result: str
    arguments: list
    comment: list  # its lines


def escaped(text):
    """A text that mdoc takes for nothing but text."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def paragraphs(lines):
    """The lines in groups that empty lines separate."""
    group = []
    for line in [*lines, ""]:
        if line.strip():
            group.append(line)
        elif group:
            yield group
            group = []


def labelled(group):
    """(label, text) of each entry when the group is a list of labels; else an empty list."""
    if not LABEL.match(group[0]):
        return []
    entries = []
    for line in group:
        found = LABEL.match(line)
        if found and not line.startswith(" "):
            entries.append((found[1], [line[found.end():].strip()]))
        else:
            entries[-1][1].append(line.strip())
    return [(label, " ".join(filter(None, words))) for label, words in entries]


def bullets(group):
    """The texts before the first bullet, and those of the bullets."""
    before, items = [], []
    for line in group:
        if line.lstrip().startswith("- "):
            items.append([line.lstrip()[2:]])
        else:
            (items[-1] if items else before).append(line.strip())
    return " ".join(before), [" ".join(item) for item in items]


def sentences(text):
    """The text with each sentence on a line, as mdoc wants it."""
    lines = []
    for part in re.split(r"(?<=[\w)\"][.:]) (?=[A-Z])", text):
        lines += textwrap.wrap(part, 70, break_long_words=False, break_on_hyphens=False)
    return [escaped(line) for line in lines]


def tagged(entries):
    """A list of words, each with its text."""
    yield ".Bl -tag -width Ds"
    for label, text in entries:
        yield f".It {label}"
        yield from sentences(text)
    yield ".El"


def functions_of(header):
    """The functions in the order of the header."""
    pattern = re.compile(r"/\*((?:(?!\*/).)*)\*/\n((?:const )?\w+\*?) IPODCTL_CALL (\w+)\(([^)]*)\);", re.S)
    found = []
    for comment, result, name, arguments in pattern.findall(header):
        lines = [re.sub(r"^ ?\* ?", "", line.strip()) for line in comment.strip("\n").split("\n")]
        arguments = [" ".join(part.split()) for part in arguments.split(",")]
        found.append(Function(name, result, [] if arguments == ["void"] else arguments, lines))
    return found


def preamble(title, section, settings):
    """The first lines of a page."""
    date = datetime.date.fromisoformat(settings.date)
    return [f".Dd {date:%B} {date.day}, {date.year}", f".Dt {title.upper()} {section}",
            ".Os", ".Sh NAME"]


def summary_line(text):
    """The text as the end of the line NAME."""
    return escaped(text[0].lower() + text[1:]).replace('"', "\\(dq")


def summary_of(function):
    """What the function does, in one line."""
    group = next(paragraphs(function.comment))
    entries = labelled(group)
    text = f"returns {entries[0][1]}" if entries else " ".join(line.strip() for line in group)
    first = re.split(r"(?<=[\w)\"])[.:;] ", text)[0].rstrip(".:;")
    return summary_line(first)


def description_of(function):
    """The body of the page, and the entries of its other sections."""
    body, others = [], []
    for group in paragraphs(function.comment):
        entries = labelled(group)
        if entries:
            names = [argument.split()[-1].lstrip("*") for argument in function.arguments]
            own = [entry for entry in entries if entry[0].split(",")[0] in names]
            others += [entry for entry in entries if entry not in own]
            if own:
                body += ([".Pp", "The arguments:"] if body else ["The arguments:"])
                body += tagged(own)
            continue
        before, items = bullets(group)
        if body:
            body.append(".Pp")
        body += sentences(before) if before else []
        if items:
            body.append(".Bl -bullet")
            for item in items:
                body += [".It", *sentences(item)]
            body.append(".El")
    return body, others


def page_of(function, settings):
    """The page of a function."""
    lines = preamble(function.name, 3, settings)
    lines += [f".Nm {function.name}", f".Nd {summary_of(function)}", ".Sh SYNOPSIS",
              ".In ipodctl.h", f".Ft {function.result.replace('*', ' *')}"]
    arguments = " ".join(f'"{argument}"' for argument in function.arguments) or "void"
    lines += [f".Fn {function.name} {arguments}", ".Sh DESCRIPTION"]
    body, others = description_of(function)
    lines += body or [f"This function belongs to the task: {task_of(function.name)}."]
    results = [entry for entry in others if entry[0] == "Result"]
    if results:
        lines += [".Sh RETURN VALUES", *sentences(results[0][1])]
    notes = [(label, text) for label, text in others if label != "Result"]
    if notes:
        lines += [".Sh NOTES", *tagged(notes)]
    related = [name for name in TASKS[task_of(function.name)].split() if name != function.name]
    names = sorted(["ipodctl", *related], key=str.lower)
    lines.append(".Sh SEE ALSO")
    lines += [f".Xr {name} 3" + (" ," if name != names[-1] else "") for name in names]
    return "\n".join(lines) + "\n"


def task_of(name):
    """The task to which a function belongs."""
    for task, names in TASKS.items():
        if name in names.split():
            return task
    sys.exit(f"make_man: {name} belongs to no task; add it to TASKS")


def overview(header, settings):
    """The page ipodctl(3): the conventions, and the functions by task."""
    comment = re.search(r"/\*(.*?)\*/", header, re.S)[1]
    lines = [re.sub(r"^ ?\* ?", "", line) for line in comment.split("\n")]
    conventions = "\n".join(lines).split("CONVENTIONS")[1]
    entries = re.split(r"\n *(?=\d+\. )", conventions)[1:]
    page = preamble("ipodctl", 3, settings)
    page += [".Nm ipodctl", ".Nd control an iPod from a head unit's user interface", ".Sh LIBRARY",
             "ipodctl (libipodctl, \\-lipodctl)", ".Sh SYNOPSIS", ".In ipodctl.h",
             ".Sh DESCRIPTION", "The functions of the library by task:", ".Bl -tag -width Ds"]
    for task, names in TASKS.items():
        words = names.split()
        page.append(f".It {task}")
        page += [f".Xr {name} 3" + (" ," if name != words[-1] else "") for name in words]
    page.append(".El")
    page += constants_of(header)
    page += [".Sh CONVENTIONS", ".Bl -enum"]
    for entry in entries:
        page.append(".It")
        for number, group in enumerate(paragraphs(entry.split("\n"))):
            text = " ".join(line.strip() for line in group)
            page += ([".Pp"] if number else []) + sentences(re.sub(r"^\d+\. ", "", text))
    page += [".El", ".Sh SEE ALSO", ".Xr ipodctl 1"]
    return "\n".join(page) + "\n"


def constants_of(header):
    """The numbers that functions take and return, with what the header says of each."""
    yield ".Sh CONSTANTS"
    for name, body in re.findall(r"^enum (\w+) \{(.*?)\};", header, re.M | re.S):
        yield f".Ss {name}"
        yield ".Bl -tag -width Ds"
        for constant, number, meaning in re.findall(r"(\w+) = (\d+),?\s*(?:/\* (.*?) \*/)?", body, re.S):
            yield f".It Dv {constant} No = {number}"
            yield from sentences(" ".join(meaning.split()))
        yield ".El"


def help_of(program, *subcommand):
    """What a program prints about itself."""
    return subprocess.run([program, *subcommand, "--help"], capture_output=True, text=True,
                          check=True, timeout=60).stdout


def subcommands_of(text):
    """The names below "Subcommands:"."""
    found = re.search(r"^Subcommands:\n((?:  .*\n|\n(?=  ))*)", text, re.M)
    return re.findall(r"^  (\w[\w-]*)", found[1], re.M) if found else []


def help_body(text):
    """The lines of --help in mdoc: options as a list, examples and tables as they are."""
    for group in paragraphs(text.rstrip().split("\n")):
        head = group[0]
        if re.match(r"usage:", head, re.I):
            head, group = "", group[1:]
        if group and re.fullmatch(r"(Options|Subcommands|Positionals):", group[0]):
            yield f".Ss {group[0].rstrip(':')}"
            yield from option_list(group[1:])
        elif group and any(line.startswith(" ") for line in group):
            if not group[0].startswith(" "):
                yield ".Pp"
                yield from sentences(group.pop(0))
            yield ".Bd -literal -offset indent"
            yield from (escaped(line[2:] if line.startswith("  ") else line) for line in group)
            yield ".Ed"
        elif group:
            yield ".Pp"
            yield from sentences(" ".join(line.strip() for line in group))


def option_list(lines):
    """A list of the options, or of other words, with their meanings."""
    entries = []
    for line in lines:
        if re.match(r"  \S", line):
            name, _, meaning = line.strip().partition("  ")
            entries.append([name, [meaning.strip()]])
        elif entries:
            entries[-1][1].append(line.strip())
    yield ".Bl -tag -width Ds"
    for name, words in entries:
        yield f".It {escaped(name)}"
        yield from sentences(" ".join(filter(None, words)))
    yield ".El"


def program_page(program, settings):
    """The page of a program, with its subcommands."""
    name = pathlib.Path(program).name
    text = help_of(program)
    first = re.split(r"(?<=[a-z)])\.(?:\s|$)", text.strip(), maxsplit=1)[0].split("\n\n")[0]
    first = " ".join(first.split()).removeprefix(f"{name} - ")
    page = preamble(name, 1, settings)
    usage = re.search(r"^[Uu]sage: \S+ ?(.*)$", text, re.M)
    page += [f".Nm {name}", f".Nd {summary_line(first.replace(': ', ', '))}", ".Sh SYNOPSIS",
             f".Nm {name}", *([escaped(usage[1])] if usage and usage[1] else []), ".Sh DESCRIPTION"]
    page += without_leading_space(help_body(text))
    for subcommand in subcommands_of(text):
        page += [f".Sh {name.upper()} {escaped(subcommand.upper())}"]
        page += without_leading_space(help_body(help_of(program, subcommand)))
    page += [".Sh SEE ALSO", ".Xr ipodctl 3"]
    return "\n".join(page) + "\n"


def without_leading_space(lines):
    """A section does not begin with an empty paragraph, nor has one before a list."""
    lines = list(lines)
    while lines and lines[0] == ".Pp":
        lines.pop(0)
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--header", required=True)
    parser.add_argument("--date", required=True)
    parser.add_argument("--to", required=True, type=pathlib.Path)
    parser.add_argument("programs", nargs="*")
    settings = parser.parse_args()
    header = pathlib.Path(settings.header).read_text(encoding="utf-8")
    pages = {f"man3/{function.name}.3": page_of(function, settings)
             for function in functions_of(header)}
    named = {name for names in TASKS.values() for name in names.split()}
    missing = named ^ {pathlib.Path(page).stem for page in pages}
    if missing:
        sys.exit(f"make_man: the tasks and the header differ: {' '.join(sorted(missing))}")
    pages["man3/ipodctl.3"] = overview(header, settings)
    for program in settings.programs:
        pages[f"man1/{pathlib.Path(program).name}.1"] = program_page(program, settings)
    for place, page in pages.items():
        file = settings.to / place
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(page, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
