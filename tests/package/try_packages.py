#!/usr/bin/env python3
"""Tries what ./package left in dist/ the way its users would; ./package --try calls it.

    tests/package/try_packages.py                     all of it
    tests/package/try_packages.py Installer           one kind of package
"""

import contextlib
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zipfile
import zlib
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "tests" / "e2e"))

from desktop import Desktop  # noqa: E402
from dump import lldb, open_minidump  # noqa: E402
from tool import Linux, finish  # noqa: E402
from tool_windows import Windows, fresh_prefix  # noqa: E402

DIST = REPOSITORY / "dist"
PROVOKE_FAULT = REPOSITORY / "build" / "win32" / "run" / "provoke_fault.exe"
WINE = REPOSITORY / "tools" / "windows" / "wine"

BEFORE = b"[NVR]\nAddress 10.0.0.1\nPort 80\n"
AFTER = b"[NVR]\nAddress 10.0.0.2\nPort 80\n"
INSTALLED = r"C:\Program Files\Quorvane\Orvistrand Configure"


def the_only(pattern):
    found = list(DIST.glob(pattern))
    assert len(found) == 1, f"dist/{pattern}: {[path.name for path in found]}"
    return found[0]


class Trial(unittest.TestCase):
    def setUp(self):
        self.stack = contextlib.ExitStack()
        self.addCleanup(self.stack.close)
        self.folder = Path(self.stack.enter_context(tempfile.TemporaryDirectory(prefix="try-")))

    def unpacked(self, archive, folder):
        """The top folder of a zip archive, unpacked below `folder`."""
        with zipfile.ZipFile(archive) as content:
            tops = {name.split("/")[0] for name in content.namelist()}
            content.extractall(folder)
        self.assertEqual(len(tops), 1, f"{archive.name} unpacks into one folder")
        return folder / tops.pop()

    def edit(self, desktop, process, window_class, settings):
        """Works the dialog that the process opens as an operator would."""
        desktop.wait_for_window(process, window_class)
        desktop.press("ctrl+a")
        desktop.type("10.0.0.2")
        desktop.press("Return")
        result = finish(process)
        self.assertEqual((result.status, result.stderr), (0, ""))
        self.assertEqual(settings.read_bytes(), AFTER)

    def prepared_settings(self, platform):
        settings = platform.settings_folder(platform.common_data) / "Settings"
        settings.parent.mkdir(parents=True)
        settings.write_bytes(BEFORE)
        return settings


class WindowsTrial(Trial):
    def setUp(self):
        super().setUp()
        self.prefix = self.stack.enter_context(fresh_prefix(WINE))
        self.desktop = self.stack.enter_context(Desktop())

    def platform(self, folder):
        return Windows(WINE, folder / "configure.exe", None, self.prefix)

    def wine(self, *command):
        """The status of a Windows program that opens no window, all its children ended."""
        environment = {**self.desktop.environment(), "WINEPREFIX": str(self.prefix)}
        return finish(Windows.launch([WINE, *command], self.folder, environment)).status

    def check_notices(self, folder):
        notices = (folder / "third-party-notices.txt").read_text("utf-8")
        for text in sorted(set(re.findall(r"[\w.-]+\.txt", notices))):
            self.assertGreater((folder / "licenses" / text).stat().st_size, 1000, text)
        for library in folder.glob("*.dll"):
            self.assertIn(library.name, notices)


class Archive(WindowsTrial):
    def test_runs_in_place(self):
        place = self.folder / "Räume mit Leerzeichen"
        folder = self.unpacked(the_only("*-win_i686.zip"), place)
        self.check_notices(folder)
        platform = self.platform(folder)
        settings = self.prepared_settings(platform)
        process = platform.start(self.desktop, folder)
        self.edit(self.desktop, process, platform.window_class, settings)


class Installer(WindowsTrial):
    """On a machine of its own: install, run, refuse while it runs, repair, uninstall."""

    key = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Orvistrand Configure"

    def setUp(self):
        super().setUp()
        self.setup = the_only("*-win_i686-setup.exe")
        drive = self.prefix / "drive_c"
        self.installed = drive / "Program Files" / "Quorvane" / "Orvistrand Configure"
        self.menu = (drive / "ProgramData" / "Microsoft" / "Windows" / "Start Menu" / "Programs"
                     / "Quorvane")
        self.entry = self.menu / "Orvistrand Configure.lnk"

    def uninstall(self):
        """Its status. Told where it is, in words that must not be quoted although they
        have blanks, the uninstaller does not copy itself elsewhere and leave at once."""
        script = self.folder / "uninstall.bat"
        script.write_text(f'"{INSTALLED}\\uninstall.exe" /S _?={INSTALLED}\n'
                          "exit %ERRORLEVEL%\n", encoding="ascii")
        return self.wine("cmd", "/c", f"Z:{script}".replace("/", "\\"))

    def test_installs_runs_and_goes(self):
        self.assertEqual(self.wine(self.setup, "/S"), 0)
        self.check_notices(self.installed)
        # Wine's shell cannot open the entry, so it is read, and its program started there.
        link = self.entry.read_bytes()
        self.assertIn(rf"{INSTALLED}\configure.exe".encode("ascii"), link)
        place = re.escape(INSTALLED.encode("utf-16-le"))
        self.assertRegex(link, place + rb"(?!\\)", "its working directory")
        self.assertEqual(self.wine("reg", "query", self.key), 0)

        platform = self.platform(self.installed)
        settings = self.prepared_settings(platform)
        files = sorted(path.name for path in self.installed.rglob("*"))
        process = platform.start(self.desktop, self.installed)
        self.desktop.wait_for_window(process, platform.window_class)
        self.assertEqual(self.uninstall(), 3, "while the program runs")
        self.assertEqual(self.wine(self.setup, "/S"), 3, "while the program runs")
        self.assertEqual(sorted(path.name for path in self.installed.rglob("*")), files)
        self.edit(self.desktop, process, platform.window_class, settings)

        (self.installed / "configure.exe").unlink()
        foreign = self.installed / "notes of the operator.txt"
        foreign.write_text("keep", encoding="ascii")
        self.assertEqual(self.wine(self.setup, "/S"), 0, "again, over a damaged one")
        self.assertTrue((self.installed / "configure.exe").exists())

        self.assertEqual(self.uninstall(), 0)
        left = {path.name for path in self.installed.iterdir()}
        self.assertLessEqual(left, {foreign.name, "uninstall.exe"})
        self.assertIn(foreign.name, left)
        self.assertFalse(self.menu.exists())
        self.assertNotEqual(self.wine("reg", "query", self.key), 0)
        self.assertEqual(settings.read_bytes(), AFTER)

    def test_goes_without_a_trace(self):
        self.assertEqual(self.wine(self.setup, "/S", r"/D=C:\Elsewhere\Tool"), 0)
        elsewhere = self.prefix / "drive_c" / "Elsewhere"
        self.assertTrue((elsewhere / "Tool" / "configure.exe").exists())
        self.assertFalse(self.installed.exists())
        self.wine(elsewhere / "Tool" / "uninstall.exe", "/S")
        self.wine("--wait")
        self.assertEqual(list(elsewhere.iterdir()), [])
        self.assertFalse(self.installed.parent.exists())
        self.assertFalse(self.menu.exists())


class CrashOfAnOperator(WindowsTrial):
    """The program crashes where it is in use; its dump is opened where it was built."""

    def test_shows_the_function(self):
        folder = self.unpacked(the_only("*-win_i686.zip"), self.folder / "in use")
        shutil.copy(PROVOKE_FAULT, folder)
        debug = self.unpacked(the_only("*-win_i686-debug.zip"), self.folder) / "configure.exe.debug"
        found = lldb(f"target create '{debug}'", "image lookup --name core::deliberateFault")
        address = re.search(r"\[(0x[0-9a-f]+)\]", found)[1]

        platform = self.platform(folder)
        process = platform.start(self.desktop, folder)
        self.desktop.wait_for_window(process, platform.window_class)
        platform.provoke_fault(process, address)
        self.assertEqual(finish(process).status, platform.crash_status)

        dump, = (folder / "dumps").iterdir()
        evidence = open_minidump(dump, folder / "configure.exe", debug)
        self.assertEqual(evidence.cause, platform.causes["null_write"])
        self.assertEqual(evidence.functions[0], "core::deliberateFault()")


class DebugInformation(Trial):
    question = "image lookup --verbose --name configure::runApplication"
    line = r"LineEntry: .*/configure\.cpp:\d+"

    def check_link(self, program, folder):
        """That the program names its file in `folder`, and the sum of just that file."""
        name = program.name + ".debug"
        content = program.read_bytes()
        # The name is filled up with zeros to a multiple of four, and the sum follows.
        link = content.rindex(name.encode("ascii") + b"\0")
        self.assertEqual(struct.unpack_from("<I", content, link + len(name) // 4 * 4 + 4)[0],
                         zlib.crc32((folder / name).read_bytes()))

    def test_windows_program_and_file_belong_together(self):
        folder = self.unpacked(the_only("*-win_i686.zip"), self.folder)
        self.assertEqual(self.unpacked(the_only("*-win_i686-debug.zip"), self.folder), folder)
        self.check_link(folder / "configure.exe", folder)
        # Before 15, lldb does not follow the links of Windows programs by itself.
        answer = lldb("target create configure.exe", "target symbols add configure.exe.debug",
                      self.question, folder=folder)
        self.assertRegex(answer, self.line)

    def test_windows_program_finds_its_own_symbols(self):
        folder = self.unpacked(the_only("*-win_i686.zip"), self.folder)
        program = (folder / "configure.exe").read_bytes()
        header, = struct.unpack_from("<I", program, 0x3C)
        debug_stripped = 0x200  # with it, Windows would look for another kind of file
        self.assertFalse(struct.unpack_from("<H", program, header + 22)[0] & debug_stripped)
        record = program.index(b"RSDS") + 4
        identity, name = program[record:record + 16], program[record + 20:].split(b"\0")[0]
        self.assertEqual(name, b"configure.pdb")
        self.assertIn(identity, (folder / "symbols" / "configure.pdb").read_bytes())

    def test_linux_program_and_file_belong_together(self):
        subprocess.run(["dpkg-deb", "--extract", the_only("*.deb"), self.folder], check=True)
        subprocess.run(["tar", "-xf", the_only("*-linux_*-debug.tar.xz"), "-C", self.folder],
                       check=True)
        programs = self.folder / "usr" / "bin"
        debug = self.folder / "usr" / "lib" / "debug" / "usr" / "bin"
        self.check_link(programs / "orvistrand-configure", debug)
        answer = lldb(f"settings set target.debug-file-search-paths {debug}",
                      "target create orvistrand-configure", self.question, folder=programs)
        self.assertRegex(answer, self.line)


class DebianPackage(Trial):
    def test_lintian_finds_no_error(self):
        options = ["--allow-root"] if os.geteuid() == 0 else []
        result = subprocess.run(["lintian", *options, "--fail-on", "error,warning",
                                 the_only("*.deb")], text=True, capture_output=True, check=False)
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)

    def test_edits_the_file_of_the_machine(self):
        subprocess.run(["dpkg-deb", "--extract", the_only("*.deb"), self.folder], check=True)
        documents = self.folder / "usr/share/doc/orvistrand-configure"
        self.assertIn("Qt", (documents / "third-party-notices.txt").read_text("utf-8"))
        state = self.folder / "state"
        platform = Linux(self.folder / "usr/bin/orvistrand-configure", None, state)
        settings = self.prepared_settings(platform)
        with Desktop() as desktop:
            # The trial's folder takes the place of the machine's.
            process = platform.launch(["bwrap", "--dev-bind", "/", "/", "--bind", state,
                                       "/var/lib", platform.tool],
                                      self.folder, desktop.environment())
            self.edit(desktop, process, "^orvistrand-configure", settings)


if __name__ == "__main__":
    if shutil.which("lldb") is None:
        sys.exit("try_packages.py: lldb is missing")
    unittest.main(verbosity=2)
