#!/usr/bin/python3
"""The library with and without a recorder differs in its imports only: traced_image_test.py PLAIN TRACED

For DLLs of Windows CE and of Windows. The files are compared byte by byte, and the import directories
are read by pefile.
"""

import pathlib
import sys
import unittest

import pefile

PLAIN, TRACED = (pathlib.Path(name) for name in sys.argv[1:3])
MOVED = ["CloseHandle", "CreateFileW", "ReadFile", "WriteFile"]
RECORDER = "ipodtrace.dll"

IMPORTS = 1
HEADER_FIELDS = ("SizeOfInitializedData", "CheckSum")


def imports_of(image):
    """Returns the address of the slot, the DLL and the name of each function, in their order."""
    return [(function.address, descriptor.dll.decode(), function.name.decode())
            for descriptor in image.DIRECTORY_ENTRY_IMPORT for function in descriptor.imports]


def headers_of(image):
    """Returns what the headers say, except where the import directory is and what follows from it."""
    optional = {key: value["Value"] for key, value in image.OPTIONAL_HEADER.dump_dict().items()
                if key != "Structure" and key not in HEADER_FIELDS}
    directories = [(entry.VirtualAddress, entry.Size)
                   for number, entry in enumerate(image.OPTIONAL_HEADER.DATA_DIRECTORY)
                   if number != IMPORTS]
    return {"optional": optional, "directories": directories,
            "machine": image.FILE_HEADER.Machine, "kind": image.FILE_HEADER.Characteristics,
            "sections": [(section.Name, section.VirtualAddress, section.Characteristics)
                         for section in image.sections]}


def end_of_sections(image):
    return max(section.PointerToRawData + section.SizeOfRawData for section in image.sections)


class TracedImage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.plain, cls.traced = pefile.PE(str(PLAIN)), pefile.PE(str(TRACED))

    def test_has_the_same_sections_except_that_with_the_imports(self):
        imports = self.plain.OPTIONAL_HEADER.DATA_DIRECTORY[IMPORTS].VirtualAddress
        compared = 0
        for plain, traced in zip(self.plain.sections, self.traced.sections, strict=True):
            size = plain.Misc_VirtualSize
            self.assertEqual(plain.get_data()[:size], traced.get_data()[:size], plain.Name)
            if not plain.contains_rva(imports):
                self.assertEqual(plain.Misc_VirtualSize, traced.Misc_VirtualSize)
                self.assertEqual(plain.get_data(), traced.get_data())
                compared += 1
        self.assertEqual(compared, len(self.plain.sections) - 1)

    def test_has_the_same_headers_except_the_place_of_the_imports(self):
        self.assertEqual(headers_of(self.plain), headers_of(self.traced))

    def test_imports_the_same_functions_in_the_same_slots(self):
        plain, traced = imports_of(self.plain), imports_of(self.traced)
        self.assertEqual([(slot, name) for slot, _, name in plain],
                         [(slot, name) for slot, _, name in traced])
        for (_, before, name), (_, after, _) in zip(plain, traced):
            self.assertEqual(after, RECORDER if name in MOVED else before)
        self.assertEqual(sorted(name for _, dll, name in traced if dll == RECORDER), MOVED)

    def test_has_the_same_bytes_after_its_sections(self):
        plain, traced = (image.__data__[end_of_sections(image):] for image in (self.plain, self.traced))
        self.assertEqual(plain, traced)

    def test_has_a_right_checksum(self):
        self.assertTrue(self.traced.verify_checksum())
        self.assertEqual(self.traced.get_warnings(), [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
