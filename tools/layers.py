#!/usr/bin/env python3
"""Checks that nothing in libs/ and collect/ includes upward: libraries by the list below,
modules of libs/core by the table of groups in docs/architecture.md; that no modules include
each other in a circle; and that this page names every public header. Prints each violation; exits with 1 if there is one.
"""
import re
import sys
from pathlib import Path

# The libraries that each library may include.
LIBRARIES = {
    "libs/utf": [],
    "libs/textmarkup": ["libs/utf"],
    "libs/core": ["libs/textmarkup", "libs/utf"],
    "libs/utils": ["libs/core", "libs/utf"],
    "libs/kern": ["libs/core"],
    "libs/testing": ["libs/kern", "libs/core"],
    "libs/qt/widgets/lib": ["libs/kern", "libs/core"],
    "libs/qt/designer": ["libs/qt/widgets/lib"],
    "collect": ["libs/kern", "libs/utils", "libs/core", "libs/textmarkup",
                "libs/utf"],
}
# Headers in these folders are not for callers.
INNER = {"internal", "posix", "win32", "utf", "designer"}
GROUP = re.compile(r"^\| (\w+) \| ([\w, -]+) \|( `core_[^|]*)\|", re.M)
INCLUDE = re.compile(r'^#include "([^"]+)"', re.M)


def module_of(file):
    """core_file_win32.cpp, internal/core_file_system.h and core_file.h all belong to core_file."""
    return re.sub(r"_(win32|posix|system|lines|types|inline)$", "", Path(file).stem)


def sources(folder, suffix):
    """The folder's sources, including those in internal/, posix/ and win32/."""
    return [file for inner in ("", "internal", "posix", "win32")
            for file in (folder / inner).glob("*." + suffix)]


def read_groups(document):
    """The group of each module, and all groups that each group may include."""
    group_of, below = {}, {}
    for group, built_on, modules in GROUP.findall(document):
        group_of |= dict.fromkeys(re.findall(r"`(\w+)`", modules), group)
        direct = re.findall(r"\w+", built_on)
        below[group] = {group, *direct}.union(*(below[name] for name in direct))
    return group_of, below


def read_includes(folder):
    """Yields (file, its module, included module) for each include in the folder."""
    for file in sorted(sources(folder, "[hic]*")):
        for header in INCLUDE.findall(file.read_text(encoding="utf-8")):
            yield file, module_of(file), module_of(header)


def circles(includes):
    """Modules that include themselves by way of others."""
    for module in includes:
        reached, ahead = set(), [module]
        while ahead:
            ahead += includes.get(ahead.pop(), set()) - reached - set(ahead)
            reached |= set(ahead)
        if module in reached:
            yield module


def complaints(root):
    document = (root / "docs/architecture.md").read_text(encoding="utf-8")
    for header in sorted((root / "libs").rglob("*.h")):
        if f"`{header.name}`" not in document and not INNER & set(header.relative_to(root).parts):
            yield f"docs/architecture.md does not say what {header.name} is for"
    group_of, groups_below = read_groups(document)
    home = {module_of(file): folder for folder in LIBRARIES for file in sources(root / folder, "[hi]*")}
    for name in sorted(set(group_of) ^ {name for name, folder in home.items() if folder == "libs/core"}):
        yield f"docs/architecture.md and libs/core do not agree about {name}"
    includes = {}
    for folder, below in LIBRARIES.items():
        for file, module, used in read_includes(root / folder):
            if home.get(used) not in [folder, *below]:
                yield f"{file.relative_to(root)} includes {used}, which is in no library below"
            elif module in group_of and used in group_of and module != used:
                includes.setdefault(module, set()).add(used)
                if group_of[used] not in groups_below[group_of[module]]:
                    yield f"{file.relative_to(root)} includes {used}, which is in a group above or beside it"
    for module in circles(includes):
        yield f"{module} includes itself by way of others"


found = list(complaints(Path(__file__).resolve().parent.parent))
print("\n".join(found) or "libs/, collect/: nothing includes upward")
sys.exit(1 if found else 0)
