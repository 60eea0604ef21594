# SPDX-License-Identifier: MIT
"""Chromium without a window, driven through a pair of pipes."""

import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

PATIENCE = 90  # seconds for one answer

# For every text that shows: its colour and what it stands on, as the browser computed them.
CONTRASTS = """(() => {
  const parse = color => color.match(/[0-9.]+/g).map(Number);
  const light = ([r, g, b]) => {
    const part = v => (v /= 255) <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4;
    return 0.2126 * part(r) + 0.7152 * part(g) + 0.0722 * part(b);
  };
  const over = (top, below) => {
    const a = top.length > 3 ? top[3] : 1;
    return [0, 1, 2].map(i => top[i] * a + below[i] * (1 - a));
  };
  const background = element => {
    for (let e = element; e; e = e.parentElement) {
      const rect = e.tagName === 'svg' && e.querySelector(':scope > rect');
      const fill = rect && getComputedStyle(rect).fill;
      if (fill && fill !== 'none') return parse(fill);
      const color = parse(getComputedStyle(e).backgroundColor);
      if (color.length < 4 || color[3] > 0) return color;
    }
    return [255, 255, 255];
  };
  const worst = [];
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const element = walker.currentNode.parentElement;
    if (!walker.currentNode.data.trim() || !element.getClientRects().length) continue;
    if (element.closest('title')) continue;
    const style = getComputedStyle(element);
    const isDrawn = element.tagName === 'text';
    const back = background(element);
    const ink = parse(isDrawn ? style.fill : style.color).slice(0, 3);
    if (isDrawn) ink.push(Number(style.fillOpacity));
    const pair = [light(over(ink, back)), light(back)].sort((a, b) => b - a);
    worst.push([(pair[0] + 0.05) / (pair[1] + 0.05), walker.currentNode.data.slice(0, 40)]);
  }
  return worst.sort((a, b) => a[0] - b[0]);
})()"""

WIDTH = "Math.max(document.documentElement.scrollWidth, document.body.scrollWidth)"
# What sticks out of the window, unless it scrolls by itself.
OUTSIDE = """[...document.body.querySelectorAll('*:not(.skip)')]
    .filter(each => !each.closest('.wide, pre, svg, .tree')
                    && each.getBoundingClientRect().right > innerWidth + 0.5)
    .map(each => each.outerHTML.slice(0, 80))"""
HEADINGS = """[...document.querySelectorAll('h1,h2,h3,h4,h5,h6')]
              .map(each => [Number(each.tagName[1]), each.textContent])"""


class Browser:
    """One process of its own, with a profile that goes away with it. Use it in a with."""

    def __init__(self, *options):
        self._profile = tempfile.mkdtemp(prefix="kraddon-browser-")
        self._to, self._from, self._process = self._start(options)
        self._answers = b""
        self._count = 0
        self._session = None
        self.events = []

    def _start(self, options):
        for_browser, ours = os.pipe()
        answers, from_browser = os.pipe()
        # The browser looks for its pipes at 3 and 4.
        script = f'exec chromium "$@" 3<&{for_browser} 4>&{from_browser}'
        words = ["/bin/bash", "-c", script, "chromium", "--headless", "--no-sandbox",
                 "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
                 "--disable-background-networking", "--disable-component-update",
                 "--remote-debugging-pipe", f"--user-data-dir={self._profile}", *options]
        process = subprocess.Popen(words, pass_fds=(for_browser, from_browser),
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(for_browser)
        os.close(from_browser)
        return ours, answers, process

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.call("Browser.close", browser=True)
            self._process.wait(20)
        except (OSError, subprocess.TimeoutExpired, EOFError, TimeoutError):
            self._process.kill()
            self._process.wait()
        os.close(self._to)
        os.close(self._from)
        shutil.rmtree(self._profile, ignore_errors=True)

    def call(self, method, browser=False, **params):
        self._count += 1
        message = {"id": self._count, "method": method, "params": params}
        if self._session and not browser:
            message["sessionId"] = self._session
        content = json.dumps(message).encode() + b"\0"
        while content:
            content = content[os.write(self._to, content):]
        while True:
            answer = self._read()
            if answer.get("id") == self._count:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def _read(self):
        end = time.monotonic() + PATIENCE
        while b"\0" not in self._answers:
            ready, _, _ = select.select([self._from], [], [], max(0, end - time.monotonic()))
            if not ready:
                raise TimeoutError("the browser does not answer")
            piece = os.read(self._from, 1 << 20)
            if not piece:
                raise EOFError("the browser is gone")
            self._answers += piece
        answer, self._answers = self._answers.split(b"\0", 1)
        answer = json.loads(answer)
        if "method" in answer:
            self.events.append(answer)
        return answer

    def open(self, path, width=1280, height=900, scheme="light", scripts=True,
             has_policy=True):
        """Shows a file, or a web address, in a fresh tab. Without `has_policy` the page's own policy is ignored."""
        self._session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target,
                                  flatten=True)["sessionId"]
        self.events = []
        for domain in ("Page", "Network", "Runtime", "Log"):
            self.call(f"{domain}.enable")
        self.call("Emulation.setScriptExecutionDisabled", value=not scripts)
        self.call("Page.setBypassCSP", enabled=not has_policy)
        self.resize(width, height)
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": scheme}])
        is_address = str(path).startswith("http:")
        self.call("Page.navigate", url=path if is_address else f"file://{os.path.abspath(path)}")
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self._read()

    def resize(self, width, height=900):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)

    def evaluate(self, expression):
        """What our own script sees, whether the page may run scripts or not."""
        frame = self.call("Page.getFrameTree")["frameTree"]["frame"]["id"]
        world = self.call("Page.createIsolatedWorld", frameId=frame)["executionContextId"]
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           contextId=world)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"])
        return answer["result"].get("value")

    def wait(self, expression):
        """Until it holds."""
        end = time.monotonic() + PATIENCE
        while not self.evaluate(expression):
            if time.monotonic() > end:
                raise TimeoutError(expression)
            time.sleep(0.02)

    def type(self, text):
        self.call("Input.insertText", text=text)

    def press(self, key, code):
        for kind in ("keyDown", "keyUp"):
            text = {"text": key} if kind == "keyDown" and len(key) == 1 else {}
            self.call("Input.dispatchKeyEvent", type=kind, key=key, windowsVirtualKeyCode=code,
                      **text)

    def image(self):
        """The whole page as PNG."""
        return base64.b64decode(self.call("Page.captureScreenshot", captureBeyondViewport=True,
                                          format="png")["data"])

    def pdf(self):
        return base64.b64decode(self.call("Page.printToPDF", preferCSSPageSize=True)["data"])

    def requested(self):
        """The addresses that the page asked for, itself included."""
        return [event["params"]["request"]["url"] for event in self.events
                if event["method"] == "Network.requestWillBeSent"]
