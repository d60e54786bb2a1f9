"""The daemon needs nothing but a C library, and what is shipped has every part of it.

Usage: symbols_test.py EXECUTABLE OBJECT...

Every symbol that the objects leave undefined, but for weak ones, must be defined by another of them or by the C library,
the dynamic loader or the linker; none may belong to a C++ runtime. The executable may name no shared library but the C
library, and holds the functions that nothing in it calls.
"""
import re
import subprocess
import sys

RUNTIME = re.compile(r"^(_ZNS?t|_ZS|_ZT[VIS]|_Zn[wa]|_Zd[la]|__cxa_(?!finalize$)|__gxx_|_Unwind_|__dynamic_cast)")
LINKER = {"_GLOBAL_OFFSET_TABLE_"}
UNCALLED = {"start_download_thread", "config_upgrade", "firmware_upgrade"}


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def symbols(files, *options):
    fields = [line.split() for line in run("nm", "--format=posix", *options, *files).splitlines()]
    return {row[0].split("@")[0] for row in fields if len(row) > 1}  # one field: the name of a file


def weak(files):
    """What may stay undefined."""
    fields = [line.split() for line in run("nm", "--format=posix", "--undefined-only", *files).splitlines()]
    return {row[0] for row in fields if row[1:2] == ["w"]}


def c_library():
    path = run("cc", "-print-file-name=libc.so.6").strip()
    return symbols([path], "--dynamic", "--defined-only")


def functions(executable):
    return set(re.findall(r" T (\w+)\(", run("nm", "--demangle", "--defined-only", executable)))


def main(executable, objects):
    wanted = symbols(objects, "--undefined-only") - symbols(objects, "--defined-only") - LINKER
    faults = [f"belongs to a C++ runtime: {name}" for name in sorted(wanted) if RUNTIME.match(name)]
    faults += [f"not in the C library: {name}" for name in sorted(wanted - c_library() - weak(objects))]
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "--dynamic", executable))
    if needed != ["libc.so.6"]:
        faults.append(f"{executable} needs {needed}")
    faults += [f"not in {executable}: {name}" for name in sorted(UNCALLED - functions(executable))]
    print(f"{len(objects)} objects, {len(wanted)} symbols from outside, {executable} needs {', '.join(needed)}")
    print("\n".join(faults))
    return 1 if faults or not wanted else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
