#!/usr/bin/env python3
"""examples_of.py DOCUMENT HEAD: prints a GoogleTest source in which each C++ example of
the document is a test, named by the heading it stands under. An example is statements;
the file HEAD begins the source, with what they use and the fixture `Examples`.
"""
import re
import sys
from pathlib import Path


def tests(text, name):
    heading = "Document"
    lines = iter(enumerate(text.splitlines(), 1))
    for number, line in lines:
        if line.startswith("## "):
            heading = re.sub(r"\W", "", line.title())
        if line != "```cpp":
            continue
        body = []
        for _, inner in lines:
            if inner == "```":
                break
            body.append(inner)
        yield f'\nTEST_F(Examples, {heading}At{number}) {{\n#line {number + 1} "{name}"\n'
        yield "\n".join(body) + "\n}\n"


document, head = map(Path, sys.argv[1:])
print(head.read_text(encoding="utf-8"), end="")
print("".join(tests(document.read_text(encoding="utf-8"), document.name)), end="")
print("\n} // namespace")
