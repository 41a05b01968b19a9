#!/usr/bin/python3
"""Errors put into the device's image are seen: damaged_image_test.py IMAGE [LOADER_FOLDER PROGRAM]

scripts/parts/check-image must see those that a reader can see. With the ARM build of the loader and a
program that uses the library, a damaged image must not run either.
"""

import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

import pefile

ROOT = pathlib.Path(__file__).resolve().parents[2]
IMAGE = pathlib.Path(sys.argv[1])
LOADER = sys.argv[2:4]


class DamagedImage(unittest.TestCase):
    def setUp(self):
        self.content = bytearray(IMAGE.read_bytes())
        self.pe = pefile.PE(data=bytes(self.content))

    def write(self, folder):
        path = pathlib.Path(folder) / "ipodctl.dll"
        image = pefile.PE(data=bytes(self.content))
        image.OPTIONAL_HEADER.CheckSum = image.generate_checksum()
        path.write_bytes(image.write())
        return path

    def check(self):
        with tempfile.TemporaryDirectory() as folder:
            return subprocess.run([ROOT / "scripts/parts/check-image", self.write(folder)],
                                  capture_output=True, text=True)

    def run_program(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = {**os.environ, "ARM_LIBRARY_PATH": LOADER[0], "IPODCTL_DEVICES": "",
                           "IPODCTL_IMAGE": str(self.write(folder))}
            return subprocess.run([ROOT / "scripts/parts/run-arm", LOADER[1]], env=environment,
                                  capture_output=True, text=True, timeout=60)

    def expect_seen(self, text):
        result = self.check()
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(text, result.stderr)

    def expect_not_run(self, text=""):
        if LOADER:
            result = self.run_program()
            self.assertNotEqual(result.returncode, 0)
            self.assertIn(text, result.stderr)

    def replace(self, old, new):
        place = self.content.index(old)
        self.content[place:place + len(new)] = new

    def first_relocation(self):
        """File offset of the first entry."""
        return self.pe.get_offset_from_rva(
            self.pe.OPTIONAL_HEADER.DATA_DIRECTORY[5].VirtualAddress) + 8

    def test_undamaged_is_good(self):
        self.assertEqual(self.check().returncode, 0)
        if LOADER:
            self.assertEqual(self.run_program().returncode, 0)

    def test_missing_export(self):
        self.replace(b"\0IpodSongPlay\0", b"\0IpodSongPlaz\0")
        self.expect_seen("export IpodSongPlay has ordinal None")
        self.expect_not_run("it does not export IpodSongPlay")

    def test_export_with_another_ordinal(self):
        directory = self.pe.OPTIONAL_HEADER.DATA_DIRECTORY[0].VirtualAddress
        struct.pack_into("<I", self.content, self.pe.get_offset_from_rva(directory) + 16, 2)
        self.expect_seen("export IpodConnect has ordinal 2, in ipodctl.def 1")

    def test_import_that_the_device_does_not_have(self):
        self.replace(b"\0CreateThread\0", b"\0CreateFiberX\0")
        self.expect_seen("coredll.dll of the device has no CreateFiberX")
        self.expect_not_run("coredll.dll has no CreateFiberX")

    def test_relocation_of_the_wrong_word(self):
        place = self.first_relocation()
        entry, = struct.unpack_from("<H", self.content, place)
        struct.pack_into("<H", self.content, place, entry - 4)
        self.expect_not_run("a relocation of a word that is not an address")

    def test_relocations_left_out(self):
        directory = self.pe.OPTIONAL_HEADER.DATA_DIRECTORY[5]
        directory.Size = 0
        self.content = bytearray(self.pe.write())
        self.expect_not_run()

    def test_processor_and_subsystem_of_others(self):
        header, = struct.unpack_from("<I", self.content, 0x3C)
        struct.pack_into("<H", self.content, header + 4, 0x14C)
        self.expect_seen("not an image for Windows CE on ARM")
        self.expect_not_run("not for ARM")

    def test_program_in_place_of_a_dll(self):
        header, = struct.unpack_from("<I", self.content, 0x3C)
        flags, = struct.unpack_from("<H", self.content, header + 22)
        struct.pack_into("<H", self.content, header + 22, flags & ~0x2000)
        self.expect_seen("not a DLL")
        self.expect_not_run("not a DLL")

    def test_data_that_cannot_be_written(self):
        place = self.content.index(b".data\0\0\0") + 36
        flags, = struct.unpack_from("<I", self.content, place)
        struct.pack_into("<I", self.content, place, flags & ~0x80000000)
        self.expect_seen("section .data is protected by 0x40000000")

    def test_wrong_checksum(self):
        with tempfile.TemporaryDirectory() as folder:
            path = self.write(folder)
            content = bytearray(path.read_bytes())
            content[-1] ^= 1
            path.write_bytes(content)
            result = subprocess.run([ROOT / "scripts/parts/check-image", path], capture_output=True,
                                    text=True)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("the checksum is wrong", result.stderr)

    def test_file_that_is_cut_short(self):
        self.content = self.content[:-1024]
        self.expect_not_run("a section that is cut short")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
