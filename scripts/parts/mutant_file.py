"""The files in tests/mutants, each of which describes one small mistake in the product's source:

    Broken: what the mistake is
    Noticed: what a host or a person would notice
    Build: the build whose tests can find it; release without this line

    In: takeFirst
    Replace: messageQueue.empty()
    With: !messageQueue.empty()

A file has one or more pairs of Replace and With. The snippet after Replace occurs exactly once in
the source; white space does not matter. In narrows the search for the next pair to functions or
classes of these names and, for a word with a dot, to files whose path contains it. With may be
empty. Each pair is applied to the source as the pairs before it have left it.
"""

import re

FOLDERS = ("src", "wince/runtime")
SUFFIXES = (".cpp", ".h")
BUILDS = ("release", "asan", "tsan")
FIELD = r"^(Broken|Noticed|Build|In|Replace|With):"
NO_DEFINITION = r"\}|(?:if|for|while|switch|return|else|do)\b"


class Trouble(Exception):
    """The run itself has failed: what it would say of the tests is worth nothing."""


def read_sources(root):
    """The texts of the files that mutants change, by path."""
    return {str(path.relative_to(root)): path.read_text() for folder in FOLDERS
            for path in sorted((root / folder).rglob("*")) if path.suffix in SUFFIXES}


class Mutant:
    def __init__(self, file):
        self.name = file.stem
        self.head = {"Build": "release"}
        self.edits = []
        places = []
        for field, text in fields(file.read_text()):
            if field == "In":
                places = text.split()
            elif field == "Replace":
                self.edits.append(Edit(places, text))
                places = []
            elif field == "With" and self.edits:
                self.edits[-1].new = text
            else:
                self.head[field] = text
        self.require_complete()

    def require_complete(self):
        if (not self.head.get("Broken") or not self.head.get("Noticed")
                or self.head["Build"] not in BUILDS):
            raise Trouble(f"{self.name}: needs Broken and Noticed; Build is one of {BUILDS}")
        if not self.edits or any(not edit.old or edit.new is None for edit in self.edits):
            raise Trouble(f"{self.name}: needs Replace and With in pairs")

    def changes(self, sources):
        """The texts of the files that the mutant changes, by path."""
        changed = dict(sources)
        for edit in self.edits:
            try:
                edit.apply(changed)
            except Trouble as trouble:
                raise Trouble(f"{self.name}: {trouble}") from None
        return {path: text for path, text in changed.items() if text != sources[path]}


class Edit:
    """One pair of Replace and With, and the words of the In before it."""

    def __init__(self, places, old):
        self.files = [place for place in places if "." in place]
        self.definitions = [place for place in places if "." not in place]
        self.old, self.new = old, None
        self.longest_word = max(re.findall(r"\w*", old), key=len)

    def apply(self, sources):
        """Changes the one file that the snippet is in."""
        found = [(path, match) for path, text in sources.items() if self.longest_word in text
                 for match in pattern(self.old).finditer(text) if self.is_in(path, text, match)]
        if len(found) != 1:
            raise Trouble(self.fault(found))
        path, match = found[0]
        sources[path] = match.string[:match.start()] + self.new + match.string[match.end():]

    def fault(self, found):
        lines = [f"{path}:{match.string.count(chr(10), 0, match.start()) + 1}"
                 for path, match in found]
        return (f"`{' '.join(self.old.split())}` occurs {len(found)} times instead of once"
                + "".join(f" in {place}" for place in self.files + self.definitions)
                + ("; narrow it with In: " if lines else "") + ", ".join(lines))

    def is_in(self, path, text, match):
        return (all(file in path for file in self.files) and
                all(any(begin <= match.start() < end for begin, end in extents(text, name))
                    for name in self.definitions))


def fields(text):
    """Pairs of a field's name and its text, which may have several lines."""
    _, *parts = re.split(FIELD, text, flags=re.M)
    return [(name, value.strip()) for name, value in zip(parts[::2], parts[1::2])]


def pattern(snippet):
    """Matches the words and signs of a snippet, whatever white space is between them."""
    tokens = re.findall(r"\w+|[^\w\s]", snippet)
    expression = r"\s*".join(rf"(?<!\w){token}(?!\w)" if re.match(r"\w", token) else
                             re.escape(token) for token in tokens)
    return re.compile(expression)


def extents(text, name):
    """Where each function or class of this name begins and ends. By the format of the source its
    closing brace is in its first line or below that line's first character."""
    head = rf"^( *)(?!{NO_DEFINITION})(?=\S)[^\n;]*?(?<!\w){re.escape(name)}(?!\w)[^;{{]*\{{"
    for match in re.finditer(head, text, re.M):
        end = text.find("\n", match.end())
        if text[end - 1] != "}":
            end = text.find(f"\n{match.group(1)}}}", match.end())
        yield match.start(), end
