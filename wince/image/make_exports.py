#!/usr/bin/env python3
"""Writes the assembler source of the room for the export directory: make_exports.py DEF DLL > SOURCE.S

The room is part of the constants, so that the exports need no separate section. write_image.py
fills it: only the linker knows the addresses of the exports.
"""

import pathlib
import sys

import pe_image as pe
import project_scripts
from export_lists import ordinals_of

ROOM = """\
    .section .rodata.exports, "a", %progbits
    .balign 4
    .global exportDirectory, exportDirectoryEnd
exportDirectory:
    .space {size}
exportDirectoryEnd:
"""


def source(definition, dll):
    exports = {name: (ordinal, 0) for name, ordinal in ordinals_of(definition).items()}
    return ROOM.format(size=len(pe.export_directory(0, dll, exports)))


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    definition, dll = sys.argv[1:]
    sys.stdout.write(source(pathlib.Path(definition).read_text(), dll))


if __name__ == "__main__":
    main()
