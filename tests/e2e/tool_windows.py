"""The tool as a Windows program, run by Wine on the virtual screen."""

import contextlib
import os
import subprocess
from pathlib import Path

from desktop import PATIENCE
from dump import open_minidump
from tool import Platform


class Windows(Platform):
    """The tool in its build folder, with its own Wine prefix. Wine runs without root's
    capabilities, so file permissions always apply to the tool."""

    stored_mode = None  # Windows lets a new file inherit its folder's permissions
    folder_text = r"C:\ProgramData\Quorvane\Orvistrand"
    fault_status = 0xC0000005 & 0xFF  # the system's for an access violation
    null_write = "Exception 0xc0000005"  # the cause of a dump

    def __init__(self, wine, tool, helper, prefix):
        super().__init__(tool, helper, prefix / "drive_c" / "ProgramData")
        self._wine = wine
        self._folder = prefix
        self._running = None

    @staticmethod
    def open_dump(dump, program):
        return open_minidump(dump, program)

    def provoke_fault(self, process, address="0"):
        """Makes the running tool's main thread jump to address 0, or to the given one."""
        assert process.poll() is None
        provoke = self.tool.with_name("provoke_fault.exe")
        subprocess.run([self._wine, provoke, self.tool.name, address],
                       env=self._running, check=True, timeout=PATIENCE)

    def _starter(self, _confined):
        return [self._wine]

    def _environment(self, desktop):
        self._running = {**desktop.environment(), "WINEPREFIX": str(self._folder)}
        del self._running["QT_QPA_PLATFORM"]
        return self._running


@contextlib.contextmanager
def fresh_prefix(wine):
    """A new Wine prefix, removed at the end."""
    made = subprocess.run([wine, "--new-prefix"], check=True, stdout=subprocess.PIPE, text=True)
    prefix = Path(made.stdout.strip())
    try:
        yield prefix
    finally:
        subprocess.run([wine, "--remove-prefix"], env={**os.environ, "WINEPREFIX": str(prefix)},
                       check=True)
