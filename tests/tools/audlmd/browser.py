"""A browser without a window, asked through pipes: Chromium's DevTools protocol, in JSON, with a NUL behind each message."""

import json
import os
import subprocess
import tempfile
import time


class Browser:
    def __init__(self, program):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        reads, self.orders = os.pipe()
        self.answers, writes = os.pipe()
        # The browser reads from descriptor 3, and writes to 4.
        shell = f'exec "$0" "$@" 3<&{reads} 4>&{writes}'
        options = ["--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run", "--mute-audio", "--disable-dev-shm-usage",
                   "--remote-debugging-pipe", "--user-data-dir=" + self.folder.name]
        self.process = subprocess.Popen(["sh", "-c", shell, program, *options], pass_fds=(reads, writes),
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(reads)
        os.close(writes)
        self.read = b""
        self.sent = 0
        self.session = None
        # What the page has asked for, and what it has complained about.
        self.requests = []
        self.complaints = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ["Page", "Runtime", "Log", "Network"]:
            self.call(domain + ".enable")

    def next_message(self):
        while b"\0" not in self.read:
            part = os.read(self.answers, 1 << 20)
            if not part:
                raise RuntimeError("the browser has ended")
            self.read += part
        message, self.read = self.read.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **parameters):
        self.sent += 1
        order = {"id": self.sent, "method": method, "params": parameters}
        if self.session:
            order["sessionId"] = self.session
        os.write(self.orders, json.dumps(order).encode() + b"\0")
        while True:
            message = self.next_message()
            if message.get("id") == self.sent:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]
            if message.get("method") == "Network.requestWillBeSent":
                self.requests.append(message["params"]["request"]["url"])
            # A refusal of the page's policy is an error, too.
            is_error = message.get("params", {}).get("entry", {}).get("level") == "error"
            if message.get("method") == "Runtime.exceptionThrown" or is_error:
                self.complaints.append(json.dumps(message["params"]))

    def open(self, path, width=1280, height=1000):
        self.requests.clear()
        self.complaints.clear()
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call("Page.navigate", url=path.as_uri())
        self.wait_for("document.readyState === 'complete' && !!document.querySelector('#lanes canvas')?.width")

    def value(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def wait_for(self, expression):
        for _ in range(500):
            if self.value(expression):
                return
            time.sleep(0.02)
        raise RuntimeError(f"never: {expression}; complaints: {self.complaints}")

    def press(self, key, text=""):
        codes = {" ": 32, "ArrowRight": 39, "ArrowLeft": 37, "Home": 36}
        event = {"key": key, "text": text or (key if len(key) == 1 else ""), "windowsVirtualKeyCode": codes.get(key, ord(key.upper()[0]))}
        self.call("Input.dispatchKeyEvent", type="keyDown", **event)
        self.call("Input.dispatchKeyEvent", type="keyUp", **event)

    def mouse(self, kind, x, y, **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, x, y):
        for kind in ["mousePressed", "mouseReleased"]:
            self.mouse(kind, x, y, button="left", clickCount=1)

    def close(self):
        try:
            self.session = None
            self.call("Browser.close")
        except (RuntimeError, OSError):
            self.process.kill()
        self.process.wait()
        self.folder.cleanup()
