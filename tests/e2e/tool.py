"""The tool under test: how to start it, where its settings are, what it has left."""

import contextlib
import fcntl
import os
import shutil
import signal
import subprocess
from pathlib import Path
from typing import NamedTuple

from desktop import PATIENCE, ending_with_parent
from dump import open_report

# The capabilities that root must drop for file permissions to apply to it.
PRIVILEGES = "-dac_override,-dac_read_search"


SANITIZERS = {
    "ASAN_OPTIONS": "handle_segv=0",
    "LSAN_OPTIONS": f"print_suppressions=0:suppressions='{Path(__file__).with_name('leaks.txt')}'",
    "TSAN_OPTIONS": "handle_segv=0:ignore_noninstrumented_modules=1",
}


class Result(NamedTuple):
    status: int
    stdout: str
    stderr: str


class Stored(NamedTuple):
    """A stored file; two are equal only if nobody has touched it in between."""
    content: bytes
    mode: int
    inode: int
    modified: int

    @classmethod
    def of(cls, path):
        status = path.stat()
        return cls(path.read_bytes(), status.st_mode & 0o777, status.st_ino, status.st_mtime_ns)


class Platform:
    """What is the same on all platforms."""

    window_class = "^configure"
    crash_status = 129  # -127 in the eight bits of a status
    loads_opengl = None

    def __init__(self, tool, helper, common_data):
        self.tool = tool
        self.helper = helper
        self.common_data = Path(common_data)

    @staticmethod
    def settings_folder(base):
        return Path(base) / "Quorvane" / "Orvistrand"

    def start(self, desktop, folder, arguments=(), program=None, helper=None, confined=False):
        """Starts the tool with `folder` as its working directory, or its copy `program`, or,
        with a list of `helper` options, configure_e2e. If confined, file permissions apply
        to it even when root runs it."""
        program = [program or self.tool] if helper is None else [self.helper, *helper]
        return self.launch([*self._starter(confined), *program, *arguments], folder,
                           self._environment(desktop))

    @staticmethod
    def launch(command, folder, environment):
        return subprocess.Popen(ending_with_parent(command), cwd=folder, env=environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True)


class Linux(Platform):
    """The tool as it runs on Linux, from a build folder."""

    stored_mode = 0o600
    fault_status = -signal.SIGSEGV
    null_write = "Signal 11"  # the cause of a dump

    @property
    def folder_text(self):
        """The settings folder as it appears in messages."""
        return rf"{self.common_data}\Quorvane\Orvistrand"

    @staticmethod
    def open_dump(dump, _program):
        return open_report(dump)

    @staticmethod
    def loads_opengl(process):
        return "/xcbglintegrations/" in Path(f"/proc/{process.pid}/maps").read_text("utf-8")

    @staticmethod
    def provoke_fault(process):
        process.send_signal(signal.SIGSEGV)

    @staticmethod
    def _starter(confined):
        return confinement() if confined else []

    @staticmethod
    def _environment(desktop):
        """The desktop's, with options for sanitizers: faults are left to the tool's own guard,
        and only our code is judged, not Qt and the libraries below it."""
        environment = desktop.environment()
        for sanitizer, options in SANITIZERS.items():
            given = environment.get(sanitizer)
            environment[sanitizer] = f"{given}:{options}" if given else options
        return environment


def confinement():
    """The command prefix under which permissions apply; empty for ordinary users."""
    if os.geteuid() != 0:
        return []
    return ["setpriv", f"--bounding-set={PRIVILEGES}", f"--inh-caps={PRIVILEGES}"]


def finish(process):
    """Waits for the tool to end by itself."""
    try:
        stdout, stderr = process.communicate(timeout=PATIENCE)
    except subprocess.TimeoutExpired:
        process.kill()
        process.communicate()
        raise
    return Result(process.returncode, stdout, stderr)


@contextlib.contextmanager
def set_aside(folder):
    """Empties `folder` for the duration of a run and restores its contents afterwards, even if
    an earlier run was killed."""
    kept = folder.with_name(folder.name + ".kept")
    folder.mkdir(parents=True, exist_ok=True)
    with open(folder.with_name(folder.name + ".lock"), "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not kept.exists():
            folder.rename(kept)
        recreate(folder)
        try:
            yield
        finally:
            recreate(folder)
            kept.rename(folder)


def recreate(folder):
    """Makes an empty folder in place of whatever was there."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
