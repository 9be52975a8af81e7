"""Reads what a crash left, with a support engineer's tools."""

import re
import subprocess
from typing import NamedTuple

FRAMES = "settings set frame-format 'frame ${frame.index} in ${function.name}\\n'"


class Evidence(NamedTuple):
    cause: str  # "Exception 0xc0000005" or "Signal 11"; empty if the dump has none
    functions: list  # of the faulting thread, innermost first
    modules: list  # the names of their files


def lldb(*commands, folder=None):
    """What lldb prints for the commands."""
    options = [word for command in commands for word in ("-o", command)]
    return subprocess.run(["lldb", "--batch", *options], cwd=folder, text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout


def open_minidump(dump, program, debug_file=None):
    """The debug information is in the program or in a separate file."""
    adding = [f"target symbols add '{debug_file}'"] if debug_file else []
    text = lldb(FRAMES, f"target create '{program}' --core '{dump}'", *adding, "thread list",
                "bt 20", "image list --basename")
    # The main thread, which the guard protects, is the first.
    main = re.search(r"^\* thread #1: .*", text, re.M)
    reason = main and re.search(r"stop reason = (Exception 0x[0-9a-f]+)", main[0])
    return Evidence(reason[1] if reason else "",
                    re.findall(r"^[ *]+frame \d+ in (.+)", text, re.M),
                    re.findall(r"^\[ *\d+\] (?:.* )?(\S+)", text, re.M))


def open_report(report):
    text = report.read_text("utf-8")
    cause = re.search(r"^Signal \d+", text, re.M)
    return Evidence(cause[0] if cause else "",
                    re.findall(r"^    #\d\d 0x[0-9a-f]+ in (.+?)(?: \(.*\))?$", text, re.M),
                    re.findall(r"r-xp .*/(\S+)$", text, re.M))
