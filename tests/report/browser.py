"""Headless Chromium, controlled through its debugging pipe: JSON messages, each followed by a zero byte.
Needs no package besides the browser itself."""

import base64
import fcntl
import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

_LIMIT_SECONDS = 60
_FLAGS = (
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--disable-dev-shm-usage", "--remote-debugging-pipe",
)


def _moved_up(descriptor):
    """Moves the descriptor to a number that is not 3 or 4."""
    moved = fcntl.fcntl(descriptor, fcntl.F_DUPFD_CLOEXEC, 10)
    os.close(descriptor)
    return moved


class _Pipe:
    """The two pipes that the browser has as its descriptors 3 and 4."""

    def __init__(self):
        self.browser_reads, self._write_end = map(_moved_up, os.pipe())
        self._read_end, self.browser_writes = map(_moved_up, os.pipe())
        self._received = b""

    def close_ends_of_browser(self):
        os.close(self.browser_reads)
        os.close(self.browser_writes)

    def close(self):
        os.close(self._write_end)
        os.close(self._read_end)

    def send(self, message):
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self._write_end, data):]

    def receive(self, deadline):
        """The next message, or None if none is received before the deadline."""
        while b"\0" not in self._received:
            left = max(0, deadline - time.monotonic())
            if not select.select([self._read_end], [], [], left)[0]:
                return None
            data = os.read(self._read_end, 1 << 16)
            if not data:
                raise RuntimeError("the browser has ended")
            self._received += data
        message, self._received = self._received.split(b"\0", 1)
        return json.loads(message)


def _start(pipe, profile):
    """Starts the browser through a shell, since only a shell can give the descriptors their numbers."""
    program = os.environ.get("STREAM_CHROMIUM", "chromium")
    command = [program, *_FLAGS, f"--user-data-dir={profile}", "about:blank"]
    script = f'exec "$@" 3<&{pipe.browser_reads} 4>&{pipe.browser_writes}'
    return subprocess.Popen(
        ["bash", "-c", script, "bash", *command], pass_fds=(pipe.browser_reads, pipe.browser_writes),
        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


class Browser:
    """One browser process, whose pages share nothing."""

    def __init__(self):
        self._next_id = 0
        self._pages = {}  # by the session id in their messages
        self._profile = tempfile.mkdtemp(prefix="stream-browser-")
        self._pipe = _Pipe()
        self._process = _start(self._pipe, self._profile)
        self._pipe.close_ends_of_browser()

    def close(self):
        self._process.kill()
        self._process.wait()
        self._pipe.close()
        shutil.rmtree(self._profile, ignore_errors=True)

    def open_page(self):
        context = self.call("Target.createBrowserContext")["browserContextId"]
        target = self.call("Target.createTarget", url="about:blank", browserContextId=context)
        session = self.call("Target.attachToTarget", targetId=target["targetId"], flatten=True)
        page = Page(self, context, session["sessionId"])
        self._pages[session["sessionId"]] = page
        for domain in ("Page", "Runtime", "Log", "Network"):
            page.call(f"{domain}.enable")
        return page

    def close_page(self, context, session):
        self.call("Target.disposeBrowserContext", browserContextId=context)
        del self._pages[session]

    def call(self, method, route=None, **parameters):
        self._next_id += 1
        message = {"id": self._next_id, "method": method, "params": parameters, **(route or {})}
        self._pipe.send(message)
        answer = self.wait(lambda message: message.get("id") == self._next_id, method)
        if "error" in answer:
            raise RuntimeError(f"{method}: {answer['error']}")
        return answer["result"]

    def wait(self, is_it, what):
        """The first message for which `is_it` returns true. Pages record the messages until then."""
        deadline = time.monotonic() + _LIMIT_SECONDS
        while True:
            message = self._pipe.receive(deadline)
            if message is None:
                raise TimeoutError(f"the browser does not answer: {what}")
            page = self._pages.get(message.get("sessionId"))
            if page is not None:
                page.note(message)
            if is_it(message):
                return message


class Page:
    """A page with its own cookies and storage. Records its errors, its console output, its dialogs, and the
    addresses that it requests."""

    def __init__(self, browser, context, session):
        self.complaints = []
        self.requests = []
        self.dialogs = []
        self._browser = browser
        self._context = context
        self._session = session
        self._loaded = False

    def close(self):
        self._browser.close_page(self._context, self._session)

    def call(self, method, **parameters):
        return self._browser.call(method, {"sessionId": self._session}, **parameters)

    def open(self, path):
        self._loaded = False
        self.call("Page.navigate", url=pathlib.Path(path).as_uri())
        if not self._loaded:
            self._browser.wait(lambda _: self._loaded, "loading the page")
        self.settle()

    def settle(self):
        """Waits until the effects of a change to the page have been drawn."""
        self.value("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def value(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def choose_scheme(self, scheme):
        features = [{"name": "prefers-color-scheme", "value": scheme}]
        self.call("Emulation.setEmulatedMedia", features=features)
        self.settle()

    def choose_size(self, width, height, mobile=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=mobile)
        self.settle()

    def picture(self):
        """A screenshot, as a PNG."""
        return base64.b64decode(self.call("Page.captureScreenshot", format="png")["data"])

    def note(self, message):
        method, parameters = message.get("method"), message.get("params")
        if method == "Page.loadEventFired":
            self._loaded = True
        elif method == "Page.javascriptDialogOpening":
            self.dialogs.append(parameters["message"])
        elif method == "Network.requestWillBeSent":
            self.requests.append(parameters["request"]["url"])
        elif method == "Runtime.exceptionThrown":
            self.complaints.append(str(parameters["exceptionDetails"]))
        elif method == "Runtime.consoleAPICalled":
            self.complaints.append(str(parameters["args"]))
        elif method == "Log.entryAdded":
            self.complaints.append(str(parameters["entry"]))
