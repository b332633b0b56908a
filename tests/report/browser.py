"""Drives Chromium through its pipe: two file descriptors and JSON, so that a test
needs only a browser and Python."""

import base64
import json
import os
import shutil
import subprocess
import tempfile
import time

OPTIONS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-extensions",
    "--disable-dev-shm-usage", "--hide-scrollbars", "--force-color-profile=srgb", "--remote-debugging-pipe",
]


class Browser:
    """One browser with one page. `requests` and `problems` collect the page's requests and its errors."""

    def __init__(self, program="chromium", width=1400, height=1000):
        self.folder = tempfile.mkdtemp(prefix="kpt-browser-")
        to_browser, self.out = os.pipe()
        self.into, from_browser = os.pipe()

        def pipes():  # The browser reads from 3 and writes to 4.
            a, b = os.dup(to_browser), os.dup(from_browser)
            os.dup2(a, 3)
            os.dup2(b, 4)
            os.set_inheritable(3, True)
            os.set_inheritable(4, True)

        self.process = subprocess.Popen(
            [program, *OPTIONS, f"--user-data-dir={self.folder}"],
            preexec_fn=pipes, close_fds=False, start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.buffer = b""
        self.number = 0
        self.session = None
        self.requests = []
        self.problems = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(f"{domain}.enable")
        self.size(width, height)

    def size(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.session = None
            self.call("Browser.close")
        except (OSError, EOFError):
            pass
        os.close(self.out)
        os.close(self.into)
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def call(self, method, **parameters):
        """The answer of the browser; events before it are noted."""
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        text = json.dumps(message).encode() + b"\0"
        while text:
            text = text[os.write(self.out, text):]
        while True:
            answer = self._next()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self._note(answer)

    def _next(self):
        while b"\0" not in self.buffer:
            more = os.read(self.into, 1 << 20)
            if not more:
                raise EOFError("the browser has ended")
            self.buffer += more
        text, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(text)

    def _note(self, event):
        method, data = event.get("method"), event.get("params", {})
        if method == "Network.requestWillBeSent":
            self.requests.append(data["request"]["url"])
        elif method == "Runtime.exceptionThrown":
            details = data["exceptionDetails"]
            self.problems.append(details.get("exception", {}).get("description", details["text"]))
        elif method == "Runtime.consoleAPICalled" and data["type"] in ("error", "warning", "assert"):
            self.problems.append(" ".join(str(a.get("value", a.get("description"))) for a in data["args"]))
        elif method == "Log.entryAdded" and data["entry"]["level"] in ("error", "warning"):
            self.problems.append(data["entry"]["text"])
        elif method == "Page.javascriptDialogOpening":
            self.problems.append(f"dialog: {data['message']}")
            raise AssertionError(self.problems[-1])

    def ask(self, expression):
        """The value of an expression of the page; waits for a promise."""
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True, userGesture=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']['exception'].get('description')}")
        return answer["result"].get("value")

    def wait(self, expression, seconds=20):
        """Waits until an expression of the page is true, and returns how long that took."""
        since = time.monotonic()
        while not self.ask(expression):
            if time.monotonic() > since + seconds:
                raise AssertionError(f"never true: {expression}; problems: {self.problems}")
            time.sleep(0.02)
        return time.monotonic() - since

    def open(self, path, anchor="", seconds=60):
        """Opens a file, waits until it is ready, and returns the seconds that this took."""
        since = time.monotonic()
        # Opens an empty page before, because a new anchor alone would not load the file again.
        self.call("Page.navigate", url="about:blank")
        self.requests.clear()
        self.call("Page.navigate", url=f"file://{os.path.abspath(path)}{anchor}")
        self.wait("document.documentElement?.dataset.ready === 'true'", seconds)
        return time.monotonic() - since

    def key(self, key, text=None):
        code = {"Enter": 13, "ArrowDown": 40, "ArrowUp": 38, "ArrowLeft": 37, "ArrowRight": 39, "Escape": 27, "Tab": 9, "End": 35, "Home": 36}.get(key, 0)
        given = {"key": key, "windowsVirtualKeyCode": code}
        if key == "Enter":
            given["text"] = "\r"
        elif len(key) == 1:
            given["text"] = key
        self.call("Input.dispatchKeyEvent", type="keyDown", **given)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)

    def click(self, selector):
        """A real click in the middle of an element."""
        at = self.ask(f"""(() => {{ const node = document.querySelector({json.dumps(selector)}); node.scrollIntoView({{block: 'nearest'}});
            const box = node.getBoundingClientRect(); return [box.x + box.width / 2, box.y + box.height / 2]; }})()""")
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=at[0], y=at[1], button="left", clickCount=1)

    def type(self, text):
        self.call("Input.insertText", text=text)

    def colours(self, scheme):
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def screenshot(self, path, whole=False):
        data = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole, **(self._whole() if whole else {}))
        with open(path, "wb") as file:
            file.write(base64.b64decode(data["data"]))

    def _whole(self):
        size = self.call("Page.getLayoutMetrics")["cssContentSize"]
        return {"clip": {"x": 0, "y": 0, "width": size["width"], "height": size["height"], "scale": 1}}

    def pdf(self, path):
        data = self.call("Page.printToPDF", printBackground=True)
        with open(path, "wb") as file:
            file.write(base64.b64decode(data["data"]))
