#!/usr/bin/env python3
"""accessible.py TOOL COMMON_DATA: operates the tool only through the accessibility interface, as
a screen reader does: finds the address by its label, changes it and presses OK. Then the file
must have the new address.
"""

import os
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from assistant import SKIPPED, AssistedDesktop, is_available  # noqa: E402
from desktop import PATIENCE, end, wait_until  # noqa: E402
from tool import Linux, finish, recreate, set_aside  # noqa: E402

BEFORE = b"[NVR]\nAddress 10.0.0.1\nPort 80\n"
AFTER = b"[NVR]\nAddress 10.0.0.2\nPort 80\n"


def elements(root):
    """All elements below `root` that still exist."""
    for index in range(root.get_child_count()):
        child = root.get_child_at_index(index)
        if child is not None:
            yield child
            yield from elements(child)


def find(atspi, gone, role, name):
    """Waits for an element. An exception `gone` means that one has just vanished: tries again."""
    def found():
        try:
            return next((element for element in elements(atspi.get_desktop(0))
                         if element.get_role_name() == role and element.get_name() == name), None)
        except gone:
            return None
    return wait_until(found, f"the {role} '{name}'")


def press(element):
    names = [element.get_action_name(i) for i in range(element.get_n_actions())]
    assert element.do_action(names.index("Press")), names


def work(atspi, gone):
    address = find(atspi, gone, "text", "NVR IP")
    assert address.get_text(0, -1) == "10.0.0.1", address.get_text(0, -1)
    assert find(atspi, gone, "text", "Port").get_text(0, -1) == "80"
    assert address.set_text_contents("10.0.0.2")
    press(find(atspi, gone, "push button", "OK"))


def main():
    if not is_available():
        print("there is no AT-SPI here: package at-spi2-core", file=sys.stderr)
        return SKIPPED
    tool, common_data = (Path(argument).resolve() for argument in sys.argv[1:])
    with set_aside(common_data), AssistedDesktop() as desktop, \
            tempfile.TemporaryDirectory() as folder:
        os.environ.update(desktop.environment())
        try:
            import gi
            gi.require_version("Atspi", "2.0")
            from gi.repository import Atspi, GLib
        except (ImportError, ValueError) as reason:
            print(f"there is no AT-SPI for Python here: {reason}", file=sys.stderr)
            return SKIPPED
        # A machine with much to do answers later than the 0.8 seconds that are usual.
        Atspi.set_timeout(PATIENCE * 1000, PATIENCE * 1000)
        recreate(common_data)
        settings = Linux.settings_folder(common_data) / "Settings"
        settings.parent.mkdir(parents=True)
        settings.write_bytes(BEFORE)
        process = Linux(tool, None, common_data).start(desktop, folder)
        try:
            work(Atspi, GLib.Error)
            result = finish(process)
        finally:
            end(process)
        assert result.status == 0, result
        assert settings.read_bytes() == AFTER, settings.read_bytes()
    return 0


if __name__ == "__main__":
    sys.exit(main())
