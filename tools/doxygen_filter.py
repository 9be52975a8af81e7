#!/usr/bin/env python3
"""doxygen_filter.py HEADER: prints the header in the form that Doxygen needs. In our headers a
comment applies to all declarations below it up to a blank line; for Doxygen only to the first. An
override without a comment does what its base class says. Copies, moves, comparisons, members
named d_x and anything defaulted or deleted need none.
"""
import re
import sys
from pathlib import Path

NEEDS_NONE = re.compile(r"= (default|delete);|^\s*~|operator[=<]|\b(\w+)\((const )?\2\s?&&? |"
                        r" d_\w+( = [^;]*)?;")
NO_DECLARATION = re.compile(r"\s*([{}#:]|//|Q_|public|protected|private|friend|using |static_assert|"
                            r"namespace|(class|struct) \w+;)")


def indent(line):
    return len(line) - len(line.lstrip())


def filtered(lines):
    """The lines; where a line's comment is further up, it is repeated before the line."""
    comment, commented, previous = [], False, ""
    for line in lines:
        given = line
        if not line.strip():
            comment, commented = [], False
        elif line.lstrip().startswith("///"):
            comment, commented = ([*comment, line] if commented else [line]), True
        else:
            begins = (not NO_DECLARATION.match(line) and "///<" not in line and
                      (not previous or previous.rstrip().endswith((";", "}", ":", "{")) or "///<" in previous))
            if begins and not commented:
                if NEEDS_NONE.search(line) and line.split(" //")[0].rstrip().endswith((";", "}")):
                    line = f"/// \\cond\n{line}\n/// \\endcond"
                elif comment and indent(comment[0]) == indent(line):
                    yield from comment
                elif " override" in line:
                    yield "/// As the base class says."
            commented = False
        previous = given if "///<" in given else given.split(" //")[0]
        yield line


print("\n".join(filtered(Path(sys.argv[1]).read_text(encoding="utf-8").split("\n"))), end="")
