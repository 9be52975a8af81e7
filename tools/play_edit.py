#!/usr/bin/env python3
"""Plays one edit of the settings file on a virtual screen, with a picture before and
after the typing. ./run calls it on a machine without a display.

    tools/play_edit.py build/linux
"""

import subprocess
import sys
from pathlib import Path

from desktop import PATIENCE, Desktop, ending_with_parent


def show(title, path):
    print(f"{title} {path}:")
    print("".join(f"    {line}\n" for line in path.read_text("utf-8").splitlines()))


def start(desktop, build):
    tool = (build / "configure" / "configure").resolve()
    return subprocess.Popen(ending_with_parent([tool]), cwd=build, env=desktop.environment(),
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True)


def main():
    build = Path(sys.argv[1])
    settings = build / "common-data" / "Quorvane" / "Orvistrand" / "Settings"
    old = settings.read_text("utf-8")
    address = "10.0.0.2" if "10.0.0.1" in old else "10.0.0.1"
    opened, typed = build / "configure-opened.png", build / "configure-typed.png"

    show("Before", settings)
    with Desktop() as desktop:
        process = start(desktop, build)
        window = desktop.wait_for_window(process, "^configure")
        desktop.take_picture(window, opened)
        print(f"Typing {address} into the address field and pressing Enter ...\n")
        desktop.press("ctrl+a")
        desktop.type(address)
        desktop.take_picture(window, typed)
        desktop.press("Return")
        stdout, stderr = process.communicate(timeout=PATIENCE)
    print(stdout, end="")
    print(stderr, end="", file=sys.stderr)
    if process.returncode != 0:
        print(f"The tool ended with status {process.returncode}.")
        return 1
    show("After", settings)
    print(f"Pictures: {opened} (as opened)\n          {typed} (just before Enter)")
    return 0 if settings.read_text("utf-8") != old else 1


if __name__ == "__main__":
    sys.exit(main())
