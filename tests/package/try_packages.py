#!/usr/bin/env python3
"""Tries the packages in dist/ the way their users would; ./package --try calls it.

    tests/package/try_packages.py                     all of them
    tests/package/try_packages.py Installer           one kind of package
"""

import contextlib
import hashlib
import json
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
sys.path[:0] = [str(REPOSITORY / "tests" / "e2e"), str(REPOSITORY / "tools")]

from desktop import Desktop  # noqa: E402
from dump import lldb, open_minidump  # noqa: E402
from tool import Linux, finish  # noqa: E402
from tool_windows import Windows, fresh_prefix  # noqa: E402

DIST = REPOSITORY / "dist"
PROVOKE_FAULT = REPOSITORY / "build" / "win32-package" / "run" / "provoke_fault.exe"
WINE = REPOSITORY / "tools" / "windows" / "wine"

BEFORE = b"[NVR]\nAddress 10.0.0.1\nPort 80\n"
AFTER = b"[NVR]\nAddress 10.0.0.2\nPort 80\n"
INSTALLED = r"C:\Program Files\Quorvane\Orvistrand Configure"


def the_only(pattern, folder=DIST):
    found = list(folder.glob(pattern))
    assert len(found) == 1, f"{folder}/{pattern}: {[path.name for path in found]}"
    return found[0]


def build_of(folder):
    """Tag and stamp of the build in a Windows package."""
    contents = json.loads((folder / "orvistrand-configure.spdx.json").read_text("utf-8"))
    return re.search(r"\((\S+) (\S+)\)", contents["packages"][0]["versionInfo"]).groups()


def snapshot(folder):
    """The folder's contents: names, and the checksums of files."""
    return {str(path.relative_to(folder)):
            hashlib.sha256(path.read_bytes()).hexdigest() if path.is_file() else "folder"
            for path in folder.rglob("*")}


def run(*command, **options):
    """What a command prints; it must succeed."""
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


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

    def check_contents(self, root, document):
        """The package's own list has all of its files, with their checksums, and nothing else."""
        listed = json.loads(document.read_text("utf-8"))
        self.assertEqual(listed["spdxVersion"], "SPDX-2.3")
        self.assertEqual({file["fileName"]: {entry["algorithm"]: entry["checksumValue"]
                                             for entry in file["checksums"]}
                          for file in listed["files"]},
                         {f"./{path.relative_to(root)}": {
                             name: hashlib.new(name, path.read_bytes()).hexdigest()
                             for name in ("SHA1", "SHA256")}
                          for path in root.rglob("*") if path.is_file() and path != document})
        for part in listed["packages"] + listed["files"]:
            self.assertTrue(part["licenseConcluded"], part)
        for package in listed["packages"]:
            self.assertRegex(package["versionInfo"], r"^\d", package["name"])
        known = {part["SPDXID"] for part in [listed, *listed["packages"], *listed["files"]]}
        for relation in listed["relationships"]:
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, known)

    def enter_address(self, desktop, process, window_class):
        desktop.wait_for_window(process, window_class)
        desktop.press("ctrl+a")
        desktop.type("10.0.0.2")
        desktop.press("Return")

    def edit(self, desktop, process, window_class, settings):
        """Uses the dialog that the process opens, as an operator would."""
        self.enter_address(desktop, process, window_class)
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
        """The status of a silent Windows program, once all its children have ended."""
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
        self.check_contents(folder, folder / "orvistrand-configure.spdx.json")
        platform = self.platform(folder)
        settings = self.prepared_settings(platform)
        process = platform.start(self.desktop, folder)
        self.edit(self.desktop, process, platform.window_class, settings)


    def test_loads_nothing_from_the_working_directory(self):
        folder = self.unpacked(the_only("*-win_i686.zip"), self.folder)
        shutil.copy(PROVOKE_FAULT, folder)
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        for place, name in (elsewhere, "false.dll"), (folder, "true.dll"):
            shutil.copy(folder / "libwinpthread-1.dll", place / name)
        platform = self.platform(folder)
        process = platform.start(self.desktop, elsewhere)
        self.desktop.wait_for_window(process, platform.window_class)
        environment = {**self.desktop.environment(), "WINEPREFIX": str(self.prefix)}
        status = {name: subprocess.run(
            [WINE, folder / "provoke_fault.exe", "configure.exe", "load", name],
            env=environment, cwd=elsewhere, check=False).returncode
            for name in ("true.dll", "false.dll")}
        self.assertEqual(status, {"true.dll": 0, "false.dll": 3})
        self.desktop.press("Escape")
        self.assertEqual(finish(process).status, 0)


class Installer(WindowsTrial):
    """In a new prefix: install, run, refuse while it runs, repair, uninstall."""

    key = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Orvistrand Configure"

    def setUp(self):
        super().setUp()
        self.setup = the_only("*-win_i686-setup.exe")
        drive = self.prefix / "drive_c"
        self.installed = drive / "Program Files" / "Quorvane" / "Orvistrand Configure"
        self.menu = (drive / "ProgramData" / "Microsoft" / "Windows" / "Start Menu" / "Programs"
                     / "Quorvane")
        self.entry = self.menu / "Orvistrand Configure.lnk"

    def uninstall(self, folder=None):
        """The uninstaller's status, after its own file has been deleted, too."""
        status = self.wine((folder or self.installed) / "uninstall.exe", "/S")
        self.wine("--wait")
        return status

    def registered(self):
        """What Windows shows about the program; empty without an entry."""
        environment = {**self.desktop.environment(), "WINEPREFIX": str(self.prefix)}
        text = subprocess.run([WINE, "reg", "query", self.key], env=environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              check=False).stdout
        return dict(re.findall(r"^ +(\w+) +REG_\w+ +(.*?)\r?$", text, re.M))

    def test_installs_runs_and_goes(self):
        self.assertEqual(self.wine(self.setup, "/S"), 0)
        self.check_notices(self.installed)
        log = self.installed / "files" / "dumps.log"
        self.assertEqual(log.read_bytes(), b"")
        log.unlink()  # made by the installer, so not in the list
        self.check_contents(self.installed, self.installed / "orvistrand-configure.spdx.json")
        # Wine's shell cannot open the entry, so the test reads it and starts its program.
        link = self.entry.read_bytes()
        self.assertIn(rf"{INSTALLED}\configure.exe".encode("ascii"), link)
        place = re.escape(INSTALLED.encode("utf-16-le"))
        self.assertRegex(link, place + rb"(?!\\)", "its working directory")
        shown = self.registered()
        for name in ("DisplayName", "DisplayVersion", "Publisher", "URLInfoAbout", "Contact",
                     "QuietUninstallString"):
            self.assertTrue(shown[name], name)
        self.assertEqual(shown["DisplayIcon"], INSTALLED + r"\configure.exe,0")
        self.assertGreater(int(shown["EstimatedSize"], 16), 10_000, "kB")

        platform = self.platform(self.installed)
        settings = self.prepared_settings(platform)
        files = sorted(path.name for path in self.installed.rglob("*"))
        process = platform.start(self.desktop, self.installed)
        self.desktop.wait_for_window(process, platform.window_class)
        self.assertEqual(self.wine(self.installed / "uninstall.exe", "/S"), 3,
                         "while the program runs")
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
        self.assertEqual(self.registered(), {})
        self.assertEqual(settings.read_bytes(), AFTER)

    def check_refused(self, *arguments):
        """Checks that the installer gives up and changes nothing."""
        before = snapshot(self.installed.parent), self.registered()
        self.assertEqual(self.wine(self.setup, "/S", *arguments), 2)
        self.assertEqual((snapshot(self.installed.parent), self.registered()), before)

    def test_changes_nothing_when_it_fails(self):
        self.assertEqual(self.wine(self.setup, "/S"), 0)
        locked = self.prefix / "drive_c" / "Locked"
        locked.mkdir(mode=0o555)
        self.check_refused(r"/D=C:\Locked\Tool")
        self.assertEqual(list(locked.iterdir()), [])
        for name in ("configure.exe", "licenses/qt.txt"):
            kept = self.installed / (name + ".kept")
            (self.installed / name).rename(kept)
            (self.installed / name).mkdir()
            self.check_refused()
            (self.installed / name).rmdir()
            kept.rename(self.installed / name)
        self.installed.chmod(0o555)
        self.check_refused()
        self.installed.chmod(0o755)


    def test_tells_when_a_file_stays(self):
        self.assertEqual(self.wine(self.setup, "/S"), 0)
        text = rf"{INSTALLED}\licenses\qt.txt"
        script = self.folder / "hold.bat"
        script.write_text(f'notepad <"{text}"\n', "ascii")
        environment = {**self.desktop.environment(), "WINEPREFIX": str(self.prefix)}
        process = Windows.launch([WINE, "cmd", "/c", f"Z:{script}".replace("/", "\\")],
                                 self.folder, environment)
        self.desktop.wait_for_window(process, "^notepad")
        self.assertEqual(self.wine(self.installed / "uninstall.exe", "/S"), 2)
        self.assertTrue(self.registered(), "so that it can be tried again")
        self.desktop.press("alt+F4")
        finish(process)
        self.assertEqual(self.uninstall(), 0)
        self.assertFalse(self.installed.exists())

    def test_takes_the_place_of_an_older_version(self):
        old = self.folder / "old.exe"
        run("makensis", "-V1", f"-DOUT={old}", Path(__file__).with_name("old_setup.nsi"))
        self.assertEqual(self.wine(old, "/S", r"/D=C:\Elsewhere\Tool"), 0)
        folder = self.prefix / "drive_c" / "Elsewhere" / "Tool"
        (folder / "files").mkdir()
        (folder / "files" / "dumps.log").write_text("a line\n", "ascii")
        self.assertEqual(self.wine(self.setup, "/S"), 0)
        self.assertEqual([path.name for path in folder.parent.iterdir()], ["Tool"])
        self.assertFalse((folder / "gone.txt").exists())
        self.assertEqual((folder / "files" / "dumps.log").read_text("ascii"), "a line\n")
        self.check_notices(folder)
        self.assertEqual(self.registered()["InstallLocation"], r"C:\Elsewhere\Tool")
        self.assertNotEqual(self.registered()["DisplayVersion"], "2.0")
        process = self.platform(folder).start(self.desktop, folder)
        self.desktop.wait_for_window(process, Windows.window_class)
        self.desktop.press("Escape")
        self.assertEqual(finish(process).status, 0)

    def test_goes_without_a_trace(self):
        self.assertEqual(self.wine(self.setup, "/S", r"/D=C:\Elsewhere\Tool"), 0)
        elsewhere = self.prefix / "drive_c" / "Elsewhere"
        self.assertTrue((elsewhere / "Tool" / "configure.exe").exists())
        self.assertFalse(self.installed.exists())
        self.assertEqual(self.uninstall(elsewhere / "Tool"), 0)
        self.assertEqual(list(elsewhere.iterdir()), [])
        self.assertFalse(self.installed.parent.exists())
        self.assertFalse(self.menu.exists())


class Signing(WindowsTrial):
    """The same build, signed with a certificate made for this trial."""

    def test_signs_programs_uninstaller_and_installer(self):
        run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=Trial",
            "-addext", "extendedKeyUsage=codeSigning", "-keyout", "key.pem", "-out", "signer.pem",
            cwd=self.folder, stderr=subprocess.DEVNULL)
        sign = self.folder / "sign"
        sign.write_text(f"""#!/bin/sh
osslsigncode sign -certs '{self.folder}/signer.pem' -key '{self.folder}/key.pem' \\
    -in "$1" -out "$1.signed" && chmod 755 "$1.signed" && mv "$1.signed" "$1"
""", "ascii")
        sign.chmod(0o755)
        tag, stamp = build_of(self.unpacked(the_only("*-win_i686.zip"), self.folder / "unsigned"))
        signed = self.folder / "dist"
        run(REPOSITORY / "package", "--tag", tag, "--stamp", stamp, "--sign", sign,
            env={**os.environ, "ORVISTRAND_DIST": str(signed)})
        setup = the_only("*-setup.exe", signed)
        self.assertEqual(self.wine(setup, "/S", r"/D=C:\Tool"), 0)
        installed = self.prefix / "drive_c" / "Tool"
        unpacked = self.unpacked(the_only("*-win_i686.zip", signed), self.folder)
        for file in (setup, installed / "configure.exe", installed / "uninstall.exe",
                     unpacked / "configure.exe"):
            run("osslsigncode", "verify", "-CAfile", self.folder / "signer.pem", "-in", file)


class CrashOfAnOperator(WindowsTrial):
    """A crash of the program in use; the dump is opened on the build machine."""

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
        build = "_".join(build_of(folder))
        self.assertEqual(dump.name, f"configure-{build}.dmp")
        self.assertRegex((folder / "files" / "dumps.log").read_text("ascii"),
                         rf"^[-0-9]+ [:0-9]+: configure {build}\n$")
        evidence = open_minidump(dump, folder / "configure.exe", debug)
        self.assertEqual(evidence.cause, platform.null_write)
        self.assertEqual(evidence.functions[0], "core::deliberateFault()")


class DebugInformation(Trial):
    def test_does_not_tell_where_it_was_built(self):
        self.unpacked(the_only("*-win_i686.zip"), self.folder)
        folder = self.unpacked(the_only("*-win_i686-debug.zip"), self.folder)
        run("dpkg-deb", "--extract", the_only("*.deb"), self.folder)
        run("tar", "-xf", the_only("*-linux_*-debug.tar.xz"), "-C", self.folder)
        cache = Path(os.environ.get("ORVISTRAND_WINDOWS_CACHE", "build/windows-cache")).resolve()
        for file in (folder / "configure.exe", folder / "configure.exe.debug",
                     folder / "symbols" / "configure.pdb",
                     *(self.folder / "usr").rglob("orvistrand-configure*")):
            if file.is_file():
                for place in REPOSITORY, cache:
                    self.assertNotIn(str(place).encode(), file.read_bytes(), file.name)

    question = "image lookup --verbose --name configure::runApplication"
    line = r"LineEntry: \S+ (\./)?configure/configure\.cpp:\d+"

    def check_link(self, program, folder):
        """Checks that the program refers to its debug file in `folder`, with its checksum."""
        name = program.name + ".debug"
        content = program.read_bytes()
        # The name is padded with zeros to a multiple of four; the checksum follows.
        link = content.rindex(name.encode("ascii") + b"\0")
        self.assertEqual(struct.unpack_from("<I", content, link + len(name) // 4 * 4 + 4)[0],
                         zlib.crc32((folder / name).read_bytes()))

    def test_windows_program_and_file_belong_together(self):
        folder = self.unpacked(the_only("*-win_i686.zip"), self.folder)
        self.assertEqual(self.unpacked(the_only("*-win_i686-debug.zip"), self.folder), folder)
        self.check_link(folder / "configure.exe", folder)
        # Before version 15, lldb does not follow the links of Windows programs by itself.
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


class Hardening(Trial):
    def test_linux(self):
        run("dpkg-deb", "--extract", the_only("*.deb"), self.folder)
        answer = run("hardening-check", "--nocfprotection",
                     self.folder / "usr/bin/orvistrand-configure")
        for protection in ("Position Independent Executable", "Stack protected",
                           "Fortify Source functions", "Read-only relocations",
                           "Immediate binding"):
            self.assertRegex(answer, rf"(?m)^ {protection}: yes")

    def test_windows(self):
        folder = self.unpacked(the_only("*-win_i686.zip"), self.folder)
        program = (folder / "configure.exe").read_bytes()
        header, = struct.unpack_from("<I", program, 0x3C)
        characteristics, = struct.unpack_from("<H", program, header + 24 + 70)
        moves, no_execute = 0x40, 0x100
        self.assertEqual(characteristics & (moves | no_execute), moves | no_execute)
        self.assertIn(b"stack smashing detected", program)


class DebianPackage(Trial):
    def test_lintian_finds_no_error(self):
        options = ["--allow-root"] if os.geteuid() == 0 else []
        result = subprocess.run(["lintian", *options, "--fail-on", "error,warning",
                                 the_only("*.deb")], text=True, capture_output=True, check=False)
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)

    def test_describes_itself(self):
        run("dpkg-deb", "--extract", the_only("*.deb"), self.folder)
        share = self.folder / "usr" / "share"
        documents = share / "doc" / "orvistrand-configure"
        self.check_contents(self.folder / "usr",
                            documents / "orvistrand-configure.spdx.json")
        run("appstreamcli", "validate", "--no-net",
            share / "metainfo" / "orvistrand-configure.metainfo.xml")
        run("desktop-file-validate", share / "applications" / "orvistrand-configure.desktop")

    def test_serves_the_users_of_a_machine(self):
        namespace = ["unshare", "--mount", "--pid", "--fork", "--mount-proc", "--kill-child"]
        if os.geteuid() != 0:
            namespace += ["--map-root-user", "--map-auto"]
        with Desktop() as desktop:
            process = Linux.launch([*namespace, Path(__file__).with_name("on_a_machine.sh"),
                                    self.folder, the_only("*.deb")],
                                   self.folder, desktop.environment())
            self.enter_address(desktop, process, "^orvistrand-configure")
            result = finish(process)
        self.assertEqual(result.status, 0, result.stderr)
        work, settings = "/var/lib/orvistrand-configure", "/var/lib/Quorvane/Orvistrand"
        self.assertEqual(result.stdout.splitlines(), [
            f"{settings} 2775 root:orvistrand",
            f"{work}/dumps 1733 root:root",
            f"{work}/files 1733 root:root",
            f"{work}/files/dumps.log 622 root:root",
            "/usr/bin/orvistrand-collect 755 root:root",
            "collector-is-sound yes", "collector-is-on no", "collector-has-a-user yes",
            "member-stores yes", "stranger-stores no",
            "user-adds yes", "other-lists no", "other-reads no", "other-replaces no",
            "other-logs yes", "other-reads-log no",
            f"works-in {work}",
            f"stored {AFTER.decode('ascii')}".replace("\n", "|"),
            "settings-stay-removed yes", "evidence-stays-removed yes",
            "settings-stay-purged yes", "evidence-stays-purged no",
            "collector-stays-purged no"])

    def test_edits_the_file_of_the_machine(self):
        subprocess.run(["dpkg-deb", "--extract", the_only("*.deb"), self.folder], check=True)
        documents = self.folder / "usr/share/doc/orvistrand-configure"
        self.assertIn("Qt", (documents / "third-party-notices.txt").read_text("utf-8"))
        state = self.folder / "state"
        platform = Linux(self.folder / "usr/bin/orvistrand-configure", None, state)
        settings = self.prepared_settings(platform)
        with Desktop() as desktop:
            # The trial's folder in place of the machine's.
            process = platform.launch(["bwrap", "--dev-bind", "/", "/", "--bind", state,
                                       "/var/lib", platform.tool],
                                      self.folder, desktop.environment())
            self.edit(desktop, process, "^orvistrand-configure", settings)


if __name__ == "__main__":
    if shutil.which("lldb") is None:
        sys.exit("try_packages.py: lldb is missing")
    unittest.main(verbosity=2)
