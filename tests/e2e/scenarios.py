"""What an operator does with the tool, and what must result.

Each scenario opens the real program in a real window, operates it by keyboard or mouse,
and checks the settings file, the standard output and the exit status.
"""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path
from typing import NamedTuple, Optional

from tool import Stored, confinement, finish, recreate


# What an operator does in the dialog, which opens with the cursor in the address field.
def press(*keys):
    return lambda desktop, window: desktop.press(*keys)


def replace(text):
    """Replaces the field's text."""
    def act(desktop, window):
        desktop.press("ctrl+a", "Delete")
        if text:
            desktop.type(text)
    return act


def click(right, bottom):
    """Clicks that many pixels from the window's right and bottom edges."""
    return lambda desktop, window: desktop.click(window, -right, -bottom)


ENTER, ESCAPE, TAB = press("Return"), press("Escape"), press("Tab")
SPACE, CLOSE_WINDOW = press("space"), press("alt+F4")
OK_BUTTON, CANCEL_BUTTON = click(140, 22), click(50, 22)
NEW_ADDRESS = replace("10.0.0.2")
NEW_PORT = replace("81")

NVR = b"[NVR]\nAddress 10.0.0.1\nPort 80\n"
CHANGED = b"[NVR]\nAddress 10.0.0.2\nPort 81\n"


def section(address, port):
    return f"[NVR]\nAddress {address}\nPort {port}\n".encode()


class Edit(NamedTuple):
    """One run of the tool."""
    name: str
    before: Optional[bytes]  # the file's content; None: no file
    actions: list
    after: Optional[bytes] = None  # None: the file is left alone


KEPT = [
    Edit("cancelled_by_escape", NVR, [NEW_ADDRESS, ESCAPE]),
    Edit("cancelled_by_mouse", NVR, [NEW_ADDRESS, CANCEL_BUTTON]),
    Edit("cancelled_by_enter_on_the_button", NVR, [NEW_ADDRESS, TAB, TAB, TAB, ENTER]),
    Edit("window_closed", NVR, [NEW_ADDRESS, CLOSE_WINDOW]),
    Edit("accepted_with_the_same_text_typed_again", NVR, [replace("10.0.0.1"), ENTER]),
    Edit("accepted_without_change_in_a_quoted_value", section('"front door"', 80), [ENTER]),
    Edit("accepted_empty_without_a_file", None, [ENTER]),
    Edit("accepted_empty_with_a_file_of_something_else", b"\x00\x01=\n[\n]]\n\xff", [ENTER]),
]

WRITTEN = [
    Edit("both_changed", NVR, [NEW_ADDRESS, TAB, NEW_PORT, ENTER], CHANGED),
    Edit("accepted_by_mouse", NVR, [NEW_ADDRESS, OK_BUTTON], section("10.0.0.2", 80)),
    Edit("shift_tab_goes_back_over_cancel_to_ok", NVR,
         [NEW_ADDRESS, press("shift+Tab", "shift+Tab"), SPACE], section("10.0.0.2", 80)),
    Edit("tab_comes_round_to_the_address", NVR, [TAB, TAB, TAB, TAB, NEW_ADDRESS, ENTER],
         section("10.0.0.2", 80)),
    Edit("both_emptied", NVR, [replace(""), TAB, replace(""), ENTER], section("", "")),
    Edit("umlauts", NVR, [replace("Tür-Süd.Straße"), ENTER], section("Tür-Süd.Straße", 80)),
    Edit("any_text_is_accepted", NVR, [replace('#1;a="b" '), TAB, replace("-x y"), ENTER],
         section('#1;a="b" ', '"-x y"')),
    Edit("the_rest_of_the_file_is_dropped",
         b"# by hand\r\nTop 1\r\n[NVR]\r\nPort = 80\r\nUser = me\r\nPort = 90\r\n",
         [TAB, NEW_PORT, ENTER], section("", 81)),
    Edit("names_are_case_sensitive", b"[nvr]\nAddress 1\n[NVR]\nport 80\n",
         [TAB, NEW_PORT, ENTER], section("", 81)),
    Edit("without_a_file", None, [NEW_ADDRESS, TAB, NEW_PORT, ENTER], CHANGED),
    Edit("with_an_empty_file", b"", [TAB, NEW_PORT, ENTER], section("", 81)),
    # The field cannot hold such bytes, so its text differs from the file's without any typing.
    Edit("bytes_that_are_no_text", b"[NVR]\nAddress caf\xe9\nPort 80\n", [ENTER],
         section("caf\ufffd", 80)),
]

TAG = "tag_orvistrand_2_1_rc_1_220329-103018"


def rows(table):
    """Gives a class one test for each row, which calls its method `check`."""
    def decorate(cls):
        for row in table:
            setattr(cls, f"test_{row.name}", lambda self, row=row: self.check(row))
        return cls
    return decorate


class Scenario(unittest.TestCase):
    """A scenario starts with an empty data folder and an empty working directory."""

    maxDiff = None
    desktop = None  # these are set by the runner
    platform = None
    collector = None

    def setUp(self):
        recreate(self.platform.common_data)
        self.work = Path(tempfile.mkdtemp(prefix="e2e-"))
        self.addCleanup(shutil.rmtree, self.work)
        self.folder = self.platform.settings_folder(self.platform.common_data)
        self.settings = self.folder / "Settings"

    def store(self, content):
        """Creates a settings file; its mode differs from that of the tool's files."""
        self.folder.mkdir(parents=True, exist_ok=True)
        self.settings.write_bytes(content)
        self.settings.chmod(0o640)
        return Stored.of(self.settings)

    def open(self, folder=None, **options):
        """Starts the tool, in self.work or another folder; returns the process and its window."""
        process = self.platform.start(self.desktop, folder or self.work, **options)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process, self.desktop.wait_for_window(process, self.platform.window_class)

    def run_tool(self, *actions, **options):
        """One run from start to end."""
        process, window = self.open(**options)
        for act in actions:
            act(self.desktop, window)
        return finish(process)

    def block_folder(self):
        """Puts a file where a folder should be; returns the line that reports it."""
        (self.platform.common_data / "Quorvane").write_bytes(b"in the way")
        folder = self.platform.folder_text
        return f"[CRIT] GASSERT failed at configure.cpp:34 (CHECKF) ({folder})\n"

    def lose_data_folder(self):
        """Removes the application data folder; returns the line that reports it."""
        self.platform.common_data.rmdir()
        return "[CRIT] GASSERT failed at cutl_environment.cpp:106 (CHECKF) ()\n"

    def assert_evidence(self, result, program, stdout=""):
        """Asserts that the program crashed and reported that; returns what the dump contains."""
        name = f"{program.stem}-{TAG}.dmp"
        stdout += (f"[CRIT] Wrote minidump for '{program.stem}' to '.\\dumps\\{name}', "
                   f"version '{TAG}'\n")
        self.assert_ended(result, stdout, self.platform.crash_status)
        return self.platform.open_dump(self.work / "dumps" / name, program)

    def assert_ended(self, result, stdout="", status=0):
        self.assertEqual((result.status, result.stdout), (status, stdout), result.stderr)

    def assert_replaced(self, before, content, path=None):
        path = path or self.settings
        after = Stored.of(path)
        self.assertEqual(after.content, content)
        if self.platform.stored_mode is not None:
            self.assertEqual(after.mode, self.platform.stored_mode)
        self.assertEqual(os.listdir(path.parent), [path.name], "only the file itself remains")
        if before is not None:
            self.assertNotEqual(after.inode, before.inode, "a new file took the old one's place")

    def assert_untouched(self, before):
        if before is not None:
            self.assertEqual(Stored.of(self.settings), before)
        self.assertEqual(os.listdir(self.folder), [] if before is None else ["Settings"])


class Editing(Scenario):
    """Runs that keep or replace the file."""

    def check(self, row):
        before = None if row.before is None else self.store(row.before)
        self.assert_ended(self.run_tool(*row.actions))
        if row.after is None:
            self.assert_untouched(before)
        else:
            self.assert_replaced(before, row.after)


@rows(KEPT)
class Keeping(Editing):
    """Runs that leave the file alone."""


@rows(WRITTEN)
class Writing(Editing):
    """Runs that replace the file."""


class Starting(Scenario):
    """Runs in other working directories or with arguments."""

    def check_one_edit(self, **options):
        before = self.store(NVR)
        self.assert_ended(self.run_tool(NEW_ADDRESS, TAB, NEW_PORT, ENTER, **options))
        self.assert_replaced(before, CHANGED)

    def test_in_the_folder_of_the_tool(self):
        self.check_one_edit(folder=self.platform.tool.parent)

    def test_with_jitd(self):
        self.check_one_edit(arguments=["jitd"])

    def test_without_opengl(self):
        if not (loads_opengl := self.platform.loads_opengl):
            self.skipTest("Qt asks the system for it on X11 only")
        process, _ = self.open()
        self.assertFalse(loads_opengl(process), "two fields need no graphics driver")

    def test_with_its_files_in_the_working_directory_only(self):
        alone = shutil.copy(self.platform.tool, self.work)
        self.check_one_edit(folder=self.platform.tool.parent, program=alone)


class Failing(Scenario):
    """Runs in which the system refuses something."""

    CHANGE = (NEW_ADDRESS, TAB, NEW_PORT, ENTER)

    def test_settings_is_a_folder(self):
        (self.settings / "inside").mkdir(parents=True)
        result = self.run_tool(*self.CHANGE, helper=["--show", "WARN"])
        target = re.escape(self.platform.folder_text + r"\Settings")
        self.assertEqual(result.status, 0)
        self.assertRegex(result.stdout, rf"\[WARN\] '.+'=>'{target}' failed : .+\n"
                         rf"\[WARN\] utl::File::createFromMemSafe\({target},31B,flags=0,"
                         r"mode=384\) - failed renaming file from temporary '.+'\n$")
        self.assertEqual(os.listdir(self.folder), ["Settings"], "the temporary file is gone")
        self.assertEqual(os.listdir(self.settings), ["inside"])

    def test_folder_is_read_only(self):
        before = self.store(NVR)
        self.folder.chmod(0o555)
        self.addCleanup(self.folder.chmod, 0o755)
        probe = subprocess.run([*confinement(), "touch", str(self.folder / "probe")],
                               capture_output=True, check=False)
        self.assertNotEqual(probe.returncode, 0, "this machine does not heed permissions")
        self.assert_ended(self.run_tool(*self.CHANGE, confined=True))
        self.assert_untouched(before)
        result = self.run_tool(*self.CHANGE, confined=True,
                               helper=["--show", "WARN", "--show", "NORM"])
        self.assertEqual(result.status, 0)
        self.assertRegex(result.stdout, r"^\[WARN\] .+\n\[WARN\] .*File::createFromMemSafe.* - "
                                        r"failed creating temp file .+\n$")
        self.assert_untouched(before)

    def test_file_is_unreadable(self):
        before = self.store(NVR)
        self.settings.chmod(0)
        self.assert_ended(self.run_tool(TAB, NEW_PORT, ENTER, confined=True))
        self.assert_replaced(before, section("", 81))

    def test_folder_cannot_be_created(self):
        line = self.block_folder()
        self.assert_ended(self.run_tool(*self.CHANGE), line)
        self.assertEqual((self.platform.common_data / "Quorvane").read_bytes(), b"in the way")

    def test_data_folder_cannot_be_found(self):
        line = self.lose_data_folder()
        instead = self.platform.settings_folder(self.work / "data") / "Settings"
        self.assert_ended(self.run_tool(*self.CHANGE), line)
        self.assert_replaced(None, CHANGED, instead)
        before = Stored.of(instead)
        self.assert_ended(self.run_tool(TAB, replace("82"), ENTER), line)
        self.assert_replaced(before, section("10.0.0.2", 82), instead)


class Stopping(Scenario):
    """Runs that end by a fault; the status is the guard's or, without it, the fault's own."""

    def assert_stopped(self, line):
        """A failed check stops the tool before it has a window."""
        def start(*arguments):
            return finish(self.platform.start(self.desktop, self.work, arguments,
                                              helper=["--stop-on-check"]))
        evidence = self.assert_evidence(start(), self.platform.helper, line)
        self.assertEqual(evidence.cause, self.platform.null_write)
        self.assertEqual(evidence.functions[0], "core::deliberateFault()")
        self.assert_ended(start("jitd"), line, self.platform.fault_status)

    def test_a_handler_may_stop_without_data_folder(self):
        self.assert_stopped(self.lose_data_folder())
        self.assertNotIn("data", os.listdir(self.work), "it stopped before making a folder")

    def test_a_handler_may_stop_without_settings_folder(self):
        self.assert_stopped(self.block_folder())

    def fault_in_dialog(self, *arguments):
        before = self.store(NVR)
        process, window = self.open(arguments=arguments)
        NEW_ADDRESS(self.desktop, window)
        self.platform.provoke_fault(process)
        result = finish(process)
        self.assert_untouched(before)
        return result.status

    def test_jitd_leaves_a_fault_to_the_debugger(self):
        self.assertEqual(self.fault_in_dialog("first", "jitd"), self.platform.fault_status)

    def test_without_jitd_itself_a_fault_is_guarded(self):
        status = self.fault_in_dialog("JITD", "-jitd", "jitd2")
        self.assertEqual(status, self.platform.crash_status)


class Logging(Scenario):
    """Lines on channels that are off or silent by default."""

    def test_only_a_change_is_logged(self):
        self.store(NVR)
        shown = ["--show", "NORM"]
        self.assert_ended(self.run_tool(ENTER, helper=shown))
        # There is nothing between the new address and port; tools that read the log rely on this.
        self.assert_ended(self.run_tool(NEW_ADDRESS, TAB, NEW_PORT, ENTER, helper=shown),
                          "[NORM] NVR connection changed from '10.0.0.1:80' to '10.0.0.281'\n")


class Reporting(Scenario):
    """From a failed check on a station to the page that shows it."""

    def test_a_failure_is_on_the_page_with_its_backtrace(self):
        collector = self.platform.start(self.desktop, self.work, program=self.collector,
                                        arguments=["--port", "0", "--once"])
        self.addCleanup(collector.communicate)
        self.addCleanup(collector.kill)
        port = re.fullmatch(r"receiving on 127\.0\.0\.1 port (\d+), showing on (\S+)\r?\n",
                            collector.stdout.readline())
        station = self.work / "station"
        (station / "settings").mkdir(parents=True)
        (station / "settings" / "testing.ini").write_text(
            f"[general]\nsend_address 127.0.0.1\nsend_port {port[1]}\n"
            "[assert]\nsend true\nbacktrace true\n", "ascii")
        line = self.block_folder()
        self.assert_ended(self.run_tool(ESCAPE, folder=station), line)
        result = finish(collector)
        self.assertEqual((result.status, result.stderr), (0, ""))
        page = (self.work / port[2]).read_text("utf-8")
        self.assertIn("<strong>configure.cpp:34</strong>", page)
        self.assertIn(f"<dd>{self.platform.folder_text}</dd>", page)
        self.assertRegex(page.split("<pre")[1].split("</pre>")[0], r"configure::main\b")
