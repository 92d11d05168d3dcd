"""A headless Chromium, led over a pipe: a page is opened, looked at and printed as a user does."""

import base64
import itertools
import json
import os
import select
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

PROGRAM = shutil.which("chromium") or shutil.which("chromium-browser") or shutil.which("google-chrome")
SECONDS = 600
SECONDS_TO_END = 60
SECONDS_TO_VANISH = 60  # when it has been killed
# Whether all charts are drawn, or will be within a second: to ask again and again would be work for the page.
DRAWN_SOON = """
new Promise((done) => {
  const root = document.documentElement;
  const tell = () => done(root.dataset.charts === 'drawn');
  if (root.dataset.charts === 'drawn') tell();
  new MutationObserver(tell).observe(root, { attributeFilter: ['data-charts'] });
  setTimeout(tell, 1000);
})
"""


class Browser:
    """One tab. What it complains of and asks for is kept."""

    def __init__(self):
        self.home = tempfile.TemporaryDirectory(prefix="marrowctl_browser_")
        to_browser, self.out = os.pipe()
        self.answers, from_browser = os.pipe()
        self.process = subprocess.Popen(
            [PROGRAM, "--headless", "--remote-debugging-pipe", "--no-sandbox", "--disable-gpu",
             "--disable-dev-shm-usage", "--hide-scrollbars", "--disable-background-timer-throttling",
             "--disable-renderer-backgrounding", "--disable-backgrounding-occluded-windows", "--force-color-profile=srgb",
             "--no-first-run", f"--user-data-dir={self.home.name}/profile", "about:blank"],
            # The browser reads commands from descriptor 3 and writes to 4.
            preexec_fn=lambda: place(to_browser, from_browser), close_fds=False,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            # Whatever it writes lies in one folder: it is not tidy with temporary files.
            env={**os.environ, "TZ": "UTC", "HOME": self.home.name, "TMPDIR": self.home.name})
        os.close(to_browser)
        os.close(from_browser)
        self.numbers = itertools.count(1)
        self.pending = b""
        self.session = None
        self.complaints, self.requests, self.events = [], [], []
        try:
            self.attach()
        except BaseException:
            self.close()
            raise

    def attach(self):
        target = next(each for each in self.call("Target.getTargets")["targetInfos"]
                      if each["type"] == "page")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")
        # Times of the processor, not of the clock: other programs may be busy too.
        self.call("Performance.enable", timeDomain="threadTicks")

    def __enter__(self):
        return self

    def __exit__(self, *reason):
        self.close()

    def close(self):
        """Ends the browser as a user does, who closes it; kills it and what it started if it does not end."""
        for pipe in self.out, self.answers:
            os.close(pipe)
        try:
            self.process.wait(SECONDS_TO_END)
        except subprocess.TimeoutExpired:
            end_all_in(self.home.name)
            self.process.wait()
        wait_for_end_in(self.home.name)
        remove(self.home)

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
        """Opens a page and waits until it has drawn its charts."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.complaints, self.requests, self.events = [], [], []
        begin = time.monotonic()
        self.call("Page.navigate", url=path.as_uri())
        while "Page.loadEventFired" not in self.events:
            self.next_message()
        while not self.evaluate(DRAWN_SOON):
            assert time.monotonic() - begin < SECONDS, self.complaints

    def main_thread_seconds(self):
        """What the thread that runs scripts, lays out and paints has taken of a processor."""
        metrics = self.call("Performance.getMetrics")["metrics"]
        return next(each["value"] for each in metrics if each["name"] == "ThreadTime")

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


def end_all_in(home):
    # What one of them starts meanwhile is found in the next round.
    while found := processes_in(home):
        for process in found:
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        time.sleep(0.02)


def processes_in(home):
    """Numbers of the processes that write into this folder: the browser, and what it started in any session."""
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            # Nothing is left of a zombie's.
            if f"TMPDIR={home}\0".encode() in (process / "environ").read_bytes():
                found.append(int(process.name))
        except OSError:
            continue  # It ended meanwhile, or is another user's.
    return found


def remove(folder):
    # Helpers that hide their environment may write for a moment longer.
    begin = time.monotonic()
    while True:
        try:
            return folder.cleanup()
        except OSError:
            assert time.monotonic() - begin < SECONDS_TO_VANISH
            time.sleep(0.02)


def wait_for_end_in(home):
    # Helpers of the browser write into its folder until they end, a moment after it.
    begin = time.monotonic()
    while left := processes_in(home):
        assert time.monotonic() - begin < SECONDS_TO_VANISH, left
        time.sleep(0.02)
