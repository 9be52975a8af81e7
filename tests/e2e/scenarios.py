"""What an operator does with the tool, and what must come of it.

Each scenario opens the real program in a real window, works it by keyboard or mouse,
and compares the settings file, the standard output and the exit status.
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
    """Types the text over what the field holds."""
    def act(desktop, window):
        desktop.press("ctrl+a", "Delete")
        if text:
            desktop.type(text)
    return act


def click(right, bottom):
    """Clicks so many pixels away from the window's right and bottom edges."""
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


class Kept(NamedTuple):
    """The file is left alone."""
    name: str
    before: Optional[bytes]  # None: there is no file
    actions: list


class Written(NamedTuple):
    """The file is replaced."""
    name: str
    before: Optional[bytes]
    actions: list
    after: bytes


KEPT = [
    Kept("cancelled_by_escape", NVR, [NEW_ADDRESS, ESCAPE]),
    Kept("cancelled_by_mouse", NVR, [NEW_ADDRESS, CANCEL_BUTTON]),
    Kept("cancelled_by_space_on_the_button", NVR, [NEW_ADDRESS, TAB, TAB, TAB, SPACE]),
    Kept("cancelled_by_enter_on_the_button", NVR, [NEW_ADDRESS, TAB, TAB, TAB, ENTER]),
    Kept("window_closed", NVR, [NEW_ADDRESS, CLOSE_WINDOW]),
    Kept("accepted_without_change", NVR, [ENTER]),
    Kept("accepted_with_the_same_text_typed_again", NVR, [replace("10.0.0.1"), ENTER]),
    Kept("accepted_empty_without_a_file", None, [ENTER]),
    Kept("accepted_empty_with_an_empty_file", b"", [ENTER]),
    Kept("accepted_empty_with_a_file_of_something_else", b"\x00\x01=\n[\n]]\n\xff", [ENTER]),
    Kept("accepted_without_change_in_a_quoted_value", section('"front door"', 80), [ENTER]),
]

WRITTEN = [
    Written("both_changed", NVR, [NEW_ADDRESS, TAB, NEW_PORT, ENTER], CHANGED),
    Written("address_changed", NVR, [NEW_ADDRESS, ENTER], section("10.0.0.2", 80)),
    Written("port_changed", NVR, [TAB, NEW_PORT, ENTER], section("10.0.0.1", 81)),
    Written("accepted_by_mouse", NVR, [NEW_ADDRESS, OK_BUTTON], section("10.0.0.2", 80)),
    Written("accepted_by_space_on_the_button", NVR, [NEW_ADDRESS, TAB, TAB, SPACE],
            section("10.0.0.2", 80)),
    Written("tab_comes_round_to_the_address", NVR, [TAB, TAB, TAB, TAB, NEW_ADDRESS, ENTER],
            section("10.0.0.2", 80)),
    Written("shift_tab_goes_back_over_cancel_to_ok", NVR,
            [NEW_ADDRESS, press("shift+Tab", "shift+Tab"), SPACE], section("10.0.0.2", 80)),
    Written("both_emptied", NVR, [replace(""), TAB, replace(""), ENTER], section("", "")),
    Written("umlauts", NVR, [replace("Tür-Süd.Straße"), ENTER], section("Tür-Süd.Straße", 80)),
    Written("words_are_quoted", NVR, [replace("front door"), ENTER], section('"front door"', 80)),
    Written("blanks_at_the_ends_are_kept", NVR, [replace(" 10.0.0.2 "), ENTER],
            section(" 10.0.0.2 ", 80)),
    Written("any_text_is_accepted", NVR, [replace('#1;a="b"'), TAB, replace("-x"), ENTER],
            section('#1;a="b"', "-x")),
    Written("the_rest_of_the_file_is_dropped",
            b"# by hand\nTop 1\n[Other]\nKey = value\n[NVR]\nPort = 80\nUser = me\n"
            b"Address = 10.0.0.1 # main\n",
            [TAB, NEW_PORT, ENTER], section("10.0.0.1", 81)),
    Written("the_first_of_two_values_counts",
            b"[NVR]\nAddress 10.0.0.1\nAddress 10.9.9.9\nPort 80\n",
            [TAB, NEW_PORT, ENTER], section("10.0.0.1", 81)),
    Written("lines_may_end_in_cr_lf", NVR.replace(b"\n", b"\r\n"), [TAB, NEW_PORT, ENTER],
            section("10.0.0.1", 81)),
    Written("a_missing_value_starts_empty", b"[NVR]\nPort=80\n", [TAB, NEW_PORT, ENTER],
            section("", 81)),
    Written("names_are_case_sensitive", b"[nvr]\nAddress 1\n[NVR]\nport 80\n",
            [TAB, NEW_PORT, ENTER], section("", 81)),
    Written("without_a_file", None, [NEW_ADDRESS, TAB, NEW_PORT, ENTER], CHANGED),
    Written("with_an_empty_file", b"", [TAB, NEW_PORT, ENTER], section("", 81)),
    # The field cannot hold such bytes, so its text differs from the file without any typing.
    Written("bytes_that_are_no_text", b"[NVR]\nAddress caf\xe9\nPort 80\n", [ENTER],
            section("caf\ufffd", 80)),
]


TAG = "tag_orvistrand_2_1_rc_1_220329-103018"


class Crash(NamedTuple):
    """The program crashes while the dialog is open."""
    name: str
    kind: str  # the helper's word for it
    function: Optional[str]  # where; None if the dump need not know


CRASHES = [
    Crash("division", "division", "divideByZero"),
    Crash("bad_jump", "badJump", "jumpToNowhere"),
    Crash("stack_overflow", "stackOverflow", "overflowStack"),
    Crash("exception", "exception", None),
]


def rows(table):
    """Gives a class one test for each row, which its method `check` judges."""
    def decorate(cls):
        for row in table:
            setattr(cls, f"test_{row.name}", lambda self, row=row: self.check(row))
        return cls
    return decorate


class Scenario(unittest.TestCase):
    """A scenario starts with an empty data folder and an empty working directory."""

    maxDiff = None
    desktop = None  # both are set by the runner
    platform = None

    def setUp(self):
        recreate(self.platform.common_data)
        self.work = Path(tempfile.mkdtemp(prefix="e2e-"))
        self.addCleanup(shutil.rmtree, self.work)
        self.folder = self.platform.settings_folder(self.platform.common_data)
        self.settings = self.folder / "Settings"

    def store(self, content, path=None):
        """Puts a settings file there; what the tool writes itself has another mode."""
        path = path or self.settings
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        path.chmod(0o640)
        return Stored.of(path)

    def open(self, folder=None, **options):
        """Starts the tool, in the working directory or another; the process and its window."""
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
        """Puts a file where a folder should be; the line that reports it."""
        (self.platform.common_data / "Quorvane").write_bytes(b"in the way")
        folder = self.platform.folder_text(self.platform.common_data)
        return f"[CRIT] GASSERT failed at configure.cpp:34 (CHECKF) ({folder})\n"

    def lose_data_folder(self):
        """Leaves no application data folder to be found; the line that reports it."""
        self.platform.common_data.rmdir()
        return "[CRIT] GASSERT failed at cutl_environment.cpp:106 (CHECKF) ()\n"

    def assert_evidence(self, result, program, stdout=""):
        """That the program ended by a crash that it told about; what the dump holds."""
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


@rows(KEPT)
class Keeping(Scenario):
    """Runs that leave the file alone."""

    def check(self, row):
        before = None if row.before is None else self.store(row.before)
        self.assert_ended(self.run_tool(*row.actions))
        self.assert_untouched(before)


@rows(WRITTEN)
class Writing(Scenario):
    """Runs that replace the file."""

    def check(self, row):
        before = None if row.before is None else self.store(row.before)
        self.assert_ended(self.run_tool(*row.actions))
        self.assert_replaced(before, row.after)


class Starting(Scenario):
    """Runs from other places than a folder of their own."""

    def check_one_edit(self, **options):
        before = self.store(NVR)
        self.assert_ended(self.run_tool(NEW_ADDRESS, TAB, NEW_PORT, ENTER, **options))
        self.assert_replaced(before, CHANGED)

    def test_in_the_folder_of_the_tool(self):
        self.check_one_edit(folder=self.platform.tool.parent)

    def test_with_its_files_in_the_working_directory_only(self):
        alone = shutil.copy(self.platform.tool, self.work)
        self.check_one_edit(folder=self.platform.tool.parent, program=alone)


class Failing(Scenario):
    """Runs in which the world does not play along."""

    CHANGE = (NEW_ADDRESS, TAB, NEW_PORT, ENTER)

    def test_settings_is_a_folder(self):
        (self.settings / "inside").mkdir(parents=True)
        self.assert_ended(self.run_tool(*self.CHANGE))
        self.assertEqual(os.listdir(self.folder), ["Settings"], "the temporary file is gone")
        self.assertEqual(os.listdir(self.settings), ["inside"])

    def test_settings_is_a_folder_says_so(self):
        self.settings.mkdir(parents=True)
        result = self.run_tool(*self.CHANGE, helper=["--show", "WARN"])
        target = self.platform.folder_text(self.platform.common_data) + r"\Settings"
        self.assertEqual(result.status, 0)
        self.assertRegex(result.stdout, rf"\[WARN\] '.+'=>'{re.escape(target)}' failed : .+\n")
        self.assertRegex(result.stdout,
                         rf"\[WARN\] utl::File::createFromMemSafe\({re.escape(target)},31B,flags=0,"
                         r"mode=384\) - failed renaming file from temporary '.+'\n")

    def make_read_only(self):
        """A folder that takes no new file, from root neither; its file may be read."""
        before = self.store(NVR)
        self.folder.chmod(0o555)
        self.addCleanup(self.folder.chmod, 0o755)
        probe = subprocess.run([*confinement(), "touch", str(self.folder / "probe")],
                               capture_output=True, check=False)
        self.assertNotEqual(probe.returncode, 0, "this machine does not heed permissions")
        return before

    def test_folder_is_read_only(self):
        before = self.make_read_only()
        self.assert_ended(self.run_tool(*self.CHANGE, confined=True))
        self.assert_untouched(before)

    def test_folder_is_read_only_says_so(self):
        before = self.make_read_only()
        result = self.run_tool(*self.CHANGE, confined=True,
                               helper=["--show", "WARN", "--show", "NORM"])
        folder = self.platform.folder_text(self.platform.common_data)
        self.assertEqual(result.status, 0)
        self.assertRegex(result.stdout, self.platform.temp_file_refused(re.escape(folder)))
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
        found_instead = self.platform.settings_folder(self.work / "data") / "Settings"
        before = self.store(NVR, found_instead)
        self.assert_ended(self.run_tool(TAB, NEW_PORT, ENTER), line)
        self.assert_replaced(before, section("10.0.0.1", 81), found_instead)

    def test_data_folder_cannot_be_found_and_nothing_is_there_instead(self):
        line = self.lose_data_folder()
        self.assert_ended(self.run_tool(*self.CHANGE), line)
        self.assert_replaced(None, CHANGED,
                             self.platform.settings_folder(self.work / "data") / "Settings")


class Stopping(Scenario):
    """Runs that end by a fault: with the guard its status, without it the fault's own."""

    def assert_stopped(self, line):
        for arguments in ([], ["jitd"]):
            process = self.platform.start(self.desktop, self.work, arguments,
                                          helper=["--stop-on-check"])
            result = finish(process)
            if arguments:
                self.assert_ended(result, line, self.platform.fault_status)
            else:
                evidence = self.assert_evidence(result, self.platform.helper, line)
                self.assertEqual(evidence.cause, self.platform.causes["null write"])
                self.assertEqual(evidence.functions[0], "core::deliberateFault()")

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

    def test_a_fault_is_guarded(self):
        self.assertEqual(self.fault_in_dialog(), self.platform.crash_status)

    def test_jitd_leaves_a_fault_to_the_debugger(self):
        self.assertEqual(self.fault_in_dialog("first", "jitd"), self.platform.fault_status)

    def test_only_jitd_itself_does(self):
        status = self.fault_in_dialog("JITD", "-jitd", "jitd2")
        self.assertEqual(status, self.platform.crash_status)

    def test_jitd_changes_nothing_else(self):
        before = self.store(NVR)
        self.assert_ended(self.run_tool(NEW_ADDRESS, TAB, NEW_PORT, ENTER, arguments=["jitd"]))
        self.assert_replaced(before, CHANGED)


@rows(CRASHES)
class Crashing(Scenario):
    """Runs that end by a crash of the program itself."""

    def crash(self, kind):
        (self.work / "files").mkdir()
        return finish(self.platform.start(self.desktop, self.work, helper=["--crash", kind]))

    def check(self, row):
        helper = self.platform.helper
        evidence = self.assert_evidence(self.crash(row.kind), helper)
        record = (self.work / "files" / "dumps.log").read_text("ascii")
        self.assertRegex(record, rf"^\d{{4}}-\d\d-\d\d \d\d:\d\d:\d\d: {helper.stem} {TAG}\n$")
        self.assertEqual(evidence.cause, self.platform.causes[row.name.replace("_", " ")])
        self.assertIn(helper.name, evidence.modules)
        if row.function is not None:
            self.assertIn(row.function, " ".join(evidence.functions[:2]))

    def test_on_another_thread_is_left_to_the_system(self):
        self.assertEqual(self.crash("thread").status, self.platform.fault_status)
        self.assertEqual(os.listdir(self.work), ["files"])

    def test_at_exit_is_left_to_the_system(self):
        self.assertEqual(self.crash("exit").status, self.platform.fault_status)
        self.assertEqual(os.listdir(self.work), ["files"])


class Logging(Scenario):
    """Lines on channels that are off or silent unless someone asks for them."""

    def test_a_change_is_logged(self):
        self.store(NVR)
        result = self.run_tool(NEW_ADDRESS, TAB, NEW_PORT, ENTER,
                               helper=["--show", "NORM"])
        # Nothing stands between the new address and port; readers of the log rely on it.
        self.assert_ended(
            result, "[NORM] NVR connection changed from '10.0.0.1:80' to '10.0.0.281'\n")

    def test_no_change_is_not_logged(self):
        self.store(NVR)
        self.assert_ended(self.run_tool(ENTER, helper=["--show", "NORM"]))

    def test_a_repeated_key_is_warned_about(self):
        self.store(NVR + b"Port 8080\n")
        result = self.run_tool(ESCAPE, helper=["--show", "WARN"])
        path = self.platform.folder_text(self.platform.common_data) + r"\Settings"
        self.assert_ended(result, f"[WARN] utl::IniReader::load({path}) - "
                                  "duplicate property 'Port' in section 'NVR'\n")
