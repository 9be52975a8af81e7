"""Headless Chromium, driven by its debugging protocol over two pipes."""

import base64
import json
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

PATIENCE = 60  # seconds to wait for anything before giving up

PROGRAM = shutil.which("chromium") or shutil.which("chromium-browser")
OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync",
           "--hide-scrollbars", "--remote-debugging-pipe"]


class Browser:
    """A context manager: one page, which `open` loads."""

    def __enter__(self):
        self._home = tempfile.TemporaryDirectory(prefix="browser-", ignore_cleanup_errors=True)
        read_commands, self._commands = os.pipe()
        self._answers, write_answers = os.pipe()
        # It reads from descriptor 3 and writes to 4.
        command = f'exec 3<&{read_commands} 4>&{write_answers}; exec "$@"'
        self._process = subprocess.Popen(
            ["bash", "-c", command, "bash", PROGRAM, *OPTIONS, f"--user-data-dir={self._home.name}"],
            pass_fds=(read_commands, write_answers), stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        os.close(read_commands)
        os.close(write_answers)
        self._buffer = b""
        self._last = 0
        self._session = None
        self.events = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Log", "Runtime", "Network"):
            self.call(f"{domain}.enable")
        return self

    def __exit__(self, *exception):
        os.close(self._commands)
        self._process.terminate()
        self._process.wait(PATIENCE)
        os.close(self._answers)
        self._home.cleanup()

    def call(self, method, **parameters):
        self._last += 1
        message = {"id": self._last, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._commands, json.dumps(message).encode() + b"\0")
        while (answer := self._next()).get("id") != self._last:
            self.events.append(answer)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']}")
        return answer["result"]

    def _next(self):
        while b"\0" not in self._buffer:
            piece = os.read(self._answers, 1 << 20)
            if not piece:
                raise RuntimeError("the browser has ended")
            self._buffer += piece
        message, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(message)

    def open(self, path, width=1200, height=900, dark=False):
        self.events.clear()
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.call("Page.navigate", url=Path(path).resolve().as_uri())
        while not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self._next())

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"])
        return result["result"].get("value")

    def complaints(self):
        """The errors of the page, as the browser reports them."""
        return [event["params"] for event in self.events if event.get("method") in
                ("Log.entryAdded", "Runtime.exceptionThrown", "Network.loadingFailed")]

    def requests(self):
        return [event["params"]["request"]["url"] for event in self.events
                if event.get("method") == "Network.requestWillBeSent"]

    def take_picture(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        Path(path).write_bytes(base64.b64decode(data))
