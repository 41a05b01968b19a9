"""Links a program with what is in a release archive for Windows: with MinGW, and with Microsoft's kind
of objects and lld-link. Microsoft's headers and libraries are not on this machine, so the little that
the example needs of them is made here."""

import subprocess

# By processor: the target of clang, what lld-link and llvm-dlltool call it, MinGW's prefix, and the
# symbol of a function of C.
TOOLS = {
    "x64": ("x86_64-pc-windows-msvc", "x64", "i386:x86-64", "x86_64-w64-mingw32", "{}"),
    "x86": ("i686-pc-windows-msvc", "x86", "i386", "i686-w64-mingw32", "_{}"),
}
HEADERS = {
    "stdio.h": "#include <stddef.h>\nint putchar(int character);\nint puts(const char* text);\n",
    "windows.h": "__declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);\n",
}
START = "int main(void);\nvoid exit(int status);\nvoid start(void) { exit(main()); }\n"
# A linker of x86 knows a function of the system by the bytes of its arguments.
SYSTEM = {"kernel32": {"x64": ["Sleep"], "x86": ["Sleep@4"]},
          "msvcrt": dict.fromkeys(("x64", "x86"), ["exit", "memset", "putchar", "puts"])}


def run(*command, folder):
    subprocess.run([str(part) for part in command], cwd=folder, check=True)


def make_system_library(name, functions, machine, work):
    (work / f"{name}.def").write_text(f"LIBRARY {name}.dll\nEXPORTS\n" +
                                      "".join(f"    {function}\n" for function in functions))
    run("llvm-dlltool-14", "-m", machine, "-k", "-D", f"{name}.dll", "-d", f"{name}.def", "-l",
        f"{name}.lib", folder=work)


def link_as_microsoft(archive, processor, work):
    """Returns the program."""
    target, linker_machine, machine, _, symbol = TOOLS[processor]
    for name, text in HEADERS.items():
        (work / name).write_text(text)
    (work / "start.c").write_text(START)
    for name, functions in SYSTEM.items():
        make_system_library(name, functions[processor], machine, work)
    for source in (archive / "first_session.c", work / "start.c"):
        run("clang-14", f"--target={target}", "-O1", "-Wall", "-Werror", "-I", work, "-I", archive, "-c",
            source, "-o", work / f"{source.stem}.obj", folder=work)
    program = work / "microsoft_session.exe"
    run("lld-link-14", "/nologo", f"/machine:{linker_machine}", "/subsystem:console", "/nodefaultlib",
        "/entry:start", f"/out:{program}", "first_session.obj", "start.obj", archive / "ipodctl.lib",
        archive / "stream_driver.lib", "kernel32.lib", "msvcrt.lib",
        "/include:" + symbol.format("streamDriverInstall"), folder=work)
    return program


def link_with_mingw(archive, processor, work):
    """Links as the archive's README says. Returns the program."""
    *_, prefix, symbol = TOOLS[processor]
    program = work / "mingw_session.exe"
    run(f"{prefix}-gcc", archive / "first_session.c", "-I", archive, "-L", archive, "-lipodctl",
        "-lstream_driver", "-Wl,-u," + symbol.format("streamDriverInstall"), "-o", program, folder=work)
    return program
