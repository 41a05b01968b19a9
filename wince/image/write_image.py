#!/usr/bin/env python3
"""Makes an image of the platform from a linked ELF file.

write_image.py ELF DEF DLL     a DLL; DEF names its exports and their ordinals
write_image.py ELF PROGRAM     a program

The ELF file is linked with ipodctl.ld at the image's preferred address and has kept its relocations.
"""

import pathlib
import struct
import sys

from elftools.elf.elffile import ELFFile
from elftools.elf.relocation import RelocationSection

import pe_image as pe
import project_scripts
from export_lists import exports_of

IMPORTED_DLLS = ("coredll", "isochplay", "ipodctl")

# Relocations that need no change when the whole image moves: none, branches, and differences.
R_ARM_NONE, R_ARM_PC24, R_ARM_REL32, R_ARM_CALL, R_ARM_JUMP24, R_ARM_V4BX, R_ARM_PREL31 = (
    0, 1, 3, 28, 29, 40, 42)
RELATIVE = {R_ARM_NONE, R_ARM_PC24, R_ARM_REL32, R_ARM_CALL, R_ARM_JUMP24, R_ARM_V4BX, R_ARM_PREL31}

# Those that put an address into a word.
R_ARM_ABS32, R_ARM_TARGET1 = 2, 38
ABSOLUTE = {R_ARM_ABS32, R_ARM_TARGET1}

# What the code may assume: at most ARMv4T, which has no doubleword loads; 16-bit wide characters;
# enumerations that are integers. An absent attribute means that the code does not depend on it.
LARGEST_ARCHITECTURE = 2  # v4T
REQUIRED_ATTRIBUTES = {"TAG_ABI_PCS_WCHAR_T": 2, "TAG_ABI_ENUM_SIZE": 2}

SECTION_FLAGS = {
    ".text": pe.CODE | pe.EXECUTE | pe.READ,
    ".rdata": pe.INITIALISED | pe.READ,
    ".data": pe.INITIALISED | pe.READ | pe.WRITE,
    ".idata": pe.INITIALISED | pe.READ | pe.WRITE,
}


class BadInput(Exception):
    """The ELF file cannot become an image."""


class LinkedFile:
    """The parts of the ELF file that the image needs."""

    def __init__(self, stream):
        self.elf = ELFFile(stream)
        table = self.elf.get_section_by_name(".symtab")
        self.symbols = {symbol.name: symbol["st_value"] for symbol in table.iter_symbols()
                        if symbol.name and symbol["st_shndx"] != "SHN_UNDEF"}
        self.base = self.symbols["imageBase"]

    def rva(self, name):
        if name not in self.symbols:
            raise BadInput(f"there is no {name} in the linked file")
        return self.symbols[name] - self.base

    def section(self, name):
        """Returns the address and the content of a section."""
        found = self.elf.get_section_by_name(name)
        if found is None:
            raise BadInput(f"there is no section {name} in the linked file")
        return found["sh_addr"] - self.base, bytearray(found.data())

    def check_attributes(self):
        """Checks that the code is for the device's processor and has its calling convention."""
        attributes = self._attributes()
        if attributes.get("TAG_CPU_ARCH", 0) > LARGEST_ARCHITECTURE:
            raise BadInput(f"the code needs architecture {attributes['TAG_CPU_ARCH']}")
        for tag, required in REQUIRED_ATTRIBUTES.items():
            if attributes.get(tag, required) != required:
                raise BadInput(f"{tag} is {attributes[tag]}, not {required}")

    def _attributes(self):
        section = self.elf.get_section_by_name(".ARM.attributes")
        return {attribute.tag: attribute.value for part in section.iter_subsections()
                for whole in part.iter_subsubsections() for attribute in whole.iter_attributes()}

    def absolute_words(self):
        """Returns the addresses of all words that contain an address of the image."""
        words = []
        for relocations in self.elf.iter_sections():
            if isinstance(relocations, RelocationSection) and self._is_loaded(relocations):
                words += self._absolute_words_of(relocations)
        return words

    def _is_loaded(self, relocations):
        target = self.elf.get_section(relocations["sh_info"])
        return target["sh_flags"] & 2 != 0  # SHF_ALLOC

    def _absolute_words_of(self, relocations):
        symbols = self.elf.get_section(relocations["sh_link"])
        for relocation in relocations.iter_relocations():
            kind = relocation["r_info_type"]
            symbol = symbols.get_symbol(relocation["r_info_sym"])
            if kind in RELATIVE:
                continue
            if kind not in ABSOLUTE:
                raise BadInput(f"relocation {kind} of {symbol.name} cannot be rebased")
            if relocation["r_offset"] % 4 != 0:
                raise BadInput(f"the address of {symbol.name} is not in a whole word")
            if symbol["st_shndx"] not in ("SHN_ABS", "SHN_UNDEF"):
                yield relocation["r_offset"] - self.base

    def import_table(self, dll):
        """Returns the address of a DLL's slots and the names of the functions in them."""
        begin = self.rva(f"{dll}Slots")
        slots = {address - self.base: name[len("__imp_"):]
                 for name, address in self.symbols.items() if name.startswith("__imp_")}
        names = []
        while begin + 4 * len(names) in slots:
            names.append(slots[begin + 4 * len(names)])
        return begin, names


def loaded_sections(linked):
    sections = {}
    for name in SECTION_FLAGS:
        rva, data = linked.section(name)
        sections[name] = pe.Section(name, rva, data, len(data), SECTION_FLAGS[name])
    bss_rva, bss = linked.section(".bss")
    sections[".data"].memory_size = bss_rva + len(bss) - sections[".data"].rva
    return sections


def bind_imports(linked, section):
    """Appends the import directory to the section of the tables, and fills the tables."""
    dlls = [(f"{dll}.dll", *linked.import_table(dll)) for dll in IMPORTED_DLLS]
    dlls = [dll for dll in dlls if dll[2]]
    tables_size = len(section.data)
    directory, slots = pe.import_directory(section.rva + tables_size, dlls)
    for rva, content in slots.items():
        struct.pack_into("<I", section.data, rva - section.rva, content)
    section.data += directory
    section.memory_size = len(section.data)
    return {
        pe.IMPORTS: (section.rva + tables_size, 20 * (len(dlls) + 1)),
        pe.IMPORT_ADDRESSES: (section.rva, tables_size),
    }


def fill_exports(linked, section, dll, exports):
    """Writes the export directory into the room that make_exports.py has left for it."""
    rva = linked.rva("exportDirectory")
    directory = pe.export_directory(rva, dll, exports)
    if linked.rva("exportDirectoryEnd") - rva != len(directory):
        raise BadInput("the room for the export directory has another size")
    begin = rva - section.rva
    section.data[begin:begin + len(directory)] = directory
    return {pe.EXPORTS: (rva, len(directory))}


def added_section(sections, name, data, flags):
    """Adds a section after the others."""
    rva = max(section.end for section in sections.values())
    sections[name] = pe.Section(name, rva, data, len(data), flags)
    return rva, len(data)


def sections_and_directories(linked):
    """Returns what DLLs and programs have, without the relocations."""
    linked.check_attributes()
    sections = loaded_sections(linked)
    return sections, bind_imports(linked, sections[".idata"])


def finished(linked, sections, directories, entry, kind):
    relocations = pe.relocation_directory(linked.absolute_words())
    directories[pe.RELOCATIONS] = added_section(
        sections, ".reloc", relocations, pe.INITIALISED | pe.READ | pe.DISCARDABLE)
    return pe.file_of(list(sections.values()), linked.base, linked.rva(entry), directories, kind)


def image_of(linked, definition, dll):
    """Returns the bytes of a DLL."""
    sections, directories = sections_and_directories(linked)
    exports = {name: (ordinal, linked.rva(function))
               for name, function, ordinal in exports_of(definition)}
    directories.update(fill_exports(linked, sections[".rdata"], dll, exports))
    return finished(linked, sections, directories, "_DllMainCRTStartup", pe.DLL)


def program_of(linked):
    """Returns the bytes of a program."""
    sections, directories = sections_and_directories(linked)
    return finished(linked, sections, directories, "WinMainCRTStartup", 0)


def made_of(linked, definitions, name):
    """Returns a DLL with the exports of a file; a program when there is none."""
    if not definitions:
        return program_of(linked)
    return image_of(linked, definitions[0].read_text(), name)


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    elf, *definitions, result = map(pathlib.Path, sys.argv[1:])
    with elf.open("rb") as stream:
        try:
            image = made_of(LinkedFile(stream), definitions, result.name)
        except (BadInput, ValueError) as error:
            sys.exit(f"write_image.py: {elf}: {error}")
    result.write_bytes(image)


if __name__ == "__main__":
    main()
