"""A headless Chromium, led over a pipe: a page is opened, looked at and printed as a user does."""

import base64
import itertools
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

PROGRAM = shutil.which("chromium") or shutil.which("chromium-browser") or shutil.which("google-chrome")
SECONDS = 180


class Browser:
    """One tab. What it complains of and asks for is kept."""

    def __init__(self):
        self.profile = tempfile.TemporaryDirectory(prefix="marrowctl_browser_", ignore_cleanup_errors=True)
        to_browser, self.out = os.pipe()
        self.answers, from_browser = os.pipe()
        self.process = subprocess.Popen(
            [PROGRAM, "--headless", "--remote-debugging-pipe", "--no-sandbox", "--disable-gpu",
             "--disable-dev-shm-usage", "--hide-scrollbars", "--disable-background-timer-throttling",
             "--disable-renderer-backgrounding", "--disable-backgrounding-occluded-windows", "--force-color-profile=srgb",
             "--no-first-run", f"--user-data-dir={self.profile.name}", "about:blank"],
            # The browser reads commands from descriptor 3 and writes to 4.
            preexec_fn=lambda: place(to_browser, from_browser), close_fds=False,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env={**os.environ, "TZ": "UTC"})
        os.close(to_browser)
        os.close(from_browser)
        self.numbers = itertools.count(1)
        self.pending = b""
        self.session = None
        self.complaints, self.requests, self.events = [], [], []
        target = next(each for each in self.call("Target.getTargets")["targetInfos"]
                      if each["type"] == "page")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.out)
        os.close(self.answers)
        self.profile.cleanup()

    def call(self, method, **parameters):
        number = next(self.numbers)
        message = {"id": number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.out, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.next_message()
            if answer.get("id") == number:
                assert "error" not in answer, (method, answer)
                return answer["result"]

    def next_message(self):
        while b"\0" not in self.pending:
            ready, _, _ = select.select([self.answers], [], [], SECONDS)
            assert ready, "the browser does not answer"
            piece = os.read(self.answers, 1 << 20)
            assert piece, "the browser has ended"
            self.pending += piece
        text, self.pending = self.pending.split(b"\0", 1)
        message = json.loads(text)
        self.note(message.get("method"), message.get("params", {}))
        return message

    def note(self, event, details):
        self.events.append(event)
        if event == "Network.requestWillBeSent":
            self.requests.append(details["request"]["url"])
        if event in ("Runtime.exceptionThrown", "Runtime.consoleAPICalled", "Log.entryAdded"):
            self.complaints.append(details)

    def evaluate(self, script):
        result = self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True)
        assert "exceptionDetails" not in result, result
        return result["result"].get("value")

    def open(self, path, width, height=900, dark=False):
        """Opens a page and waits until it has drawn its charts; returns the seconds that took."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.complaints, self.requests = [], []
        begin = time.monotonic()
        self.call("Page.navigate", url=path.as_uri())
        while self.evaluate("document.documentElement?.dataset.charts") != "drawn":
            assert time.monotonic() - begin < SECONDS, self.complaints
            time.sleep(0.05)
        return time.monotonic() - begin

    def screenshot(self, path):
        size = self.call("Page.getLayoutMetrics")["cssContentSize"]
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True,
                         clip={**size, "x": 0, "y": 0, "scale": 1})
        path.write_bytes(base64.b64decode(shot["data"]))

    def pdf(self):
        printed = self.call("Page.printToPDF", preferCSSPageSize=True, printBackground=True)
        return base64.b64decode(printed["data"])


def place(reading, writing):
    # Out of the way first: either may be 3 or 4 itself.
    high = [os.dup2(reading, 100), os.dup2(writing, 101)]
    os.dup2(high[0], 3)
    os.dup2(high[1], 4)
    os.close(100)
    os.close(101)
