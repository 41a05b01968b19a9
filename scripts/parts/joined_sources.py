"""Writes several C++ sources into one file, and gives messages about it their own places again."""

import collections
import json
import pathlib
import re
import subprocess
import typing

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# Each program has one of these.
ENTRIES = ("main", "LLVMFuzzerTestOneInput", "LLVMFuzzerCustomMutator")
# The definitions at the level of a namespace: functions, variables, types and declarations of them.
KINDS = "fvscgtup"
UNNAMED = "__anon"
# Names of other namespaces: ::write and using simulator::delayMs.
FOREIGN = re.compile(r"(?<![\w>])::(\w+)|\busing [\w:]+::(\w+);")


class Names(typing.NamedTuple):
    """What a file defines: for itself, in a namespace without a name, and for others."""

    own: set
    shared: set


def names_in(files):
    """Returns the Names of each file. Universal Ctags finds them in 0.1 s."""
    listing = subprocess.run(["ctags", "-f", "-", "--output-format=json", "--language-force=C++",
                              f"--kinds-C++={KINDS}", "--fields=+sK", *map(str, files)], cwd=ROOT,
                             capture_output=True, text=True, check=True).stdout
    names = collections.defaultdict(lambda: Names(set(), set()))
    for line in listing.splitlines():
        tag = json.loads(line)
        if tag.get("scopeKind", "namespace") == "namespace" and UNNAMED not in tag["name"]:
            scope = tag.get("scope", "").split("::")[-1]
            of_file = names[pathlib.Path(tag["path"])]
            (of_file.own if scope.startswith(UNNAMED) else of_file.shared).add(tag["name"])
    return names


class JoinedSources:
    """Sources in one file, one after the other. A helper that has the name of another source's gets
    a number; the messages show its own name."""

    def __init__(self, sources, file):
        self.file = file
        self.origins = []
        self.real_names = {}
        headers = {header for source in sources for header in source.parent.glob("*.h")}
        names = names_in([*sources, *headers])
        taken = set().union(*(names[header].shared | names[header].own for header in headers))
        taken |= {name for source in sources for match in FOREIGN.findall(source.read_text())
                  for name in match if name not in names[source].own}
        lines, included = [], set()
        for number, source in enumerate(sources):
            own = source.read_text().splitlines()
            found = {line for line in own if line.startswith("#include")}
            if len(sources) > 1:
                own = self.told_apart(own, names[source].own & taken - names[source].shared, number)
                lines += [f"#undef {entry}\n#define {entry} {entry}{number}" for entry in ENTRIES]
                self.origins += [(source, 1)] * 2 * len(ENTRIES)
            lines += ["" if line in included else line for line in own]
            self.origins += [(source, line) for line in range(1, len(own) + 1)]
            included |= found
            taken |= names[source].own | names[source].shared
        file.write_text("\n".join(lines) + "\n")

    def told_apart(self, lines, names, number):
        if not names:
            return lines
        self.real_names.update({f"{name}{number}": name for name in names})
        words = re.compile(r"(?<![.>:\w])(" + "|".join(names) + r")\b")
        return [line if line.startswith("#include") else words.sub(rf"\g<1>{number}", line)
                for line in lines]

    def place_of(self, line):
        """The source and the line of a line of the file."""
        return self.origins[line - 1]

    def original(self, output):
        """The output of a program with the sources' own names and lines."""
        def place(match):
            source, line = self.place_of(int(match[1]))
            return f"{source.relative_to(ROOT)}:{line}:"
        output = re.sub(re.escape(str(self.file)) + r":(\d+):", place, output)
        return re.sub(r"\b\w+\b", lambda word: self.real_names.get(word[0], word[0]), output)
