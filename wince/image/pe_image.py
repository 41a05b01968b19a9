"""The file format of the platform's images: headers, sections and their directories."""

import struct
from dataclasses import dataclass

FILE_ALIGNMENT = 0x200
SECTION_ALIGNMENT = 0x1000

MACHINE_ARM = 0x01C0
SUBSYSTEM_WINDOWS_CE = 9
VERSION = (5, 0)

# Characteristics: executable, 32 bits, no line numbers, no local symbols.
IMAGE_CHARACTERISTICS = 0x0002 | 0x0100 | 0x0004 | 0x0008
DLL = 0x2000

CODE = 0x00000020
INITIALISED = 0x00000040
DISCARDABLE = 0x02000000
EXECUTE = 0x20000000
READ = 0x40000000
WRITE = 0x80000000

DIRECTORY_COUNT = 16
EXPORTS, IMPORTS, RELOCATIONS, IMPORT_ADDRESSES = 0, 1, 5, 12

HIGHLOW = 3
PAGE = 0x1000

DOS_HEADER_SIZE = 0x40
OPTIONAL_HEADER_SIZE = 0xE0
SECTION_HEADER_SIZE = 40
STACK_RESERVE = 0x10000
HEAP_RESERVE = 0x100000


def align(value, alignment):
    return -(-value // alignment) * alignment


@dataclass
class Section:
    """A section of the image. The memory beyond the data is zero."""

    name: str
    rva: int
    data: bytes
    memory_size: int
    flags: int

    @property
    def end(self):
        return align(self.rva + max(self.memory_size, 1), SECTION_ALIGNMENT)


def export_directory(rva, dll, exports):
    """Returns the export directory. `exports` maps a name to its ordinal and its address."""
    ordinals = [ordinal for ordinal, _ in exports.values()]
    base, count = min(ordinals), max(ordinals) - min(ordinals) + 1
    if sorted(ordinals) != list(range(base, base + count)):
        raise ValueError("the ordinals of the exports have gaps or repeat")
    names = sorted(exports)
    functions = [0] * count
    for ordinal, address in exports.values():
        functions[ordinal - base] = address

    functions_rva = rva + 40
    names_rva = functions_rva + 4 * count
    ordinals_rva = names_rva + 4 * len(names)
    texts_rva = ordinals_rva + 2 * len(names)
    texts, text_rvas = bytearray(), []
    for text in [dll, *names]:
        text_rvas.append(texts_rva + len(texts))
        texts += text.encode("ascii") + b"\0"
    return b"".join([
        struct.pack("<IIHHIIIIIII", 0, 0, 0, 0, text_rvas[0], base, count, len(names),
                    functions_rva, names_rva, ordinals_rva),
        struct.pack(f"<{count}I", *functions),
        struct.pack(f"<{len(names)}I", *text_rvas[1:]),
        struct.pack(f"<{len(names)}H", *(exports[name][0] - base for name in names)),
        bytes(texts),
    ])


def import_directory(rva, dlls):
    """Makes the import directory that follows the import address tables, and their first content.

    `dlls` is a list of (DLL, address of its table, names in the order of the table's slots).
    Returns the directory's bytes and a dictionary from slot address to content.
    """
    lookup_rva = rva + 20 * (len(dlls) + 1)
    texts_rva = lookup_rva + sum(4 * (len(names) + 1) for _, _, names in dlls)
    descriptors, lookups, texts, slots = bytearray(), bytearray(), bytearray(), {}
    for dll, table, names in dlls:
        own_lookup = lookup_rva + len(lookups)
        for index, name in enumerate(names):
            texts += b"\0" * (len(texts) % 2)
            slots[table + 4 * index] = texts_rva + len(texts)
            lookups += struct.pack("<I", texts_rva + len(texts))
            texts += struct.pack("<H", 0) + name.encode("ascii") + b"\0"
        lookups += struct.pack("<I", 0)
        descriptors += struct.pack("<IIIII", own_lookup, 0, 0, texts_rva + len(texts), table)
        texts += dll.encode("ascii") + b"\0"
    descriptors += bytes(20)
    return bytes(descriptors + lookups + texts), slots


def relocation_directory(rvas):
    """Returns the base relocations: one block for each page, padded to a multiple of four bytes."""
    blocks, pages = bytearray(), {}
    for rva in sorted(set(rvas)):
        pages.setdefault(rva - rva % PAGE, []).append(rva % PAGE)
    for page, offsets in pages.items():
        entries = [HIGHLOW << 12 | offset for offset in offsets]
        entries += [0] * (len(entries) % 2)
        blocks += struct.pack(f"<II{len(entries)}H", page, 8 + 2 * len(entries), *entries)
    return bytes(blocks)


def checksum(image, offset):
    """Returns the folded sum of all 16-bit words except the checksum, plus the file's size."""
    total = 0
    for position, (word,) in enumerate(struct.iter_unpack("<H", image + b"\0" * (len(image) % 2))):
        if position * 2 not in (offset, offset + 2):
            total += word
            total = (total & 0xFFFF) + (total >> 16)
    return total + len(image)


def file_of(sections, base, entry, directories, kind):
    """Returns the whole file. `directories` maps a directory's number to its address and size. `kind`
    is DLL, or 0 for a program."""
    headers_size = align(DOS_HEADER_SIZE + 24 + OPTIONAL_HEADER_SIZE +
                         SECTION_HEADER_SIZE * len(sections), FILE_ALIGNMENT)
    section_headers, content, offset = bytearray(), bytearray(), headers_size
    for section in sections:
        size = align(len(section.data), FILE_ALIGNMENT)
        section_headers += struct.pack(
            "<8sIIIIIIHHI", section.name.encode("ascii"), section.memory_size, section.rva, size,
            offset if size else 0, 0, 0, 0, 0, section.flags)
        content += section.data.ljust(size, b"\0")
        offset += size

    def total(flag):
        return sum(align(len(section.data), FILE_ALIGNMENT) for section in sections
                   if section.flags & flag)

    code = next(section for section in sections if section.flags & CODE)
    data = next(section for section in sections if section.flags & INITIALISED)
    optional = struct.pack(
        "<HBBIIIIIIIIIHHHHHHIIIIHHIIIIII", 0x10B, 0, 0, total(CODE), total(INITIALISED), 0, entry,
        code.rva, data.rva, base, SECTION_ALIGNMENT, FILE_ALIGNMENT, *VERSION, 0, 0, *VERSION, 0,
        sections[-1].end, headers_size, 0, SUBSYSTEM_WINDOWS_CE, 0, STACK_RESERVE, PAGE,
        HEAP_RESERVE, PAGE, 0, DIRECTORY_COUNT)
    optional += b"".join(struct.pack("<II", *directories.get(number, (0, 0)))
                         for number in range(DIRECTORY_COUNT))
    image = bytearray()
    image += b"MZ".ljust(DOS_HEADER_SIZE - 4, b"\0") + struct.pack("<I", DOS_HEADER_SIZE)
    image += b"PE\0\0" + struct.pack("<HHIIIHH", MACHINE_ARM, len(sections), 0, 0, 0,
                                     OPTIONAL_HEADER_SIZE, IMAGE_CHARACTERISTICS | kind)
    checksum_offset = len(image) + 64
    image += optional + section_headers
    image = image.ljust(headers_size, b"\0") + content
    struct.pack_into("<I", image, checksum_offset, checksum(bytes(image), checksum_offset))
    return bytes(image)
