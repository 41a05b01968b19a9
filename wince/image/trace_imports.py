#!/usr/bin/python3
"""Makes the DLL that a recorder can record: trace_imports.py PLAIN DEF TRACED

TRACED is PLAIN, except that it imports the functions that DEF exports from the DLL of DEF. Each
function keeps its slot in the import address tables, so that code and data stay the same: the new
import directory follows the old one, and describes each run of slots of one DLL. For DLLs of Windows
CE and of Windows.
"""

import pathlib
import re
import struct
import sys

import pefile
import project_scripts
from export_lists import ordinals_of

DESCRIPTOR_SIZE = 20


class BadInput(Exception):
    """The DLL cannot be changed in this way."""


def dll_of(definition):
    """Returns the name of the DLL with these exports."""
    return re.search(r"^LIBRARY (\w+)", definition, re.MULTILINE)[1] + ".dll"


class Run:
    """Slots that follow each other and whose functions are in one DLL."""

    def __init__(self, is_moved, dll_rva, slot):
        self.is_moved, self.dll_rva, self.slot = is_moved, dll_rva, slot
        self.entries = []


def runs_of(image, moved):
    """Returns the runs of all import tables, in the order of their slots."""
    runs, seen = [], set()
    base = image.OPTIONAL_HEADER.ImageBase
    for descriptor in image.DIRECTORY_ENTRY_IMPORT:
        run = None
        for function in descriptor.imports:
            name = function.name.decode() if function.name else ""
            is_moved = name in moved
            seen.update({name} & moved)
            if run is None or run.is_moved != is_moved:
                run = Run(is_moved, descriptor.struct.Name, function.address - base)
                runs.append(run)
            run.entries.append(function.struct_table.AddressOfData)
    if seen != moved:
        raise BadInput(f"it does not import {', '.join(sorted(moved - seen))}")
    return runs


def directory_of(runs, rva, dll, entry_format):
    """Returns the import directory, at its address, with the lookup tables and the DLL's name."""
    entry_size = struct.calcsize(entry_format)
    lookup_rva = rva + DESCRIPTOR_SIZE * (len(runs) + 1)
    text_rva = lookup_rva + sum(entry_size * (len(run.entries) + 1) for run in runs)
    descriptors, lookups = b"", b""
    for run in runs:
        dll_rva = text_rva if run.is_moved else run.dll_rva
        descriptors += struct.pack("<IIIII", lookup_rva + len(lookups), 0, 0, dll_rva, run.slot)
        lookups += b"".join(struct.pack(entry_format, entry) for entry in [*run.entries, 0])
    return descriptors + bytes(DESCRIPTOR_SIZE) + lookups + dll.encode("ascii") + b"\0"


def align(value, alignment):
    return -(-value // alignment) * alignment


def section_of_imports(image):
    rva = image.OPTIONAL_HEADER.DATA_DIRECTORY[1].VirtualAddress
    section = next(section for section in image.sections if section.contains_rva(rva))
    following = [other.VirtualAddress for other in image.sections
                 if other.VirtualAddress > section.VirtualAddress]
    return section, min(following, default=image.OPTIONAL_HEADER.SizeOfImage)


def extended(content, image, section, addition, place):
    """Returns the file with the addition at this place of a section, and its headers adapted."""
    header, alignment = image.OPTIONAL_HEADER, image.OPTIONAL_HEADER.FileAlignment
    old_size = section.SizeOfRawData
    begin = section.PointerToRawData
    new_size = align(place + len(addition), alignment)
    body = content[begin:begin + min(place, old_size)].ljust(place, b"\0") + addition
    rest = content[begin + old_size:]
    for other in image.sections:
        if other.PointerToRawData > begin:
            other.PointerToRawData += new_size - old_size
    if image.FILE_HEADER.PointerToSymbolTable > begin:
        image.FILE_HEADER.PointerToSymbolTable += new_size - old_size
    section.SizeOfRawData = new_size
    section.Misc_VirtualSize = place + len(addition)
    header.SizeOfInitializedData += new_size - old_size
    # Of the file that pefile writes only the headers are used.
    headers = image.write()[:header.SizeOfHeaders]
    return headers + content[header.SizeOfHeaders:begin] + body.ljust(new_size, b"\0") + rest


def traced(content, definition):
    """Returns the changed DLL."""
    image = pefile.PE(data=content)
    header = image.OPTIONAL_HEADER
    is_wide = header.Magic == pefile.OPTIONAL_HEADER_MAGIC_PE_PLUS
    runs = runs_of(image, set(ordinals_of(definition)))
    section, end = section_of_imports(image)
    place = align(section.Misc_VirtualSize, 8)
    rva = section.VirtualAddress + place
    addition = directory_of(runs, rva, dll_of(definition), "<Q" if is_wide else "<I")
    if rva + len(addition) > end:
        raise BadInput("there is no room after its import directory")
    header.DATA_DIRECTORY[1].VirtualAddress = rva
    header.DATA_DIRECTORY[1].Size = DESCRIPTOR_SIZE * (len(runs) + 1)
    changed = pefile.PE(data=extended(content, image, section, addition, place))
    changed.OPTIONAL_HEADER.CheckSum = changed.generate_checksum()
    return bytes(changed.write())


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    plain, definition, result = map(pathlib.Path, sys.argv[1:])
    try:
        result.write_bytes(traced(plain.read_bytes(), definition.read_text()))
    except BadInput as error:
        sys.exit(f"trace_imports.py: {plain}: {error}")


if __name__ == "__main__":
    main()
