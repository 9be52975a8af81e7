#!/usr/bin/env python3
"""Checks that nothing in libs/ and collect/ includes upward: libraries by the list below, modules of
libs/core by the table of docs/architecture.md, in which each module includes only what
stands above it or to its left. Prints what does not hold; exits with 1 if anything.
"""
import re
import sys
from pathlib import Path

# What the modules of a library may include besides each other.
LIBRARIES = {
    "libs/textmarkup": [],
    "libs/core": ["libs/textmarkup"],
    "libs/utils": ["libs/core"],
    "libs/kern": ["libs/core"],
    "libs/qt/widgets/lib": ["libs/kern", "libs/core"],
    "collect": ["libs/kern", "libs/utils", "libs/core", "libs/textmarkup"],
}
ROW = re.compile(r"^\| \d+ \|([^|]*)\|", re.M)
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def module_of(file):
    """core_file_win32.cpp, core_file_calls.h and core_file.h are all of core_file."""
    return re.sub(r"_(win32|posix|calls|system|inline)$", "", Path(file).stem)


def table_order(document):
    names = [name for row in ROW.findall(document) for name in re.findall(r"`(\w+)`", row)]
    return {name: place for place, name in enumerate(names)}


def complaints(root):
    order = table_order((root / "docs/architecture.md").read_text(encoding="utf-8"))
    home = {module_of(file): folder for folder in LIBRARIES for file in (root / folder).glob("*.[hi]*")}
    for name in sorted(set(order) ^ {name for name, folder in home.items() if folder == "libs/core"}):
        yield f"docs/architecture.md and libs/core do not agree about {name}"
    for folder, below in LIBRARIES.items():
        for file in sorted((root / folder).glob("*.*")):
            module = module_of(file)
            for header in INCLUDE.findall(file.read_text(encoding="utf-8")):
                used = module_of(header)
                if home.get(used) not in [folder, *below]:
                    yield f"{file.relative_to(root)} includes {header}, which is of no library below"
                elif home[used] == folder == "libs/core" and order.get(used, 0) > order.get(module, 0):
                    yield f"{file.relative_to(root)} includes {header}, which stands behind it"


found = list(complaints(Path(__file__).resolve().parent.parent))
print("\n".join(found) or "libs/, collect/: nothing includes upward")
sys.exit(1 if found else 0)
