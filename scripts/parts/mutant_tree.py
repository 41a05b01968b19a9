"""A copy of the repository in build/mutants/ whose source is changed, and its builds."""

import pathlib
import shutil
import subprocess

from .mutant_file import Trouble

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PLACE = ROOT / "build/mutants"
TREE = PLACE / "tree"

# A mutant that makes a test wait for ever costs this much of the build that runs it.
TEST_SECONDS = {"release": 40, "asan": 80, "tsan": 80}
# The sanitizers' builds have only the tests of what they alone see, the other one all tests.
PROGRAMS = {"release": [], "asan": ["lingo_test", "link_test"], "tsan": ["race_test"]}
# Debug information would take most of the time of the links.
FLAGS = {"release": ["-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2 -DNDEBUG"], "asan": [], "tsan": []}


def build_folder(build):
    return TREE / "build" / build


def tracked_files():
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, check=True)
    names = listed.stdout.decode().split("\0")
    return [name for name in names if name and (ROOT / name).is_file()]


def restore(names):
    """Makes the copy's files what the repository's are. Files that are so already keep their time
    of change, so that nothing is built twice."""
    for name in names:
        source, copy = ROOT / name, TREE / name
        if copy.is_file() and copy.read_bytes() == source.read_bytes():
            continue
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(source, copy)
        shutil.copymode(source, copy)


def refresh():
    """Brings the whole copy up to date."""
    TREE.mkdir(parents=True, exist_ok=True)
    names = tracked_files()
    restore(names)
    known = {TREE / name for name in names}
    for folder in (path for path in TREE.iterdir() if path.is_dir() and path.name != "build"):
        for path in folder.rglob("*"):
            if path.is_file() and path not in known:
                path.unlink()


def plant(changes):
    """Writes changed texts, by path, to the copy."""
    for name, text in changes.items():
        (TREE / name).write_text(text)


def run_logged(what, command):
    log = PLACE / "build.log"
    with log.open("wb") as output:
        result = subprocess.run(command, cwd=TREE, stdout=output, stderr=output, check=False)
    if result.returncode != 0:
        lines = log.read_text(errors="replace").splitlines()
        raise Trouble("\n".join([f"{what} does not build, see {log}", *lines[-20:]]))


def configure(build):
    run_logged(f"the preset {build}", ["cmake", "--preset", build, *FLAGS[build],
                                       f"-DIPODCTL_TEST_SECONDS={TEST_SECONDS[build]}"])


def compile_all(build, what, jobs):
    targets = PROGRAMS[build] or ["product_tests"]
    run_logged(what, ["cmake", "--build", "--preset", build, "--target", *targets, "-j", str(jobs)])
