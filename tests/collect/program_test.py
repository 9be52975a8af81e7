#!/usr/bin/env python3
"""Runs orvistrand-collect as people do; CTest calls it for each class.

    tests/collect/program_test.py --program build/linux/collect/orvistrand-collect Receiving
    tests/collect/program_test.py --pictures FOLDER Showing
"""

import argparse
import csv
import io
import json
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path
from xml.sax.saxutils import escape

import browser
from browser import PATIENCE, Browser

BUILD = Path(__file__).resolve().parents[2] / "build" / "linux"

STATION = {"type": "ASSERT", "file": "utl_file.cpp", "line": 55, "condition": "CHECKF",
           "message": "can't open 'a', 'b' already open", "backtrace": "", "level": 0,
           "count": 1, "total": 1, "utc": "2022-03-29 10:30:18", "server": "127.0.0.1",
           "product": "orvistrand", "swver": "tag_orvistrand_2_1_rc_1", "hostname": "station-4",
           "os": "win_i686", "build_id": "", "build_time": "220329-103018",
           "action": "continue", "log_url": ""}
BACKTRACE = """Backtrace START --------------------------------------------

#00 in utl::File::openFile(std::string const&, int, int) at utl_file.cpp:93 (configure.exe)
#01 in utl::IniReader::load(std::string const&) at utl_inireader.cpp:211 (configure.exe)
#02 in configure::main(int, char**) at configure.cpp:141 (configure.exe)

Backtrace END ----------------------------------------------"""
HOSTILE = "</pre></details></style><script>document.title='owned'</script><img src=x onerror=alert(1)>"


def document(**fields):
    elements = "".join(f"<{name}>{escape(str(text))}</{name}>\n"
                       for name, text in {**STATION, **fields}.items())
    return f'<?xml version="1.0" encoding="utf-8"?>\n<assert>\n{elements}</assert>\n'.encode()


class Program(unittest.TestCase):
    program = None  # set below

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="collect-")
        self.addCleanup(folder.cleanup)
        self.work = Path(folder.name)
        self.page = self.work / "collected" / "index.html"

    def start(self, *options):
        """Starts the program; returns its process and port."""
        process = subprocess.Popen([self.program, "--port", "0", *options], cwd=self.work,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        line = process.stdout.readline()
        self.assertRegex(line, r"^receiving on 127\.0\.0\.1 port \d+, showing on "
                               r"collected/index\.html\n$")
        return process, int(line.split(" port ")[1].split(",")[0])

    def stop(self, process, how=signal.SIGTERM):
        process.send_signal(how)
        rest = process.stdout.read()
        self.assertEqual(process.wait(PATIENCE), 0, rest)
        return rest

    def run_program(self, *options):
        return subprocess.run([self.program, *options], cwd=self.work, capture_output=True,
                              text=True, timeout=PATIENCE, check=False)

    def exported(self):
        result = self.run_program("--export", "json")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return json.loads(result.stdout)

    def wait_for(self, condition, what):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), deadline, f"waited in vain for {what}")
            time.sleep(0.05)

    def wait_for_page(self, *texts):
        self.wait_for(lambda: self.page.exists() and
                      all(text in self.page.read_text("utf-8") for text in texts), texts)

    @staticmethod
    def send(port, *datagrams):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            for datagram in datagrams:
                sender.sendto(datagram, ("127.0.0.1", port))


class Receiving(Program):
    """What happens to reports."""

    def test_the_page_is_whole_again_after_each_end(self):
        for number, how in enumerate((signal.SIGTERM, signal.SIGINT, signal.SIGKILL), start=1):
            process, port = self.start()
            self.send(port, document(hostname=f"station-{number}"))
            self.wait_for_page(*[f"station-{i}" for i in range(1, number + 1)])
            if how == signal.SIGKILL:
                process.kill()
                process.wait()
            else:
                self.assertEqual(self.stop(process, how), "")
        self.assertEqual([entry["hostname"] for entry in self.exported()],
                         ["station-3", "station-2", "station-1"])
        log = (self.work / "collected" / "collect.log").read_text("utf-8")
        self.assertEqual(log.count(" INFO collect::Receiver::start(127.0.0.1,"), 3)

    def test_what_arrived_just_before_the_end_is_on_the_page(self):
        process, port = self.start()
        self.wait_for_page("Nothing has failed")
        self.send(port, document(message="the last words"))
        self.wait_for(lambda: "the last words" in
                      (self.work / "collected" / "failures.jsonl").read_text("utf-8"), "a line")
        self.stop(process)
        self.wait_for_page("the last words")

    def test_it_ends_after_one_report_where_that_is_asked(self):
        process, port = self.start("--once")
        self.send(port, b"no report", document(message="one"))
        self.assertIn("[WARN]", process.stdout.read())
        self.assertEqual(process.wait(PATIENCE), 0)
        self.wait_for_page("one")
        rows = list(csv.DictReader(io.StringIO(self.run_program("--export", "csv").stdout)))
        self.assertEqual([(row["message"], row["failures"]) for row in rows], [("one", "1")])

    def test_what_it_cannot_do_it_says(self):
        (self.work / "file").write_bytes(b"")
        for options, status, text in (
                (["--port", "x"], 2, "'x' is not a port"),
                (["--listen", "nowhere"], 1, "cannot receive on nowhere"),
                (["--folder", "file/below"], 1, "cannot make 'file/below'")):
            result = self.run_program(*options)
            self.assertEqual(result.returncode, status, options)
            self.assertIn(f"orvistrand-collect: {text}", result.stderr)
        self.assertIn("Usage: ", self.run_program("--help").stdout)

    def test_one_works_in_a_folder_at_a_time(self):
        first, _ = self.start()
        second = self.run_program("--port", "0")
        self.assertEqual(second.returncode, 1)
        self.assertIn("another collector is at work in 'collected'", second.stderr)
        first.kill()
        first.wait()
        self.stop(self.start()[0])

    def test_a_burst_from_eight_senders(self):
        """Lost reports are counted as missing; with enough buffer space none is lost."""
        reports = 1250
        process, port = self.start()
        self.wait_for_page("Nothing has failed")
        senders = [socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(8)]

        def burst(sender):
            for number in range(1, reports + 1):
                sender.sendto(document(total=number), ("127.0.0.1", port))

        threads = [threading.Thread(target=burst, args=[sender]) for sender in senders]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        # Only a later report reveals lost ones, and it may be lost itself.
        deadline = time.monotonic() + PATIENCE
        sent = 0
        while f"<td>{sent}</td>" not in self.page.read_text("utf-8"):
            self.assertLess(time.monotonic(), deadline, "waited in vain for the totals")
            reports += 1
            sent = len(senders) * reports
            for sender in senders:
                sender.sendto(document(total=reports), ("127.0.0.1", port))
            for _ in range(50):
                if f"<td>{sent}</td>" in self.page.read_text("utf-8"):
                    break
                time.sleep(0.1)
        for sender in senders:
            sender.close()
        self.stop(process)
        entry, = self.exported()
        self.assertEqual(entry["failures"] + entry["missing"], sent)
        log = (self.work / "collected" / "collect.log").read_text("utf-8")
        room = int(log.split("the system keeps ")[1].split()[0])
        if room >= sent * 4096:  # the system's count for a report of one kilobyte
            self.assertEqual(entry["missing"], 0)
        print(f"{sent} reports, room for {room} bytes, {entry['missing']} lost", file=sys.stderr)


@unittest.skipUnless(browser.PROGRAM, "no Chromium here")
class Showing(Program):
    """The page in a browser."""

    pictures = None  # the folder for them

    def setUp(self):
        super().setUp()
        process, port = self.start()
        self.send(port, *[document(hostname=f"station-{i}", total=2 * i, count=i,
                                   backtrace=BACKTRACE) for i in range(1, 6)],
                  document(type="ALERT", file="core_inet.cpp", line=40, message="no network",
                           product="recorder", swver="3.2.1", hostname="station-17"),
                  document(file="configure.cpp", line=34, hostname="station-3",
                           message=r"C:\ProgramData\Quorvane\Orvistrand"))
        self.wait_for_page("configure.cpp:34")
        self.process, self.port = process, port
        self.browser = Browser().__enter__()
        self.addCleanup(self.browser.__exit__)

    def shown(self):
        return self.browser.evaluate(
            "[...document.querySelectorAll('.failure')].filter(f => f.checkVisibility())"
            ".map(f => f.querySelector('strong').textContent)")

    def filter(self, text):
        self.browser.evaluate("document.getElementById('filter').focus();"
                              "document.getElementById('filter').select()")
        self.browser.call("Input.insertText", text=text)

    def test_the_filter_shows_what_contains_its_text(self):
        self.browser.open(self.page)
        sites = ["configure.cpp:34", "core_inet.cpp:40", "utl_file.cpp:55"]
        self.assertEqual(self.shown(), sites, "the latest first")
        for text, expected in (("CORE_", sites[1:2]), ("openfile", sites[2:]),
                               ("station-3", [sites[0], sites[2]]), ("nobody", [])):
            self.filter(text)
            self.assertEqual(self.shown(), expected, text)
            self.assertRegex(self.browser.evaluate("document.getElementById('shown').value"),
                             rf"^{len(expected)} sites?$")
        self.assertEqual(self.browser.complaints(), [])

    def test_hostile_texts_stay_texts(self):
        fields = ("file", "condition", "message", "backtrace", "utc", "product", "swver",
                  "hostname", "os", "log_url")
        self.send(self.port, document(**{field: f"{field}{HOSTILE}\x7f\u202e" for field in fields}))
        self.wait_for_page("message&lt;/pre&gt;")
        self.browser.open(self.page)
        text = self.browser.evaluate("document.body.textContent")
        for field in fields:
            self.assertIn(field + HOSTILE, text)
        self.assertEqual(self.browser.evaluate("document.title"), "Failures")
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('img').length"), 0)
        self.assertEqual(self.browser.complaints(), [])
        self.assertEqual(self.browser.requests(), [self.page.resolve().as_uri()])

    def test_it_is_readable_everywhere(self):
        for name, width, dark in (("wide", 1100, False), ("wide-dark", 1100, True),
                                  ("narrow", 390, False), ("narrow-dark", 390, True)):
            self.browser.open(self.page, width, 1000, dark)
            self.browser.evaluate("document.querySelectorAll('.failure')[2].open = true;"
                                  "document.querySelector('.backtrace').open = true")
            self.assertLessEqual(self.browser.evaluate("document.documentElement.scrollWidth"),
                                 width, f"{name}: nothing leaves the screen at its side")
            self.assertGreaterEqual(self.contrast(), 4.5, name)
            if self.pictures:
                self.browser.take_picture(self.pictures / f"collect-{name}.png")

    def test_a_screen_reader_finds_its_way(self):
        self.browser.open(self.page)
        nodes = [node for node in self.browser.call("Accessibility.getFullAXTree")["nodes"]
                 if not node["ignored"]]
        names = {(node["role"]["value"], node.get("name", {}).get("value")) for node in nodes}
        for wanted in (("heading", "Failures"), ("heading", "Failures by site"),
                       ("heading", "Stations"), ("searchbox", "Show only what contains"),
                       ("status", ""), ("table", "Programs that reported"),
                       ("rowheader", "station-4"), ("columnheader", "Version"), ("main", "")):
            self.assertIn(wanted, names)

    def contrast(self):
        """The lowest contrast between the page's texts and their background."""
        return self.browser.evaluate("""(() => {
            const light = text => { const [r, g, b] = text.match(/[\\d.]+/g).map(v => {
                v /= 255; return v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4 });
                return 0.2126 * r + 0.7152 * g + 0.0722 * b };
            const behind = e => { const c = getComputedStyle(e).backgroundColor;
                return c === 'rgba(0, 0, 0, 0)' ? behind(e.parentElement) : c };
            return Math.min(...[...document.querySelectorAll('body *')].map(e => {
                const [a, b] = [light(getComputedStyle(e).color), light(behind(e))];
                return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05) })) })()""")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=Path, default=BUILD / "collect" / "orvistrand-collect")
    parser.add_argument("--pictures", type=Path, help="a folder for pictures of the page")
    parser.add_argument("names", nargs="*", metavar="CLASS[.TEST]")
    arguments = parser.parse_args()
    Program.program = arguments.program.resolve()
    Showing.pictures = arguments.pictures
    loader = unittest.defaultTestLoader
    module = sys.modules[__name__]
    suite = (loader.loadTestsFromNames(arguments.names, module) if arguments.names
             else loader.loadTestsFromModule(module))
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    return 0 if result.testsRun and result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
