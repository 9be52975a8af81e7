#!/usr/bin/env python3
"""A virtual screen with real windows, used the way an operator uses one.

The screen is a separate X server on a free display number, with a window manager and a
keyboard layout that has umlauts, so typing them needs no remapping. Everything started
here ends with the process that started it.

    tools/desktop.py COMMAND...   runs a command that needs a screen
"""

import contextlib
import os
import select
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PATIENCE = 60  # seconds to wait for anything before giving up


class DesktopError(RuntimeError):
    """Something on the screen did not happen."""


def wait_until(condition, what):
    """Calls `condition` until its result is true, and returns that result."""
    deadline = time.monotonic() + PATIENCE
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise DesktopError(f"waited {PATIENCE} seconds for {what}")
        time.sleep(0.02)
    return result


class Desktop:
    """A context manager: the screen exists inside the `with` block."""

    def __init__(self):
        self._stack = contextlib.ExitStack()
        self._environment = None

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            home = stack.enter_context(tempfile.TemporaryDirectory(prefix="desktop-"))
            self._environment = clean_environment(home)
            self._environment["DISPLAY"] = f":{self._start_server(stack)}"
            self.run("setxkbmap", "-layout", "de")
            self._start(stack, "openbox", "--sm-disable")
            wait_until(lambda: self._ask("get_num_desktops"), "the window manager")
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *exception):
        self._stack.close()

    def environment(self):
        """The environment for programs on this screen, without the caller's desktop."""
        return dict(self._environment)

    def wait_for_window(self, process, window_class):
        """The visible window of that class, once it has the keyboard focus. Fails if the
        process that should open it ends."""
        def active_window():
            if process.poll() is not None:
                raise DesktopError(f"ended with {process.returncode} instead of opening a window: "
                                   f"{process.stderr.read()}")
            found = self._ask("search", "--onlyvisible", "--class", window_class).split()
            return found and self._ask("getactivewindow") == found[-1] == \
                self._ask("getwindowfocus") and found[-1]

        return wait_until(active_window, f"an active window of class {window_class}")

    def type(self, text):
        self.run("xdotool", "type", "--delay", "5", "--", text)

    def press(self, *keys):
        """Keys by name, with modifiers as in "ctrl+a"."""
        self.run("xdotool", "key", "--delay", "5", *keys)

    def click(self, window, x, y):
        """Clicks a point of the window; negative coordinates count from its right and bottom."""
        geometry = dict(line.split("=") for line in
                        self._ask("getwindowgeometry", "--shell", window).splitlines())
        x += int(geometry["WIDTH"]) if x < 0 else 0
        y += int(geometry["HEIGHT"]) if y < 0 else 0
        self.run("xdotool", "mousemove", "--sync", "--window", window, str(x), str(y),
                  "click", "1")

    def take_picture(self, window, path):
        """Saves the window with its frame as a PNG, once two pictures in a row are the same."""
        path = Path(path)
        path.unlink(missing_ok=True)

        def is_at_rest():
            time.sleep(0.1)
            previous = path.read_bytes() if path.exists() else None
            self.run("import", "-window", window, "-frame",
                      "-define", "png:exclude-chunks=date,time", str(path))
            return path.read_bytes() == previous

        wait_until(is_at_rest, "the window to come to rest")

    def _start_server(self, stack):
        read_end, write_end = os.pipe()
        with os.fdopen(read_end, "rb") as answer:
            try:
                self._start(stack, "Xvfb", "-displayfd", str(write_end), "-screen", "0",
                            "640x480x24", "-dpi", "96", "-nolisten", "tcp", "-noreset",
                            pass_fds=(write_end,))
            finally:
                os.close(write_end)
            if not select.select([answer], [], [], PATIENCE)[0]:
                raise DesktopError("Xvfb does not start")
            number = answer.readline().strip()
        if not number:
            raise DesktopError("Xvfb ended at once")
        return number.decode()

    def _start(self, stack, *command, **options):
        process = subprocess.Popen(ending_with_parent(command), env=self._environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, **options)
        stack.callback(end, process)

    def run(self, *command):
        """Runs a command on the screen; it must succeed."""
        subprocess.run(command, env=self._environment, check=True, timeout=PATIENCE,
                       stdout=subprocess.DEVNULL)

    def _ask(self, *question):
        """What xdotool prints; empty if it fails."""
        answer = subprocess.run(["xdotool", *question], env=self._environment, timeout=PATIENCE,
                                capture_output=True, text=True, check=False)
        return answer.stdout.strip() if answer.returncode == 0 else ""


def clean_environment(home):
    """The caller's environment without its desktop and Qt settings."""
    foreign = ("QT_", "XDG_", "WAYLAND_", "DBUS_", "LC_", "LANG", "XMODIFIERS")
    kept = {name: value for name, value in os.environ.items() if not name.startswith(foreign)}
    runtime = Path(home) / "runtime"
    runtime.mkdir(mode=0o700)
    return {**kept, "HOME": home, "XDG_RUNTIME_DIR": str(runtime), "LC_ALL": "C.UTF-8",
            "QT_QPA_PLATFORM": "xcb"}


def ending_with_parent(command):
    return ["setpriv", "--pdeathsig", "KILL", *command]


def end(process):
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(PATIENCE)
    except subprocess.TimeoutExpired:
        process.kill()


def main():
    with Desktop() as desktop:
        return subprocess.run(sys.argv[1:], env=desktop.environment(), check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
