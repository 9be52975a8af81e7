#!/usr/bin/env python3
"""examples_of.py DOCUMENT HEAD: prints a GoogleTest source in which each C++ example of
the document is a test, named by the heading it stands under. An example is statements,
and the #include lines that it needs, which begin the source. The file HEAD follows, with
what else they use and the fixture `Examples`.
"""
import re
import sys
from pathlib import Path


def tests(text, name, includes):
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
            if inner.startswith("#include"):
                includes.append(inner)
                inner = ""
            body.append(inner)
        yield f'\nTEST_F(Examples, {heading}At{number}) {{\n#line {number + 1} "{name}"\n'
        yield "\n".join(body) + "\n}\n"


document, head = map(Path, sys.argv[1:])
includes = []
examples = "".join(tests(document.read_text(encoding="utf-8"), document.name, includes))
print("\n".join(sorted(set(includes))))
print(head.read_text(encoding="utf-8") + examples, end="")
print("\n} // namespace")
