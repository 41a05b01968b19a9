"""Which source each instruction of the image for Windows CE is from, by its debug information."""

import os
import pathlib
import re
import subprocess

from elftools.elf.elffile import ELFFile

ROOT = pathlib.Path(__file__).resolve().parents[2]
UNIT = 4  # bytes of an instruction
CPP_LIBRARY = "C++ library"
COMPILER_LIBRARY = "compiler's library"
IMPORT_THUNKS = "import thunks"


class ImageCode:
    """The code of the linked file, at addresses from the start of the image."""

    def __init__(self, linked):
        self.linked = linked
        with open(linked, "rb") as stream:
            elf = ELFFile(stream)
            table = elf.get_section_by_name(".symtab")
            self.base = table.get_symbol_by_name("imageBase")[0]["st_value"]
            self.imports = {symbol.name[len("__imp_"):] for symbol in table.iter_symbols()
                            if symbol.name.startswith("__imp_")}
            self.functions = self._functions(table)
            text = elf.get_section_by_name(".text")
            begin = text["sh_addr"] - self.base
            self.addresses = range(begin, begin + text["sh_size"], UNIT)

    def _functions(self, table):
        found = {symbol["st_value"] - self.base: (symbol["st_size"], symbol.name)
                 for symbol in table.iter_symbols()
                 if symbol["st_info"]["type"] == "STT_FUNC" and symbol["st_size"] > 0}
        return {address: found[address] for address in sorted(found)}

    def places(self):
        """Returns the layer and the function of each address. Inlined code belongs to the layer of
        the inlined function. Code of the C++ library belongs to the layer that it is inlined in."""
        chains = self._source_chains()
        places = {address: (COMPILER_LIBRARY, "constants and veneers") for address in self.addresses}
        for address, (size, name) in self.functions.items():
            own_layer = self._layer(name, chains[address])
            for place in range(address, address + size, UNIT):
                layer = layer_of(chains[place])
                places[place] = (layer if layer.startswith("src/") else own_layer, plain_name(name))
        return places

    def _layer(self, name, chain):
        return IMPORT_THUNKS if name in self.imports else layer_of(chain)

    def _source_chains(self):
        """Returns for each address the source files from the innermost inlined function outwards."""
        lines = subprocess.run(
            ["arm-none-eabi-addr2line", "-a", "-i", "-e", self.linked], check=True, text=True,
            capture_output=True, input="\n".join(hex(self.base + a) for a in self.addresses))
        chains = {}
        for line in lines.stdout.splitlines():
            if line.startswith("0x"):
                chain = chains.setdefault(int(line, 16) - self.base, [])
            else:
                chain.append(os.path.normpath(line.rpartition(":")[0]))
        return chains


def layer_of(chain):
    for path in chain:
        found = re.match(re.escape(f"{ROOT}/") + r"(src/\w+|wince/runtime)/", path)
        if found:
            return found[1]
    return CPP_LIBRARY if any("/c++/" in path for path in chain) else COMPILER_LIBRARY


_plain_names = {}


def plain_name(name):
    """Returns the C++ name of a function without its parameters and the namespace of the library."""
    if name not in _plain_names:
        full = subprocess.run(["c++filt", "-p", name], check=True, capture_output=True, text=True)
        _plain_names[name] = full.stdout.strip().replace("ipodctl::", "")
    return _plain_names[name]
