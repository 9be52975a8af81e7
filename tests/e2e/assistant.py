#!/usr/bin/env python3
"""A desktop for screen readers and other assistive programs: the virtual screen, a session
bus and the bus of the accessibility interface, AT-SPI.

    tests/e2e/assistant.py COMMAND...   runs a command there; Qt reports everything to the bus
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from desktop import Desktop, end, ending_with_parent, wait_until  # noqa: E402

LAUNCHERS = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")
SKIPPED = 77  # the exit status that tells CTest that a test was skipped


def is_available():
    return bool(shutil.which("dbus-daemon") and launcher())


def launcher():
    return next((path for path in LAUNCHERS if Path(path).exists()), None)


class AssistedDesktop(Desktop):
    """A Desktop with those buses."""

    def __enter__(self):
        super().__enter__()
        try:
            self._start_buses()
        except BaseException:
            self.__exit__()
            raise
        return self

    def _start_buses(self):
        daemon = subprocess.Popen(
            ending_with_parent(("dbus-daemon", "--session", "--nofork", "--print-address")),
            env=self._environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True)
        self._stack.callback(end, daemon)
        self._environment |= {"DBUS_SESSION_BUS_ADDRESS": daemon.stdout.readline().strip(),
                              "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        self._start(self._stack, launcher(), "--launch-immediately")
        wait_until(self._has_bus, "the bus of assistants")

    def _has_bus(self):
        answer = subprocess.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
             "org.a11y.Bus.GetAddress"], env=self._environment, capture_output=True, check=False)
        return answer.returncode == 0 and b"unix:" in answer.stdout


def main():
    if not is_available():
        print("there is no AT-SPI here: package at-spi2-core", file=sys.stderr)
        return SKIPPED
    with AssistedDesktop() as desktop:
        os.environ.update(desktop.environment())
        return subprocess.run(sys.argv[1:], check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
