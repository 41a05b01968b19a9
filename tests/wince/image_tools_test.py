#!/usr/bin/python3
"""The bytes that the tools for the device's image write."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

import pefile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "wince/image"))

import import_library
import make_exports
import make_imports
import pe_image
import write_image


class RelocationDirectory(unittest.TestCase):
    def test_has_a_block_for_each_page_padded_to_words(self):
        self.assertEqual(
            pe_image.relocation_directory([0x2004, 0x1008, 0x1ffc, 0x100c]),
            bytes.fromhex("00 10 00 00  10 00 00 00  08 30 0c 30 fc 3f 00 00"
                          "00 20 00 00  0c 00 00 00  04 30 00 00"))

    def test_names_each_word_once(self):
        self.assertEqual(pe_image.relocation_directory([0x1000, 0x1000]),
                         bytes.fromhex("00 10 00 00  0c 00 00 00  00 30 00 00"))

    def test_of_nothing_is_empty(self):
        self.assertEqual(pe_image.relocation_directory([]), b"")


class ExportDirectory(unittest.TestCase):
    def test_orders_functions_by_ordinal_and_names_by_letter(self):
        self.assertEqual(
            pe_image.export_directory(0x3000, "a.dll", {"Zoe": (5, 0x1111), "Amy": (6, 0x2222)}),
            bytes.fromhex("00000000 00000000 0000 0000 3c300000 05000000 02000000 02000000"
                          "28300000 30300000 38300000"
                          "11110000 22220000"
                          "42300000 46300000"
                          "0100 0000") + b"a.dll\0Amy\0Zoe\0")

    def test_refuses_ordinals_with_gaps(self):
        with self.assertRaisesRegex(ValueError, "gaps"):
            pe_image.export_directory(0x3000, "a.dll", {"A": (1, 0), "B": (3, 0)})

    def test_refuses_an_ordinal_that_is_used_twice(self):
        with self.assertRaisesRegex(ValueError, "repeat"):
            pe_image.export_directory(0x3000, "a.dll", {"A": (1, 0), "B": (1, 0)})


class ExportRoom(unittest.TestCase):
    def test_has_the_size_of_the_directory(self):
        # 40 bytes, 4 + 4 + 2 for each of two exports, "a.dll", "Zoe" and "Amy" with their zeros.
        self.assertIn("exportDirectory:\n    .space 74\nexportDirectoryEnd:\n",
                      make_exports.source("EXPORTS\n  Zoe @1\n  Amy @2\n", "a.dll"))


class ImportDirectory(unittest.TestCase):
    def test_describes_each_dll_and_fills_its_slots(self):
        directory, slots = pe_image.import_directory(0x5000, [("k.dll", 0x4000, ["Go"])])
        self.assertEqual(directory, bytes.fromhex(
            "28500000 00000000 00000000 35500000 00400000"
            "00000000 00000000 00000000 00000000 00000000"
            "30500000 00000000"
            "0000") + b"Go\0k.dll\0")
        self.assertEqual(slots, {0x4000: 0x5030})


class Checksum(unittest.TestCase):
    def test_adds_words_with_their_carry_and_the_size_without_itself(self):
        self.assertEqual(pe_image.checksum(bytes.fromhex("ffff 0200 aaaa bbbb 01"), 4), 3 + 9)


class ImportThunks(unittest.TestCase):
    def test_are_made_for_each_name_of_a_list_with_comments(self):
        self.assertEqual(make_imports.names_in("# all\nSleep\n\nfree   # heap\n"), ["Sleep", "free"])

    def test_are_made_for_the_exports_of_a_module_definition_file(self):
        with tempfile.TemporaryDirectory() as folder:
            definitions = pathlib.Path(folder) / "a.def"
            definitions.write_text("LIBRARY a\nEXPORTS\n    Zoe @1\n    Amy @2\n")
            self.assertEqual(make_imports.functions_of(definitions), ["Zoe", "Amy"])

    def test_jump_through_a_slot(self):
        text = make_imports.source("coredll", ["Sleep"])
        self.assertIn("Sleep:\n    ldr ip, 1f\n    ldr ip, [ip]\n    bx ip\n1:  .word __imp_Sleep\n", text)
        self.assertIn('.section .iat.coredll.Sleep, "aw"', text)


class ImportLibrary(unittest.TestCase):
    def test_has_a_short_record_for_each_export(self):
        self.assertEqual(
            import_library.import_record("a.dll", "Go", 7),
            bytes.fromhex("0000 ffff 0000 c001 00000000 09000000 0700 0400") + b"Go\0a.dll\0")

    def test_is_read_by_another_reader(self):
        with tempfile.TemporaryDirectory() as folder:
            library = pathlib.Path(folder) / "a.lib"
            library.write_bytes(import_library.library_of("a.dll", {"Go": 1, "Away": 2}))
            listing = subprocess.run(["llvm-nm-14", "--print-armap", library], check=True,
                                     capture_output=True, text=True).stdout
        for line in ("Go in a.dll", "Away in a.dll", "T __imp_Go", "T Away"):
            self.assertIn(line, listing)


class LinkedFile(unittest.TestCase):
    """What the tool says of files that cannot become an image."""

    SOURCE = """
        .arm
        .text
        .global _DllMainCRTStartup, IpodConnect
    _DllMainCRTStartup:
    IpodConnect:
        bx lr
        .word known
        {text}
        .data
    known:
        .word known
        .section .rodata
        .word known - .
        .section .iat.coredll.Sleep, "aw", %progbits
        .global __imp_Sleep
    __imp_Sleep:
        .word 0
        .section .rodata.exports
        .global exportDirectory, exportDirectoryEnd
    exportDirectory:
        .space {room}
    exportDirectoryEnd:
        .bss
        .space 4
    """

    # Of the export directory: 40 bytes, 10 for the export, "a.dll" and "IpodConnect" with their zeros.
    ROOM = 68

    def image(self, text="", definition="    IpodConnect @1\n", architecture="armv4t", room=ROOM):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            (folder / "a.s").write_text(self.SOURCE.format(text=text, room=room))
            subprocess.run(["arm-none-eabi-as", "-march=" + architecture, "a.s", "-o", "a.o"],
                           cwd=folder, check=True)
            subprocess.run(["arm-none-eabi-ld", "--emit-relocs", "-T",
                            ROOT / "wince/image/ipodctl.ld", "a.o", "-o", "a.elf"], cwd=folder,
                           check=True)
            with (folder / "a.elf").open("rb") as stream:
                return write_image.image_of(write_image.LinkedFile(stream), definition, "a.dll")

    def test_that_is_good_becomes_an_image(self):
        image = self.image()
        self.assertEqual(image[:2], b"MZ")
        # The two words that contain an address; differences and branches need no relocation.
        self.assertIn(bytes.fromhex("00100000 0c000000 0430 0000 00300000 0c000000 0030 0000"), image)

    def test_with_half_an_address_is_refused(self):
        with self.assertRaisesRegex(write_image.BadInput, "relocation 43 of .* cannot be rebased"):
            self.image(".arch armv7-a\n movw r0, #:lower16:known\n .eabi_attribute 6, 2")

    def test_for_a_later_processor_is_refused(self):
        with self.assertRaisesRegex(write_image.BadInput, "the code needs architecture 4"):
            self.image("ldrd r0, r1, [r2]", architecture="armv5te")

    def test_with_wide_characters_of_32_bits_is_refused(self):
        with self.assertRaisesRegex(write_image.BadInput, "TAG_ABI_PCS_WCHAR_T is 4, not 2"):
            self.image(".eabi_attribute 18, 4")

    def test_with_an_address_across_words_is_refused(self):
        with self.assertRaisesRegex(write_image.BadInput, "is not in a whole word"):
            self.image(".byte 0\n .4byte known\n .align")

    def test_with_too_little_room_for_the_exports_is_refused(self):
        with self.assertRaisesRegex(write_image.BadInput, "export directory has another size"):
            self.image(room=self.ROOM - 4)

    def test_without_an_export_is_refused(self):
        with self.assertRaisesRegex(write_image.BadInput, "no IpodPlay in the linked file"):
            self.image(definition="    IpodPlay @1\n")


class Program(unittest.TestCase):
    """An image without exports, which the system starts."""

    SOURCE = """
        .arm
        .text
        .global WinMainCRTStartup
        bx lr
    WinMainCRTStartup:
        bx lr
        .section .rodata
        .word WinMainCRTStartup
        .data
        .word 1
        .section .iat.ipodctl.IpodConnect, "aw", %progbits
        .global __imp_IpodConnect
    __imp_IpodConnect:
        .word 0
        .bss
        .space 4
    """

    def setUp(self):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            (folder / "a.s").write_text(self.SOURCE)
            subprocess.run(["arm-none-eabi-as", "-march=armv4t", "a.s", "-o", "a.o"], cwd=folder,
                           check=True)
            subprocess.run(["arm-none-eabi-ld", "--emit-relocs", "--defsym=programBase=0x10000",
                            "--entry=WinMainCRTStartup", "-T", ROOT / "wince/image/ipodctl.ld",
                            "a.o", "-o", "a.elf"], cwd=folder, check=True)
            with (folder / "a.elf").open("rb") as stream:
                self.image = pefile.PE(data=write_image.program_of(write_image.LinkedFile(stream)))

    def test_begins_at_its_entry_point_in_the_address_space_of_a_process(self):
        self.assertEqual(self.image.OPTIONAL_HEADER.ImageBase, 0x10000)
        self.assertEqual(self.image.OPTIONAL_HEADER.AddressOfEntryPoint, 0x1004)

    def test_is_not_a_dll(self):
        self.assertEqual(self.image.FILE_HEADER.Characteristics, 0x010E)

    def test_imports_from_the_library_and_exports_nothing(self):
        (dll,) = self.image.DIRECTORY_ENTRY_IMPORT
        self.assertEqual((dll.dll, [function.name for function in dll.imports]),
                         (b"ipodctl.dll", [b"IpodConnect"]))
        self.assertFalse(hasattr(self.image, "DIRECTORY_ENTRY_EXPORT"))

    def test_ends_its_import_table_with_an_empty_slot(self):
        (dll,) = self.image.DIRECTORY_ENTRY_IMPORT
        self.assertEqual(self.image.get_dword_at_rva(dll.struct.FirstThunk + 4), 0)


if __name__ == "__main__":
    unittest.main()
