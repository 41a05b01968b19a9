#!/usr/bin/env python3
"""Makes the import library of a DLL: import_library.py DEF DLL LIBRARY

A library of short import records, which the linkers of the platform read: one for each export of
DEF, by name, with the ordinal as the hint.
"""

import pathlib
import struct
import sys

import project_scripts
from export_lists import ordinals_of

MACHINE_ARM = 0x01C0
IMPORT_BY_NAME = 1 << 2  # and of code
ARCHIVE_SIGNATURE = b"!<arch>\n"
IMPORT_HEADER_SIZE = 20


def import_record(dll, name, ordinal):
    texts = name.encode("ascii") + b"\0" + dll.encode("ascii") + b"\0"
    return struct.pack("<HHHHIIHH", 0, 0xFFFF, 0, MACHINE_ARM, 0, len(texts), ordinal,
                       IMPORT_BY_NAME) + texts


def member(name, content):
    """Returns a member of the archive, padded to an even length."""
    header = f"{name:<16}{0:<12}{'':<6}{'':<6}{0:<8}{len(content):<10}`\n".encode("ascii")
    return header + content + b"\n" * (len(content) % 2)


def symbols_of(name):
    return [name, f"__imp_{name}"]


def first_index(offsets):
    """Returns the index that every archive has: offsets with the high byte first, in member order."""
    symbols = [symbol for name, _ in offsets for symbol in symbols_of(name)]
    places = [offset for name, offset in offsets for _ in symbols_of(name)]
    return (struct.pack(f">I{len(places)}I", len(places), *places) +
            b"".join(symbol.encode("ascii") + b"\0" for symbol in symbols))


def second_index(offsets):
    """Returns the index that is sorted by symbol and refers to members by number."""
    numbered = sorted((symbol, number + 1) for number, (name, _) in enumerate(offsets)
                      for symbol in symbols_of(name))
    return (struct.pack(f"<I{len(offsets)}I", len(offsets), *(offset for _, offset in offsets)) +
            struct.pack(f"<I{len(numbered)}H", len(numbered), *(number for _, number in numbered)) +
            b"".join(symbol.encode("ascii") + b"\0" for symbol, _ in numbered))


def library_of(dll, ordinals):
    records = {name: import_record(dll, name, ordinals[name]) for name in sorted(ordinals)}
    # The sizes of the indexes do not depend on their content.
    blank = [(name, 0) for name in records]
    place = len(ARCHIVE_SIGNATURE + member("/", first_index(blank)) +
                member("/", second_index(blank)))
    offsets = []
    for name, record in records.items():
        offsets.append((name, place))
        place += len(member(f"{dll}/", record))
    return b"".join([ARCHIVE_SIGNATURE, member("/", first_index(offsets)),
                     member("/", second_index(offsets)),
                     *(member(f"{dll}/", record) for record in records.values())])


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    definition, dll, library = sys.argv[1:]
    text = pathlib.Path(definition).read_text()
    pathlib.Path(library).write_bytes(library_of(dll, ordinals_of(text)))


if __name__ == "__main__":
    main()
