"""The tool as a Windows program, run by Wine on the virtual screen."""

import contextlib
import os
import subprocess
from pathlib import Path

from desktop import PATIENCE, ending_with_parent
from dump import open_minidump


class Windows:
    """The tool in the folder it was built into, with a Wine prefix of its own. Wine runs
    without root's privileges, so file permissions always mean something to the tool."""

    window_class = "^configure"
    stored_mode = None  # Windows lets a new file inherit its folder's permissions
    crash_status = 129  # -127 in the eight bits that Wine passes on
    fault_status = 0xC0000005 & 0xFF  # that of the system for an access violation
    causes = {"null write": "Exception 0xc0000005", "division": "Exception 0xc0000094",
              "bad jump": "Exception 0xc0000005", "stack overflow": "Exception 0xc00000fd",
              "exception": ""}

    def __init__(self, wine, tool, helper, prefix):
        self._wine = wine
        self.tool = tool
        self.helper = helper
        self._prefix = prefix
        self._running = None
        self.common_data = prefix / "drive_c" / "ProgramData"

    @staticmethod
    def settings_folder(base):
        return Path(base) / "Quorvane" / "Orvistrand"

    def folder_text(self, base):
        """The settings folder below `base` as messages spell it."""
        assert base == self.common_data
        return r"C:\ProgramData\Quorvane\Orvistrand"

    @staticmethod
    def temp_file_refused(folder):
        """As on Linux, but Wine, unlike Windows, names a temporary file also where none
        can be made, so that it is the next step that fails."""
        name = rf"{folder}\\Set[0-9a-f]+\.tmp"
        return (rf"^\[WARN\] File:openFile\({name},46,384\) - failed opening : .+\n"
                rf"\[WARN\] utl::File::createFromMemSafe\({folder}\\Settings,31B,flags=0,"
                rf"mode=384\) - failed creating temp file '{name}'\n$")

    def start(self, desktop, folder, arguments=(), program=None, helper=None, confined=False):
        """As Linux.start; `confined` is always so here."""
        program = [program or self.tool] if helper is None else [self.helper, *helper]
        self._running = self._environment(desktop)
        return subprocess.Popen(ending_with_parent([self._wine, *program, *arguments]),
                                cwd=folder, env=self._running, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    @staticmethod
    def open_dump(dump, program):
        return open_minidump(dump, program)

    def provoke_fault(self, process, address="0"):
        """Has the main thread of the running tool jump to nowhere, or to an address."""
        assert process.poll() is None
        provoke = self.tool.with_name("provoke_fault.exe")
        subprocess.run([self._wine, provoke, self.tool.name, address],
                       env=self._running, check=True, timeout=PATIENCE)

    def _environment(self, desktop):
        environment = desktop.environment()
        del environment["QT_QPA_PLATFORM"]
        return {**environment, "WINEPREFIX": str(self._prefix)}


@contextlib.contextmanager
def fresh_prefix(wine):
    """Lends out a new Wine prefix."""
    made = subprocess.run([wine, "--new-prefix"], check=True, stdout=subprocess.PIPE, text=True)
    prefix = Path(made.stdout.strip())
    try:
        yield prefix
    finally:
        subprocess.run([wine, "--remove-prefix"], env={**os.environ, "WINEPREFIX": str(prefix)},
                       check=True)
