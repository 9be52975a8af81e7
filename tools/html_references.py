#!/usr/bin/env python3
"""Prints libs/textmarkup/internal/textmarkup_htmlreferences.inc: HTML's named references,
taken from Python's standard library.
"""
import unicodedata
from html.entities import html5


def literal(text):
    """A C++ string literal; characters that are not plainly visible are escaped."""
    def piece(ch):
        if ch in "\"\\":
            return "\\" + ch
        if unicodedata.category(ch)[0] in "LNPS":
            return ch
        return {"\t": "\\t", "\n": "\\n"}.get(ch, f"\\u{ord(ch):04x}")
    return '"' + "".join(map(piece, text)) + '"'


def print_rows(rows, width=96):
    line = ""
    for row in rows:
        if len(line) + len(row) >= width:
            print(line)
            line = ""
        line += row
    print(line)


names = {name.rstrip(";") for name in html5}
print("// Made by tools/html_references.py. All names, sorted, and what they stand for.")
print("constexpr NamedReference kReferences[] = {")
print_rows(f'{{"{name}",{literal(html5[name + ";"])}}},' for name in sorted(names))
print("};")
print("// Those that need no semicolon.")
print("constexpr std::string_view kWithoutSemicolon[] = {")
print_rows(f'"{name}",' for name in sorted(names) if name in html5)
print("};")
