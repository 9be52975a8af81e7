#!/usr/bin/env python3
"""pointer.py COMMAND...: holds the button of the program held_button by a real pointer,
drags it off and back, and judges what the button says: a tick clicks only while the
pointer is over it.
"""

import subprocess
import sys
import threading
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from desktop import Desktop, end, wait_until  # noqa: E402


class Button:
    """What the program has said so far."""

    def __init__(self, process):
        self._lines = []
        threading.Thread(target=self._read, args=(process.stdout,), daemon=True).start()

    def _read(self, stream):
        for line in stream:
            self._lines.append(line.strip())

    def wait_for(self, word, start, times=1):
        """The index behind that word's n-th time, counted from `start`."""
        def found():
            places = [i for i in range(start, len(self._lines)) if self._lines[i] == word]
            return len(places) >= times and places[times - 1] + 1
        return wait_until(found, f"{times} times '{word}'")

    def between(self, start, stop):
        return self._lines[start:stop]


def work(desktop, button, window):
    def pointer(*command):
        desktop.run("xdotool", *command)

    pointer("mousemove", "--window", window, "40", "40", "mousedown", "1")
    at = button.wait_for("pressed", 0)
    at = button.wait_for("clicked", at, 3)
    pointer("mousemove_relative", "--", "270", "150")
    away = button.wait_for("away", at)
    ticked = button.wait_for("tick", away, 5)
    assert "clicked" not in button.between(away, ticked), button.between(away, ticked)
    pointer("mousemove", "--window", window, "41", "41")
    at = button.wait_for("over", ticked)
    at = button.wait_for("clicked", at, 3)
    pointer("mousemove_relative", "--", "270", "150")
    away = button.wait_for("away", at)
    pointer("mouseup", "1")
    released = button.wait_for("released", away)
    # The next press is the next thing that happens.
    pointer("mousemove", "--window", window, "40", "40", "mousedown", "1")
    pressed = button.wait_for("pressed", released)
    pointer("mouseup", "1")
    button.wait_for("released", pressed)
    said = [word for word in button.between(released, pressed) if word in ("tick", "clicked")]
    assert not said, said


def main():
    with Desktop() as desktop:
        environment = desktop.environment()
        environment["WINEQT_QPA_PLATFORM"] = "windows"
        process = subprocess.Popen(sys.argv[1:], env=environment, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True)
        try:
            work(desktop, Button(process), desktop.wait_for_window(process, "held_button"))
        finally:
            end(process)


if __name__ == "__main__":
    main()
