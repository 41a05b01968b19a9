#!/usr/bin/python3 -B
"""Finds out whose code a build contains besides the project's own.

usage: scripts/parts/linked_components.py [--licences FOLDER] BUILD TARGET...

Prints the Debian packages that have the headers which the targets' objects include, and the static
libraries that the compiler adds. Their licences are copied to FOLDER, one file a package.
"""

import argparse
import pathlib
import re
import shutil
import subprocess
import sys
import typing

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# What a compiler's driver adds to a program or library that is linked with it.
RUNTIME = ("libgcc.a", "libstdc++.a", "libwinpthread.a", "libmingw32.a", "crt2.o", "dllcrt2.o")


class Component(typing.NamedTuple):
    package: str
    version: str
    licence: pathlib.Path


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def objects_of(build, targets):
    commands = output_of("ninja", "-C", str(build), "-t", "commands", *targets)
    return set(re.findall(r" -o (\S+\.(?:o|obj))\b", commands))


def headers_of(build, targets):
    """The files outside the project that the targets' objects include."""
    wanted, found, is_wanted = objects_of(build, targets), set(), False
    for line in output_of("ninja", "-C", str(build), "-t", "deps").splitlines():
        if not line.startswith(" "):
            is_wanted = line.split(":")[0] in wanted
        elif is_wanted:
            found.add((build / line.strip()).resolve())
    return {file for file in found if not file.is_relative_to(ROOT)}


def runtime_of(build):
    """The files of the compiler's runtime."""
    settings = next(build.glob("CMakeFiles/*/CMakeCXXCompiler.cmake")).read_text()
    compiler = re.search(r'set\(CMAKE_CXX_COMPILER "(.*)"\)', settings)[1]
    found = (output_of(compiler, f"-print-file-name={name}").strip() for name in RUNTIME)
    return {pathlib.Path(name).resolve() for name in found if "/" in name}


def owners_of(files):
    """The package of each file; dpkg reads its lists once for all of them."""
    found = subprocess.run(["dpkg", "-S", *map(str, sorted(files))], capture_output=True, text=True,
                           check=False).stdout
    owners = (line.partition(": ") for line in found.splitlines())
    return {file: packages.split(",")[0].split(":")[0] for packages, _, file in owners}


def component(package):
    licence = pathlib.Path(f"/usr/share/doc/{package}/copyright")
    if not licence.exists():
        sys.exit(f"linked_components: {package} has no {licence}; install the package again")
    version = output_of("dpkg-query", "--show", "--showformat=${Version}", package)
    return Component(package, version, licence)


def components_of(build, targets):
    """The components of the targets, sorted by name."""
    files = headers_of(build, targets) | runtime_of(build)
    owners = owners_of(files)
    for file in sorted(files):
        if str(file) not in owners:
            sys.exit(f"linked_components: no Debian package has {file}; remove it, or install the "
                     "package that should have it")
    return [component(package) for package in sorted(set(owners.values()))]


def copy_licences(components, folder):
    folder.mkdir(parents=True, exist_ok=True)
    for one in components:
        shutil.copyfile(one.licence, folder / f"{one.package}.txt")


def main():
    parser = argparse.ArgumentParser(description=__doc__, usage=argparse.SUPPRESS,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--licences", type=pathlib.Path)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("targets", nargs="+")
    arguments = parser.parse_args()
    components = components_of(arguments.build.resolve(), arguments.targets)
    if arguments.licences:
        copy_licences(components, arguments.licences)
    for one in components:
        print(one.package, one.version)


if __name__ == "__main__":
    main()
