#!/usr/bin/env python3
"""Takes the documentation's pictures of the Windows program.

    tools/windows/pictures.py       after a build of preset win32
"""

import subprocess
import sys
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(REPOSITORY / "tests" / "e2e"), str(REPOSITORY / "tools")]

from desktop import Desktop  # noqa: E402
from tool import finish  # noqa: E402
from tool_windows import Windows, fresh_prefix  # noqa: E402

WINE = REPOSITORY / "tools" / "windows" / "wine"
RUN = REPOSITORY / "build" / "win32" / "run"
PICTURES = {96: "configure-windows.png", 144: "configure-windows-144dpi.png"}


def set_resolution(desktop, prefix, dpi):
    subprocess.run([WINE, "reg", "add", r"HKCU\Control Panel\Desktop", "/v", "LogPixels",
                    "/t", "REG_DWORD", "/d", str(dpi), "/f"],
                   env={**desktop.environment(), "WINEPREFIX": str(prefix)}, check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run([WINE, "--kill"], env={**desktop.environment(), "WINEPREFIX": str(prefix)},
                   check=False)


def take(dpi, path):
    with fresh_prefix(WINE) as prefix, Desktop() as desktop:
        platform = Windows(WINE, RUN / "configure.exe", None, prefix)
        settings = platform.settings_folder(platform.common_data) / "Settings"
        settings.parent.mkdir(parents=True)
        settings.write_text("[NVR]\nAddress 10.0.0.1\nPort 80\n", encoding="utf-8")
        set_resolution(desktop, prefix, dpi)
        process = platform.start(desktop, RUN)
        window = desktop.wait_for_window(process, platform.window_class)
        desktop.take_picture(window, path)
        desktop.press("Escape")
        return finish(process).status


def main():
    statuses = [take(dpi, REPOSITORY / "docs" / "images" / name)
                for dpi, name in PICTURES.items()]
    return max(statuses)


if __name__ == "__main__":
    sys.exit(main())
