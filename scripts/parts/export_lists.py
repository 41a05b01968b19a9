"""Reads the lists of functions that the library exports and that the device has."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]


def exports_of(definition):
    """Returns the name, the function and the ordinal of each export of a module-definition file's
    text. "NAME=FUNCTION @ORDINAL" exports a function under another name."""
    rows = re.findall(r"^\s+(\w+)(?:=(\w+))? @(\d+)", definition, re.MULTILINE)
    return [(name, function or name, int(ordinal)) for name, function, ordinal in rows]


def ordinals_of(definition):
    """Returns the names and ordinals of a module-definition file's text."""
    return {name: ordinal for name, _, ordinal in exports_of(definition)}


def promised_ordinals():
    """Returns the names and ordinals of the library."""
    return ordinals_of((ROOT / "src/api/ipodctl.def").read_text())


def names_in(text):
    """Returns the functions of a list: one name on each line, '#' begins a comment."""
    lines = (line.split("#")[0].split() for line in text.splitlines())
    return [words[0] for words in lines if words]


def device_functions(file):
    """Returns the functions of a DLL of the device, by the name of its list in this folder."""
    return set(names_in((ROOT / "scripts/parts" / file).read_text()))
