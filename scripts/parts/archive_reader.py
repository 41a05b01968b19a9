"""Reads the binaries of a release archive for Windows with a tool that had no part in making them."""

import pathlib
import re
import subprocess

from export_lists import ROOT, names_in, ordinals_of

MACHINES = {"x64": "IMAGE_FILE_MACHINE_AMD64", "x86": "IMAGE_FILE_MACHINE_I386"}
SYSTEM_FUNCTIONS = "scripts/parts/windows-functions.txt"


def listing_of(path):
    return subprocess.run(["llvm-readobj-14", "--file-headers", "--coff-imports", "--coff-exports", path],
                          check=True, capture_output=True, text=True).stdout


def imports_of(listing):
    """Returns the imported functions by DLL. An import by ordinal would have no name."""
    blocks = re.findall(r"\n(?:Delay)?Import \{\s+Name: (\S+)(.*?)\n\}", listing, re.DOTALL)
    return {dll: re.findall(r"Symbol: (\S*) \(", block) for dll, block in blocks}


def exports_of(listing):
    """Returns the ordinals by name."""
    return {name: int(ordinal) for ordinal, name in
            re.findall(r"Export \{\s+Ordinal: (\d+)\s+Name: (\S*)", listing)}


def system_functions():
    """Returns the functions that every Windows has, by DLL."""
    parts = re.split(r"^\[(.+)\]$", (ROOT / SYSTEM_FUNCTIONS).read_text(), flags=re.MULTILINE)
    return {dll: set(names_in(text)) for dll, text in zip(parts[1::2], parts[2::2])}


def binaries_in(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in (".exe", ".dll"))


def neighbour_of(path, name):
    """Returns the DLL that a program in this folder finds; those of traced/ are copied over the others."""
    found = [folder / name for folder in (path.parent, path.parent.parent) if (folder / name).exists()]
    return found[0] if found else None


def import_problems(path, listing, system):
    for dll, functions in imports_of(listing).items():
        neighbour = neighbour_of(path, dll)
        known = set(exports_of(listing_of(neighbour))) if neighbour else system.get(dll)
        if known is None:
            yield f"{path.name} needs {dll}, which is not in the archive and not part of Windows"
            continue
        for function in functions:
            if function not in known:
                yield f"{path.name} imports {function or 'an ordinal'}, which {dll} does not have"


def export_problems(folder):
    promised = ordinals_of((folder / "ipodctl.def").read_text())
    for path in (folder / "ipodctl.dll", folder / "traced/ipodctl.dll"):
        if exports_of(listing_of(path)) != promised:
            yield f"{path.relative_to(folder)} does not export what ipodctl.def says"


def problems_of(folder, processor):
    system = system_functions()
    for path in binaries_in(folder):
        listing = listing_of(path)
        if MACHINES[processor] not in listing:
            yield f"{path.name} is not for {processor}"
        yield from import_problems(path, listing, system)
    yield from export_problems(folder)


def wine_problems(folder):
    """Compares what the archive imports of the system with the exports of Wine's DLLs."""
    wine = pathlib.Path("/usr/lib/x86_64-linux-gnu/wine/x86_64-windows")
    for path in binaries_in(folder):
        for dll, functions in imports_of(listing_of(path)).items():
            if neighbour_of(path, dll):
                continue
            missing = set(functions) - exports_of(listing_of(wine / dll.lower())).keys()
            yield from (f"{path.name} imports {name}, which Wine's {dll} does not have" for name in missing)
