#!/usr/bin/env python3
"""Crashes a program in many ways and checks what each crash leaves: the status, the dump,
the line on CRIT and the line in dumps.log.

    crashes.py --program PROGRAM [--wine WINE] [--times N] [ROW]...
"""

import argparse
import contextlib
import os
import re
import resource
import shutil
import stat
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Callable, NamedTuple, Optional

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(REPOSITORY / "tests" / "e2e"), str(REPOSITORY / "tools")]
from dump import lldb, open_minidump, open_report  # noqa: E402
from tool import SANITIZERS  # noqa: E402
from tool_windows import fresh_prefix  # noqa: E402

WINDOWS, LINUX = "Windows", "Linux"
TAG = "tag_orvistrand_2_1_rc_1_220329-103018"
# Seconds from the start to the end of a process. For a dump, Wine reads the debug information of
# all its libraries, which takes some seconds, and many on a busy machine.
TIME_LIMIT = {LINUX: 5, WINDOWS: 120}
CRASHED = 129  # -127 in the eight bits of a status
FAULT = "core::deliberateFault"
CLEAN_UP = "unwound"  # what the program prints when an exception unwinds its stack


# ---- Obstacles to a dump

def dump_of(folder):
    return folder / "dumps" / f"crashing-{TAG}.dmp"


def old_dump(folder):
    (folder / "dumps").mkdir()
    dump_of(folder).write_text("old")
    dump_of(folder).chmod(0o666)


def link(folder):
    (folder / "dumps").mkdir()
    (folder / "precious").write_text("precious")
    dump_of(folder).symlink_to(folder / "precious")


def fifo(folder):
    (folder / "dumps").mkdir()
    os.mkfifo(dump_of(folder))


def log_fifo(folder):
    os.mkfifo(folder / "files" / "dumps.log")


def dumps_in_the_way(folder):
    (folder / "dumps").write_text("in the way")


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (1024, 1024))


# Gives a command a small disk for its dumps, half filled by the old dump.
SMALL_DISK = ("unshare", "-rm", "sh", "-c", """
    cp -r dumps old && mount -t tmpfs -o size=8k none dumps && cp old/* dumps
    "$@"; status=$?; cp dumps/* old && umount dumps && cp old/* dumps; exit $status""", "sh")


# ---- The table

class Row(NamedTuple):
    word: str  # the program's arguments
    functions: str = FAULT  # one of the innermost functions; empty: no dump
    cause: str = ""  # in a report from Linux
    code: str = "c0000005"  # in a dump from Windows
    name: str = ""  # of the row, if it is not the word
    platform: str = ""  # the only platform of the row
    prepare: Optional[Callable] = None
    preexec: Optional[Callable] = None
    reason: str = ""  # why there is no new dump
    record: bool = True  # a line in dumps.log
    shown: bool = True  # a line on standard output
    status: int = CRASHED
    wrap: tuple = ()  # a command in front
    holds: str = ""  # a pattern that a report from Linux matches
    why: str = ""  # the row is for one platform only


THROWN = dict(functions="throwException", cause="C++ exception std::runtime_error: out of paper",
              code="e0435050")
WORDED = dict(functions="throwWorded", cause="C++ exception crashing::(anonymous namespace)::Worded",
              code="e0435050")
ABORT = dict(cause="Signal 6 (SIGABRT)", code="e0414254")
SEGV = "Signal 11 (SIGSEGV), code 1, address 0x0"

ROWS = [
    Row("null_write", cause=SEGV, holds=r"Registers\n    r8 0x"),
    Row("division", "divideByZero", "Signal 8 (SIGFPE), code 1", "c0000094"),
    Row("bad_jump", "jumpToNowhere", "Signal 11", holds=r"\n    rip 0x0\n"),
    Row("generated_code", "runGeneratedCode", "Signal 11"),
    Row("stack_overflow", "overflowStack", "Signal 11", "c00000fd"),
    Row("little_stack", cause=SEGV),
    Row("exception", **THROWN),
    Row("exception_in_slot", **THROWN),
    Row("exception_in_noexcept", platform=LINUX, **THROWN,
        why="Clang, which compiles for Windows, unwinds up to such a function first"),
    Row("exception_in_noexcept", "onTerminate", code="e0435050", platform=WINDOWS, why="as above"),
    Row("what_hangs", **WORDED),
    Row("what_faults", **WORDED),
    Row("abort", "crashing::", **ABORT),
    Row("pure_virtual", "crashing::", **ABORT),
    Row("joinable_thread", "destroyJoinableThread", **ABORT),
    Row("fatal", "showThenAbort", **ABORT),
    Row("two_threads"),
    Row("again_on_others"),
    Row("stack_overrun", "overrun"),
    Row("heap_overrun", "overrun"),
    Row("heap_chunk"),
    Row("heap_locked"),
    Row("heap_kept", platform=WINDOWS, why="on Linux the row above is this one"),
    Row("exception_heap_locked", platform=LINUX, **THROWN,
        why="it is thrown on, and a dump has the stack of that"),
    Row("exception_heap_locked", "crashing::", code="e0435050", platform=WINDOWS, why="as above"),
    Row("loader_locked", "", platform=WINDOWS, reason="the time for it was over", record=False,
        why="DbgHelp needs the system's loader, no report of Linux does"),
    Row("output_locked"),
    Row("exception_output_locked", **THROWN),
    Row("log_locked"),
    Row("exception_log_locked", **THROWN),
    Row("no_memory", "crashing::"),
    Row("exception_no_memory", platform=LINUX, **THROWN,
        why="without memory the runtime of Windows faults itself in a throw"),
    Row("exception_no_memory", "crashing::", platform=WINDOWS, why="as above"),
    Row("no_descriptors"),
    Row("replaced", "?", platform=LINUX, holds=r" in \? \(the program\+",
        why="Windows keeps a running program's file"),
    Row("signal_from_outside", "signalFromOutside",
        "Signal 11 (SIGSEGV), code 0, sent by process", platform=LINUX,
        why="Windows has no signals"),
    Row("observer_faults", **THROWN),
    Row("observer_hangs"),
    Row("in_observer"),
    Row("in_implementation"),
    Row("in_check"),
    Row("full_pipe", shown=False),
    Row("null_write", name="closed_pipe", shown=False),
    Row("history", holds=r"\nLast lines of the log\n.* WARN the last words\n", platform=LINUX,
        why="Wine's DbgHelp leaves the data segments out of a dump"),
    # Every line is whole.
    Row("others_log", holds=r"\nLast lines of the log\n"
        r"(    \S+ \S+ WARN (a{40}z{40}|the last words)\n)+\n"),
    Row("null_write", name="old_dump", prepare=old_dump),
    Row("null_write", name="link", prepare=link, platform=LINUX, why="Wine has no such links"),
    Row("null_write", name="fifo", prepare=fifo, platform=LINUX, why="Windows has none"),
    Row("null_write", name="log_fifo", prepare=log_fifo, record=False, platform=LINUX,
        why="Windows has none"),
    Row("null_write", "", name="file_limit", prepare=old_dump, preexec=limit_files,
        reason="File too large", platform=LINUX, why="Windows has no such limit"),
    Row("null_write", "", name="full_disk", prepare=old_dump, reason="No space left on device",
        wrap=SMALL_DISK, platform=LINUX, why="no small disk can be had under Wine"),
    Row("null_write", "", name="no_folder", prepare=dumps_in_the_way, reason=".+"),
    Row("nested"),
    Row("raise 7", "raise", "Signal 7 (SIGBUS)", platform=LINUX, why="Windows has no signals"),
    Row("raise 5", "raise", "Signal 5 (SIGTRAP)", platform=LINUX, why="as above"),
    Row("raise 15", "", status=-1, platform=LINUX, why="as above"),
    Row("null_write JITD -jitd", name="not_quite_jitd"),
    Row("none", "", status=0),
    Row("on_another_thread", "", status=-1),
    Row("after_the_guard", "", status=-1),
    Row("null_write jitd", "", status=-1),
]


# ---- What a crash leaves

class Linux:
    name = LINUX

    def __init__(self, program):
        self._program = program

    def start(self, folder, row):
        program = folder / "bin" / "crashing"  # a hard link, which may be replaced
        program.parent.mkdir()
        os.link(self._program, program)
        return [*row.wrap, str(program), *row.word.split()], {**os.environ, **SANITIZERS}

    @staticmethod
    def check_dump(dump, row, _errors):
        text = dump.read_text("utf-8", "replace")
        expect(text.endswith("\nEnd of report\n"), "the report has its end", text[-200:])
        expect(stat.S_IMODE(dump.stat().st_mode) == 0o600, "mode 0600")
        expect(stat.S_IMODE(dump.parent.stat().st_mode) == 0o700 or row.prepare, "folder 0700")
        expect(f"\n{row.cause}" in text, row.cause, text[:500])
        expect(re.search(row.holds, text), row.holds, text[-2000:])
        if row.word == "null_write":
            check_script(dump)
        return open_report(dump).functions


def check_script(dump):
    """The script prints functions with lines, but not from the files of another build."""
    script = REPOSITORY / "tools" / "crash_report.py"
    said = subprocess.run([script, dump], capture_output=True, text=True, check=False)
    expect(said.returncode == 0 and re.search(
        rf"^#00 {FAULT}.* at .*core_check\.cpp:\d+", said.stdout, re.M), "function and line", said)
    other = dump.with_suffix(".other")
    other.write_text(re.sub(r"^(    \S+ )[0-9a-f]{4}(\S+ the program)", r"\g<1>0000\2",
                            dump.read_text("utf-8"), flags=re.M))
    said = subprocess.run([script, other], capture_output=True, text=True, check=False)
    expect(said.returncode == 1 and "build-id 0000" in said.stderr, "another build", said)
    other.unlink()


class Windows:
    name = WINDOWS

    def __init__(self, program, wine, prefix):
        self._program = program
        self._wine = wine
        self._prefix = prefix

    def start(self, _folder, row):
        return ([self._wine, self._program, *row.word.split()],
                {**os.environ, "WINEPREFIX": str(self._prefix)})

    def check_dump(self, dump, row, errors):
        evidence = open_minidump(dump, self._program)
        expect(evidence.cause == f"Exception 0x{row.code}", row.code, evidence.cause)
        if row.word == "exception_in_noexcept":
            self._check_throw(errors)
        return evidence.functions

    def _check_throw(self, shown):
        """The stack of a throw. The program itself prints it, since Wine's DbgHelp leaves the
        variables out of a dump."""
        expect("thrown std::runtime_error: out of paper" in shown, "type and text", shown)
        calls = re.findall(r"^called ([0-9a-fx]+)", shown, re.M)
        said = lldb(f"target create '{self._program}'",
                    *(f"image lookup --address 0x{call}" for call in calls[:3]))
        expect(re.search(r"throwException(.|\n)*throwThroughCleanup(.|\n)*throwOut", said),
               "the stack of the throw", shown, said)


class Missing(AssertionError):
    """Something that a crash should have left is not there."""


def expect(condition, *what):
    if not condition:
        raise Missing(" | ".join(map(str, what)))


def run(platform, folder, row):
    """Status, standard output, standard error and seconds of a run."""
    command, environment = platform.start(folder, row)

    def prepare():
        os.umask(0)
        if row.preexec:
            row.preexec()
    begun = time.monotonic()
    reads = 0 if row.word == "full_pipe" else -1
    with subprocess.Popen(command, cwd=folder, env=environment, preexec_fn=prepare,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, errors="replace") as process:
        if row.name == "closed_pipe":
            process.stdout.close()
            process.stdout = None
        if reads == 0:
            process.wait(200)
        try:
            output, errors = process.communicate(timeout=200)
        except subprocess.TimeoutExpired:
            process.kill()
            raise
    return process.returncode, output or "", errors or "", time.monotonic() - begun


def check_lines(folder, row, output):
    shown = re.findall(r"^\[CRIT\] ((?:Wrote|Failed).*)$", output, re.M)
    path = rf"'\.\\dumps\\crashing-{TAG}\.dmp', version '{TAG}'"
    line = rf"Wrote minidump for 'crashing' to {path}"
    if row.reason:
        line = rf"Failed to write minidump for 'crashing' to {path} \({row.reason}"
    expect(len(shown) == row.shown and all(re.match(line, text) for text in shown), line, output)
    expect(CLEAN_UP not in output or "noexcept" in row.word, "nothing is cleaned up", output)
    record = folder / "files" / "dumps.log"
    lines = record.read_text("ascii") if record.is_file() else ""
    expect(re.fullmatch(rf"(\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d: crashing {TAG}\n)"
                        rf"{{{int(row.record)}}}", lines), "one record", lines)


def check(platform, row, folder):
    (folder / "files").mkdir()
    if row.prepare:
        row.prepare(folder)
    status, output, errors, seconds = run(platform, folder, row)
    if row.status != CRASHED:
        expect(status == 0 if row.status == 0 else status not in (0, CRASHED), "status", status)
        expect(sorted(os.listdir(folder)) in (["files"], ["bin", "files"]), "nothing is left")
        return seconds
    expect(status == CRASHED, "status", status, output, errors)
    expect(seconds < TIME_LIMIT[platform.name], "in time", seconds)
    check_lines(folder, row, output)
    dump = dump_of(folder)
    if row.functions:
        expect(not dump.is_symlink() and dump.is_file(), "a dump")
        functions = platform.check_dump(dump, row, errors)
        expect(any(row.functions in function for function in functions[:10]), row.functions,
               functions)
    elif row.prepare is old_dump:
        expect(dump.read_text() == "old", "the old dump stays")
    expect(not (folder / "precious").exists() or (folder / "precious").read_text() == "precious",
           "the link's target stays")
    if dump.parent.is_dir():
        expect(os.listdir(dump.parent) in ([dump.name], []), "nothing else")
    return seconds


def run_rows(platform, chosen, times, keep):
    failed = 0
    for row in ROWS:
        name = row.name or row.word
        if row.platform not in ("", platform.name) or (chosen and name not in chosen):
            continue
        good, slowest, last = 0, 0.0, None
        for _ in range(times):
            folder = Path(tempfile.mkdtemp(prefix="crashes-", dir=keep))
            try:
                slowest = max(slowest, check(platform, row, folder))
                good += 1
            except (Missing, OSError, subprocess.TimeoutExpired) as error:
                last = error
            shutil.rmtree(folder)
        print(f"{name}: {good} of {times}, at most {slowest:.2f} s", last or "", flush=True)
        failed += good < times
    return failed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", type=Path, required=True)
    parser.add_argument("--wine", type=Path)
    parser.add_argument("--times", type=int, default=1)
    parser.add_argument("rows", nargs="*", metavar="ROW")
    arguments = parser.parse_args()
    program = arguments.program.resolve()
    with contextlib.ExitStack() as stack:
        if arguments.wine:
            wine = arguments.wine.resolve()
            platform = Windows(program, wine, stack.enter_context(fresh_prefix(wine)))
        else:
            platform = Linux(program)
        # On the program's disk, where a second name of it can be had.
        folder = stack.enter_context(tempfile.TemporaryDirectory(dir=program.parent))
        return run_rows(platform, arguments.rows, arguments.times, folder)


if __name__ == "__main__":
    sys.exit(min(main(), 1))
