#!/usr/bin/env python3
"""Writes the assembler source of a DLL's import thunks: make_imports.py DLL LIST > SOURCE.S

LIST has one function name on each line; '#' begins a comment. It can also be a module-definition
file. Each function gets a thunk, which
jumps to the address in its slot of the import address table. The jump is bx: a function of the
platform can be Thumb code, to which ARMv4T changes only with bx. The linker drops the thunks that
nobody calls, and their slots with them.
"""

import pathlib
import sys

import project_scripts
from export_lists import names_in, ordinals_of

THUNK = """\
    .section .text.import.{name}, "ax", %progbits
    .global {name}
    .type {name}, %function
{name}:
    ldr ip, 1f
    ldr ip, [ip]
    bx ip
1:  .word __imp_{name}
    .size {name}, . - {name}
    .section .iat.{dll}.{name}, "aw", %progbits
    .global __imp_{name}
__imp_{name}:
    .word 0
"""


def source(dll, names):
    return "    .arm\n" + "".join(THUNK.format(dll=dll, name=name) for name in names)


def functions_of(file):
    text = file.read_text()
    return list(ordinals_of(text)) if file.suffix == ".def" else names_in(text)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.stdout.write(source(sys.argv[1], functions_of(pathlib.Path(sys.argv[2]))))


if __name__ == "__main__":
    main()
