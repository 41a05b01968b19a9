"""Which files differ from the branch that others have, and what checks them."""

import pathlib
import shlex
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SHARED_BRANCHES = ("@{upstream}", "origin/HEAD", "origin/main", "origin/master", "main", "master")
# What the build for Linux compiles or reads.
BUILT = ("src/", "host/", "trace/", "simulator/", "tools/", "headunit/", "examples/", "tests/", "bench/",
         "cmake/")
BUILD_FILES = ("CMakeLists.txt", "CMakePresets.json", "scripts/make-test-music")
NOT_BUILT = ("bench/arm/", "tests/mutants/", "tests/wince/", "tests/windows/", "cmake/toolchains/")
LINTED = ("src/", "host/", "trace/", "simulator/", "tools/", "headunit/", "bench/")
# The steps of scripts/test that alone check a folder.
ONLY_STEPS = {"fuzz/": "fuzz", "simulator/": "windows", "headunit/": "windows wince arm",
              "wince/": "wince arm lint", "windows/": "windows lint", "python/": "python",
              "recorder/": "wince arm windows lint", "tests/wince/": "wince arm",
              "tests/windows/": "windows", "cmake/toolchains/": "windows wince arm"}


def git(*arguments):
    done = subprocess.run(["git", *arguments], cwd=ROOT, capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else None


def base():
    """Returns the last commit that is also on a branch that others have; HEAD without one."""
    for branch in SHARED_BRANCHES:
        commit = git("merge-base", "HEAD", branch)
        if commit:
            return commit
    return "HEAD"


def changed_files(commit):
    """Returns the files that differ from the commit, also those that Git does not know yet."""
    listings = (git("diff", "--name-only", "-z", "--no-renames", commit),
                git("ls-files", "--others", "--exclude-standard", "-z"))
    return sorted({name for listing in listings for name in (listing or "").split("\0") if name})


def is_document(name):
    return name.endswith((".md", ".png")) or name == "LICENSE"


def is_built(name):
    if is_document(name) or name.startswith(NOT_BUILT):
        return False
    return name.startswith(BUILT) or name in BUILD_FILES


def words(names):
    return " ".join(shlex.quote(name) for name in names)


def is_script_in(name, language):
    path = ROOT / name
    if path.suffix == ".py":
        return language == "python"
    with open(path, "rb") as file:
        first = file.readline()
    return first.startswith(b"#!") and language.encode() in first


def text_checks(files):
    """Returns the commands that only read the changed files, or the whole source in about a second."""
    there = [name for name in files if (ROOT / name).is_file()]
    sources = [name for name in there if name.endswith((".cpp", ".h", ".c"))]
    commands = ["scripts/words"]
    if sources:
        commands.append(f"clang-format-14 --dry-run -Werror {words(sources)}")
    bash = [name for name in there if is_script_in(name, "bash")]
    if bash:
        commands.append(f"shellcheck {words(bash)}")
    for name in (name for name in there if is_script_in(name, "python")):
        code = "import ast, sys; ast.parse(open(sys.argv[1]).read(), sys.argv[1])"
        commands.append(f"/usr/bin/python3 -c {shlex.quote(code)} {shlex.quote(name)}")
    if any(name.startswith(("src/", "tests/")) for name in files):
        commands += ["scripts/mutants --check", "scripts/parts/check-includes"]
    if any(name.startswith("src/") for name in files):
        commands.append("scripts/parts/check-functions")
    return commands


def lint_command(files):
    """Returns the command that lints the changed sources, and those next to a changed header."""
    candidates = {pathlib.Path(name).with_suffix(".cpp") for name in files
                  if name.startswith(LINTED) and name.endswith((".cpp", ".h"))}
    # What the small simulator has instead of a part of the simulator is not in that build.
    candidates = {path for path in candidates if not path.name.startswith("no_")}
    sources = sorted(str(path) for path in candidates if (ROOT / path).is_file())
    if not sources:
        return ""
    return f"cmake --preset demo >/dev/null && scripts/lint build/demo {words(sources)}"


def needed_steps(files):
    """Returns the steps of scripts/test that alone check some of the files."""
    steps = {}
    for folder, names in ONLY_STEPS.items():
        if any(name.startswith(folder) for name in files):
            steps.update(dict.fromkeys(names.split()))
    return list(steps)
