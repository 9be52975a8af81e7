#!/usr/bin/env python3
"""Plays one edit of the settings file on a virtual screen, with a picture before and
after the typing; what ./run does on a machine without a display.

    tests/e2e/play_edit.py build/linux
"""

import sys
from pathlib import Path

from desktop import Desktop
from tool import Linux, finish


def show(title, path):
    print(f"{title} {path}:")
    print("".join(f"    {line}\n" for line in path.read_text("utf-8").splitlines()))


def main():
    build = Path(sys.argv[1])
    platform = Linux((build / "configure" / "configure").resolve(), None, build / "common-data")
    settings = platform.settings_folder(platform.common_data) / "Settings"
    old = settings.read_text("utf-8")
    address = "10.0.0.2" if "10.0.0.1" in old else "10.0.0.1"
    opened, typed = build / "configure-opened.png", build / "configure-typed.png"

    show("Before", settings)
    with Desktop() as desktop:
        process = platform.start(desktop, build)
        window = desktop.wait_for_window(process, platform.window_class)
        desktop.take_picture(window, opened)
        print(f"Typing {address} into the address field and pressing Enter ...\n")
        desktop.press("ctrl+a")
        desktop.type(address)
        desktop.take_picture(window, typed)
        desktop.press("Return")
        result = finish(process)
    print(result.stdout, end="")
    print(result.stderr, end="", file=sys.stderr)
    if result.status != 0:
        print(f"The tool ended with status {result.status}.")
        return 1
    show("After", settings)
    print(f"Pictures: {opened} (as opened)\n          {typed} (just before Enter)")
    return 0 if settings.read_text("utf-8") != old else 1


if __name__ == "__main__":
    sys.exit(main())
