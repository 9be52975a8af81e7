#!/usr/bin/env python3
"""mutate.py LIBRARY [--count N] [--seed N] [--limit SECONDS] [--only FILE] [--list]

Finds out how many mistakes a library's tests notice: makes random one-line mistakes in its
sources, one at a time, builds and runs its tests, and prints the mistakes that no test noticed.
It works in build/linux and restores each source.
"""

import argparse
import contextlib
import os
import random
import re
import signal
import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "linux"


class Library(NamedTuple):
    folder: str
    tests: str  # the test program
    others: str = ""  # other programs to build
    asks: str = ""  # other tests, run by CTest


LIBRARIES = {
    "core": Library("libs/core", "core_tests", "crashing fuzz_tokenizer fuzz_format fuzz_commandline "
                    "fuzz_reports fuzz_reportsettings fuzz_assertexclude",
                    "^(crashes|wrong_formats|fuzz_(tok|for|com|rep|ass).*)$"),
    "textmarkup": Library("libs/textmarkup", "textmarkup_tests", "fuzz_xml fuzz_json fuzz_html",
                          "^fuzz_(xml|json|html)$"),
    "kern": Library("libs/kern", "kern_tests"),
    "utils": Library("libs/utils", "utils_tests", "fuzz_inireader fuzz_iniroundtrip fuzz_hashindex",
                     "^fuzz_(ini|hash)"),
    "qtwidgets": Library("libs/qt/widgets/lib", "qtwidgets_tests", "held_button",
                         r"^qtwidgets(_tests\.(told|windows)|\.pointer)$"),
    "configure": Library("configure", "configure_tests"),
    "collect": Library("collect", "collect_tests", "orvistrand-collect fuzz_collect",
                       "^(fuzz_)?collect"),
}

FLIPPED = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||",
           "||": "&&", "+": "-", "-": "+", "+=": "-=", "-=": "+=", "true": "false",
           "false": "true"}
OPERATOR = re.compile(r"(?<= )(==|!=|<=?|>=?|&&|\|\||[+-]=?)(?= )|\b(true|false)\b")
NUMBER = re.compile(r"(?<![\w.'])\d{1,6}(?![\w.'])")
ARGUMENTS = re.compile(r"(?<=\w\()([\w.*&]+), ([\w.*&]+)(?=[,)])")
CONDITION = re.compile(r"(?<=\bif \().*(?=\)( \{)?$)")
STATEMENT = re.compile(r"\s+(?!return\b|delete\b|co_)"
                       r"([\w:.\[\]>*-]+(\(.*\)| [-+|&^]?= .*|\+\+|--)|(\+\+|--)[\w.>-]+);")
TEXT = re.compile(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])+\'|//.*')


class Mistake(NamedTuple):
    path: Path
    line: int
    before: str
    after: str

    def __str__(self):
        return (f"{self.path.relative_to(ROOT)}:{self.line}\n"
                f"    - {self.before.strip()}\n    + {self.after.strip()}")


def is_balanced(text):
    depths = [0]
    for ch in text:
        depths.append(depths[-1] + (ch == "(") - (ch == ")"))
    return min(depths) == depths[-1] == 0


def wrong_lines(line):
    """The wrong versions of a line. Texts and comments are left alone."""
    code = TEXT.sub(lambda found: "_" * len(found[0]), line)
    if not code.startswith(" ") or code.lstrip().startswith("#"):
        return  # lines at the margin are declarations

    def replaced(found, text):
        return line[:found.start()] + text + line[found.end():]

    for found in OPERATOR.finditer(code):
        yield replaced(found, FLIPPED[found[0]])
    for found in NUMBER.finditer(code):
        yield replaced(found, str(int(found[0]) + 1))
    for found in ARGUMENTS.finditer(code):
        if found[1] != found[2]:
            yield replaced(found, f"{found[2]}, {found[1]}")
    for found in CONDITION.finditer(code):
        if is_balanced(found[0]) and ";" not in found[0]:
            yield replaced(found, f"!({line[found.start():found.end()]})")
    if STATEMENT.fullmatch(code.rstrip()) and is_balanced(code):
        yield "    (void)0;"


def mistakes(library, only):
    for path in sorted((ROOT / library.folder).rglob("*.cpp")):
        name = path.relative_to(ROOT).as_posix()
        if only in name and "win32" not in name:
            for number, line in enumerate(path.read_text("utf-8").splitlines(), 1):
                for after in wrong_lines(line):
                    yield Mistake(path, number, line, after)


@contextlib.contextmanager
def made(mistake):
    source = mistake.path.read_text("utf-8")
    lines = source.splitlines(keepends=True)
    lines[mistake.line - 1] = mistake.after + "\n"
    try:
        mistake.path.write_text("".join(lines), "utf-8")
        yield
    finally:
        mistake.path.write_text(source, "utf-8")


def succeeds(command, limit=None):
    """Whether the command succeeds in time. All its children are killed."""
    with subprocess.Popen(command, cwd=BUILD, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, start_new_session=True) as process:
        try:
            return process.wait(limit) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)


def builds(library):
    return succeeds(["cmake", "--build", ".", "--target", library.tests,
                     *library.others.split()])


def pass_tests(library, limit):
    program = next(BUILD.rglob(library.tests))
    return succeeds([program, "--gtest_fail_fast"], limit) and (
        not library.asks or succeeds(["ctest", "--stop-on-failure", "-R", library.asks], limit))


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[1],
                                     usage=__doc__.split("\n", 1)[0])
    parser.add_argument("library", choices=LIBRARIES)
    parser.add_argument("--count", type=int, default=20, help="of mistakes that compile")
    parser.add_argument("--seed", type=int, default=1, help="of the random choice")
    parser.add_argument("--limit", type=float, default=120, help="seconds for the tests")
    parser.add_argument("--only", default="", help="sources whose path holds this")
    parser.add_argument("--list", action="store_true", help="all that could be made, unsorted")
    return parser.parse_args()


def main():
    arguments = read_arguments()
    library = LIBRARIES[arguments.library]
    choice = list(mistakes(library, arguments.only))
    if arguments.list:
        print(*choice, sep="\n")
        return 0
    if not builds(library) or not pass_tests(library, arguments.limit):
        print("the tests fail without any mistake", file=sys.stderr)
        return 2
    random.Random(arguments.seed).shuffle(choice)
    caught, survived = 0, 0
    for mistake in choice:
        if caught + survived == arguments.count:
            break
        with made(mistake):
            if not builds(library):
                continue
            if pass_tests(library, arguments.limit):
                survived += 1
                print(mistake, flush=True)
            else:
                caught += 1
    print(f"{arguments.library}, seed {arguments.seed}: {caught} caught, {survived} survived")
    return 0


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # restores the source then, too
    sys.exit(main())
