#!/usr/bin/env python3
"""Prints a crash report from Linux with functions and source lines.

    tools/crash_report.py FILE [DEBUG-FOLDER]

Debug information comes only from files whose build-id is the one in the report: the debug
files below DEBUG-FOLDER, and the modules themselves if they are still in place. Exits
with 1 if there is none for the program itself. Needs addr2line.
"""

import mmap
import re
import subprocess
import sys
from pathlib import Path

PROGRAM = "the program"
# The header of the note that holds a build-id: the sizes of name and id, the type, the name.
NOTE = b"\x04\0\0\0\x14\0\0\0\x03\0\0\0GNU\0"
MODULE = re.compile(r"^    0x[0-9a-f]+-0x[0-9a-f]+ (\S+) (.+)$", re.M)
FRAME = re.compile(r"^    #(\d+) (0x[0-9a-f]+)(?: in (.+?))?(?: \((.+)\+(0x[0-9a-f]+)\))?$", re.M)
SECTION = re.compile(r"^(Addresses|Stack) of thread (\d+)\n((?:    .*\n)*)", re.M)


def build_id(path):
    """The file's build-id; empty if it has none."""
    try:
        with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as data:
            place = data.find(NOTE) if data[:4] == b"\x7fELF" else -1
            return data[place + len(NOTE):place + len(NOTE) + 20].hex() if place >= 0 else ""
    except (OSError, ValueError):
        return ""


def modules_of(report):
    """Name, build-id and path of each module."""
    for found_id, name in MODULE.findall(report):
        is_program = name.startswith(PROGRAM)
        path = name.removeprefix(PROGRAM + " ") if is_program else name
        yield PROGRAM if is_program else name, found_id, Path(path)


def debug_files(report, folder):
    """The file with debug information for each module; a message if the program's is missing."""
    offered = {}
    if folder:
        offered = {build_id(path): path for path in folder.rglob("*") if path.is_file()}
    files, refused = {}, ""
    for name, wanted, path in modules_of(report):
        if wanted in offered:
            files[name] = offered[wanted]
        elif build_id(path) == wanted:
            files[name] = path
        elif name == PROGRAM:
            refused = f"no debug file with build-id {wanted}: " + \
                (f"{path} has {build_id(path) or 'none'}" if path.exists() else f"{path} is gone")
    return files, refused


def lines_of(file, offsets):
    """What addr2line says about each offset; inlined functions add lines."""
    said = subprocess.run(["addr2line", "-aCfipe", str(file), *offsets], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    answers = re.split(r"^0x0*([0-9a-f]+): ", said, flags=re.M)[1:]
    return {"0x" + at: text.strip() for at, text in zip(answers[::2], answers[1::2])}


def print_stacks(report, files):
    names = {(thread, number): name for kind, thread, text in SECTION.findall(report)
             if kind == "Stack" for number, _, name, _, _ in FRAME.findall(text)}
    for kind, thread, text in SECTION.findall(report):
        if kind != "Addresses":
            continue
        print(f"Thread {thread}")
        frames = FRAME.findall(text)
        known = {}
        for module, file in files.items():
            offsets = [offset for _, _, _, name, offset in frames if name == module]
            if offsets:
                known[module] = lines_of(file, offsets)
        for number, address, _, module, offset in frames:
            line = known.get(module, {}).get(offset, "??")
            if line.startswith("??"):
                line = names.get((thread, number), "?")
            print(f"#{number} {line} ({module or address})")
        print()


def main():
    if len(sys.argv) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    report = Path(sys.argv[1]).read_text("utf-8", "replace")
    files, refused = debug_files(report, Path(sys.argv[2]) if len(sys.argv) == 3 else None)
    if refused:
        print(f"crash_report.py: {refused}", file=sys.stderr)
        return 1
    print(report.split("\n\n", 1)[0] + "\n")
    print_stacks(report, files)
    if not report.endswith("\nEnd of report\n"):
        print("The report was cut short: it has no end.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
