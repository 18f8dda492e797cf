"""Opens pages that `accredit check --report` wrote in a browser and looks for what a reader would stumble over.

Usage: check_page.py PROGRAM WEATHER_FOLDER BROWSER. Every page is laid out at three widths, with all its
parts unfolded, and must not overlap, reach over the edge, write to the console or load anything. What
stands on it is compared with the text and the JSON of the same run.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

WIDTHS = 360, 800, 1280
TIMEOUT = 60.0

# Every line of text and every drawing with its place, without what only a screen reader sees.
FINDINGS = r"""(() => {
  for (const folded of document.querySelectorAll('details')) folded.open = true;
  const boxes = [], broken = [];
  const add = (rect, what) => {
    if (rect.width > 0 && rect.height > 0)
      boxes.push([rect.left, rect.top, rect.right, rect.bottom, what.trim().slice(0, 40)]);
  };
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  for (let node; (node = walker.nextNode());) {
    if (!node.data.trim() || node.parentElement.closest('caption')) continue;
    const range = document.createRange();
    range.selectNodeContents(node);
    const lines = [...range.getClientRects()].filter(rect => rect.width > 0);
    for (const rect of lines) add(rect, node.data);
    if (lines.length > 1 && /^[\w%]{1,12}$/.test(node.data.trim())) broken.push(node.data);
  }
  for (const svg of document.querySelectorAll('svg')) add(svg.getBoundingClientRect(), 'a drawing');
  for (const line of document.querySelectorAll('line')) {
    const rect = line.getBoundingClientRect(), frame = line.ownerSVGElement.getBoundingClientRect();
    if (rect.right > frame.right + 1) boxes.push([0, 0, 0, 0, 'a bar over the edge']);
  }
  const all = [...document.querySelectorAll('*')];
  const text = (node, selector) => node.querySelector(selector)?.textContent ?? null;
  return {
    boxes,
    broken,
    width: document.documentElement.clientWidth,
    scrolled: document.documentElement.scrollWidth,
    bars: document.querySelectorAll('line').length,
    tags: [...new Set(all.map(e => e.localName))],
    handlers: all.flatMap(e => [...e.attributes]).filter(a => a.name.startsWith('on')).length,
    title: document.title,
    lang: document.documentElement.lang,
    levels: all.filter(e => /^h[1-6]$/.test(e.localName)).map(e => +e.localName[1]),
    links: [...document.querySelectorAll('nav a')].map(a => !!document.querySelector(a.getAttribute('href'))),
    answers: [...document.querySelectorAll('.answer')].map(e => e.textContent),
    text: document.body.textContent,
    variables: [...document.querySelectorAll('section.v, details')].map(e => ({
      name: text(e, 'bdi'),
      verdict: text(e, 'h3 b, h4 b'),
      rows: [...e.querySelectorAll('table tr')].slice(1).map(r => ({
        name: r.firstChild.firstChild.textContent + (text(r, 'i') ?? ''),
        cells: [...r.querySelectorAll('td')].map(c => c.textContent.trim())}))})),
  };
})()"""


class Browser:
    """A browser without a window, which takes orders through a pipe."""

    def __init__(self, program, folder):
        from_us, self._to = os.pipe()
        self._from, to_us = os.pipe()

        def give_pipes():  # As descriptors 3 and 4, which may be taken by the pipes themselves.
            high = [os.dup(from_us), os.dup(to_us)]
            while min(high) < 5:
                high = [os.dup(descriptor) for descriptor in high]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)

        self.process = subprocess.Popen(
            [program, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--remote-debugging-pipe", f"--user-data-dir={folder}", "about:blank"],
            preexec_fn=give_pipes, close_fds=False, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(from_us)
        os.close(to_us)
        self._buffer = b""
        self._count = 0
        self._session = None
        self.events = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in "Page", "Runtime", "Log", "Network":
            self.call(domain + ".enable")

    def _message(self):
        while b"\0" not in self._buffer:
            piece = os.read(self._from, 1 << 20)
            if not piece:
                raise RuntimeError("the browser ended")
            self._buffer += piece
        message, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **parameters):
        self._count += 1
        order = {"id": self._count, "method": method, "params": parameters}
        if self._session:
            order["sessionId"] = self._session
        os.write(self._to, json.dumps(order).encode() + b"\0")
        while True:
            message = self._message()
            if message.get("id") != self._count:
                self.events.append(message)
            elif "error" in message:
                raise RuntimeError(f"{method}: {message['error']}")
            else:
                return message["result"]

    def evaluate(self, expression):
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"])
        return answer["result"].get("value")

    def open(self, path, width, fault=None):
        """What the page holds at this width, and the complaints; `fault` is run first."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=800, deviceScaleFactor=1,
                  mobile=width < 500)
        self.events.clear()
        self.call("Page.navigate", url="file://" + path)
        limit = time.monotonic() + TIMEOUT
        while self.evaluate("location.protocol + document.readyState") != "file:complete":
            if time.monotonic() > limit:
                raise RuntimeError(f"{path}: not loaded in time")
            time.sleep(0.01)
        if fault:
            self.evaluate(fault)
            time.sleep(0.2)
        findings = self.evaluate(FINDINGS)
        return findings, complaints(findings, self.events, "file://" + path)

    def nameless_images(self):
        nodes = self.call("Accessibility.getFullAXTree")["nodes"]
        return [node for node in nodes if not node["ignored"] and not node.get("name", {}).get("value")
                and node["role"]["value"] in ("image", "graphics-document")]

    def close(self):
        self.call("Browser.close")
        self.process.wait(TIMEOUT)


def overlaps(boxes):
    """Pairs of boxes that share more than the air around letters."""
    air = 3.0
    found = []
    boxes = sorted(boxes, key=lambda box: box[1])
    for i, (left, top, right, bottom, what) in enumerate(boxes):
        for other in boxes[i + 1:]:
            if other[1] > bottom - air:
                break
            if min(right, other[2]) - max(left, other[0]) > 1.0 and min(bottom, other[3]) - other[1] > air:
                found.append((what, other[4]))
    return found


def complaints(findings, events, url):
    for event in events:
        parameters = event.get("params", {})
        if event["method"] in ("Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded"):
            yield f"the console says {parameters}"
        if event["method"] == "Network.requestWillBeSent":
            request = parameters["request"]["url"]
            if request != url and request != "data:,":
                yield f"{request} is loaded"
    if findings["scrolled"] > findings["width"]:
        yield f"the page is {findings['scrolled']} wide"
    for left, _, right, _, what in findings["boxes"]:
        if left < -0.5 or right > findings["width"] + 0.5:
            yield f"\"{what}\" reaches over the edge"
        if what == "a bar over the edge":
            yield what
    for word in findings["broken"]:
        yield f"\"{word}\" is broken in two"
    for pair in overlaps(findings["boxes"]):
        yield f"overlap of {pair}"


FAULTS = {
    "the page is": "document.querySelector('.answer').style.minWidth = '2000px'",
    "overlap of": "document.querySelector('.answer').style.marginBottom = '-30px'",
    "reaches over": "document.querySelector('h1').style.textIndent = '-200px'",
    "is broken": "document.querySelector('dt').style.width = '9px'",
    "the console": "console.info('!')",
    "is loaded": "new Image().src = 'file:///x.png'",
    "a bar over": "document.querySelector('line').setAttribute('x2', '120%')",
}


def structure(findings):
    allowed = set("html head meta link title style body main h1 h2 h3 h4 p b bdi svg line strong nav ol ul "
                  "div li a section table caption tbody tr th td u i em dl dt dd details summary small "
                  "ul".split())
    if set(findings["tags"]) - allowed or findings["handlers"]:
        yield f"elements that no page has: {set(findings['tags']) - allowed}"
    levels = findings["levels"]
    if levels[0] != 1 or any(level > before + 1 for before, level in zip(levels, levels[1:])):
        yield f"the headings have the levels {levels}"
    if findings["lang"] != "en" or not findings["title"]:
        yield "there is no language or no title"
    if not all(findings["links"]):
        yield "a link leads nowhere"
    if not findings["bars"]:
        yield "there is no bar"


def parsed(page):
    """What a parser says of the page, but for elements that are younger than it."""
    errors = subprocess.run(["xmllint", "--html", "--noout", page], capture_output=True, text=True, errors="replace",
                            check=False).stderr
    return [line for line in errors.splitlines()
            if " error : " in line and not re.search(r" : Tag \w+ invalid$", line)]


def run(program, arguments):
    return subprocess.run([program, "check", *arguments], capture_output=True, check=False).stdout


def same_words(left, right):
    return re.sub(r"[\s\u200e]+", " ", left).strip() == re.sub(r"[\s\u200e]+", " ", right).strip()


def size(variable):
    return max(table["stability_index"] or 0.0
               for table in (variable, variable["missing"], variable["unreadable"])
               if table["two_sample"] and (table["two_sample"]["adjusted_p_value"] or 0.0) < 0.01)


def content(findings, checks, text):
    """What the page tells otherwise than the other reports of the same files."""
    for answer, check in zip(findings["answers"], checks):
        if not same_words(answer, re.sub(r"^\S+: ", "", text.split("\n\n")[0])) and len(checks) == 1:
            yield f"the answer is {answer}"
    if len(findings["answers"]) != len(checks):
        yield f"{len(findings['answers'])} answers"
    shown = iter(findings["variables"])
    for check in checks:
        variables = {str(v["name"]): v for v in check["variables"]}
        sizes = []
        for _ in variables:
            entry = next(shown)
            variable = variables.get(entry["name"])
            if variable is None:
                continue
            verdict = variable["verdict"]
            expected = {"unchanged": None, "not tested": verdict}.get(verdict, verdict + " change")
            if entry["verdict"] != expected:
                yield f"{entry['name']} is called {entry['verdict']}"
            if expected not in (None, "not tested"):
                sizes.append(size(variable))
            counts = [[cell["reference_count"], cell["new_count"]]
                      for cell in variable.get("categories") or variable.get("bins") or []]
            values = [[float(row["cells"][0]), float(row["cells"][2])] for row in entry["rows"]
                      if not row["name"].endswith(", of all rows")]
            if len(counts) <= 21 and sorted(values) != sorted(counts):
                yield f"{entry['name']} has the counts {values}, not {counts}"
            rows = 21 if variable["kind"] == "categorical" else 20
            if len(counts) > 21 and (len(values) != rows or [sum(c) for c in zip(*values)] !=
                                     [sum(c) for c in zip(*counts)]):
                yield f"{entry['name']} has the counts {values}"
            most = variable["most_changed"]
            name = most and most.get("value") and '"' + str(most["value"]) + '"'
            if name and len(name) < 20 and name.isascii() and name.isprintable() and name not in [row["name"].rstrip() for row in entry["rows"]]:
                yield f"{entry['name']} does not show {name}, which changed most"
        if sizes != sorted(sizes, reverse=True):
            yield f"the changes are not in order: {sizes}"
    if next(shown, None):
        yield "there are too many variables"


HOSTILE = [
    "<script>alert(1)</script>", "<img src=x onerror=alert(1)>", "</style></title></table>", "&amp;&lt;&#60;",
    "\" onclick=\"x", "x" * 300, "\u6f22\u5b57" * 60, "\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd 12",
    "\u0645\u0631\u062d\u0628\u0627", " blanks  within ", "-->", "{{x}} ${x}", "\u202eback", "tab\there",
    "e\u0301", "\U0001f642" * 30, "y" * 39,
]


def write(path, rows):
    def field(text):
        return b'"' + text.replace('"', '""').encode() + b'"'
    with open(path, "wb") as file:
        for row in rows:
            file.write(b",".join(field(text) for text in row) + b"\n")


def with_many_bins(program, folder):
    """A reference with 60 bins, which only an application would store."""
    data, stored = os.path.join(folder, "numbers.csv"), os.path.join(folder, "numbers.pmml")
    write(data, [["number"]] + [[str(n)] for n in range(600)])
    subprocess.run([program, "learn", data, "--output", stored], check=True)
    margins = [10 * n - 1 for n in range(1, 60)]
    intervals = "".join(
        '<Interval closure="openClosed"' + (f' leftMargin="{low}"' if low is not None else "") +
        (f' rightMargin="{high}"' if high is not None else "") + "/>"
        for low, high in zip([None, *margins], [*margins, None]))
    with open(stored, encoding="utf-8") as file:
        document = re.sub("<Interval.*</Array>", intervals + '<Array n="60" type="int">' + "10 " * 59 +
                          "10</Array>", file.read(), flags=re.DOTALL)
    with open(stored, "w", encoding="utf-8") as file:
        file.write(document)
    return stored


def pages(program, weather, folder):
    """The arguments for each page."""
    seattle, later, other = (os.path.join(weather, name) for name in
                             ("seattle-2012-2014.csv", "seattle-2015.csv", "new-york.csv"))
    yield "changes", ["--fail-on", "minor", "--weight", "wind=2", seattle, other]
    yield "several", [seattle, later, other, seattle]
    yield "unchanged", ["--ignore", "date", seattle, seattle]
    names = [name + f" {n}" for n, name in enumerate(HOSTILE)] + ["bytes", "number", "constant", "absent"]
    old, new = os.path.join(folder, "old <b>&.csv"), os.path.join(folder, "new<h1>" + "z" * 99 + ".csv")
    numbers = [str(10.0 ** (n % 300)) for n in range(400)]
    write(old, [names] + [[HOSTILE[(c + n) % 9] for c in range(len(HOSTILE))] + ["#", numbers[n], "1e300", "1"]
                          for n in range(400)])
    write(new, [names[:-1]] + [[HOSTILE[(c * n) % len(HOSTILE)] if n % 7 else "" for c in range(len(HOSTILE))] +
                               ["\u00e9", numbers[n % 90] if n % 5 else HOSTILE[1], "2e300"]
                               for n in range(400)])
    for path in old, new:
        with open(path, "rb") as file:
            data = file.read()
        with open(path, "wb") as file:
            file.write(data.replace(b'"#"', b'"\xff<\xfe>"').replace("\u00e9".encode(), b"\x80\xe2\x82"))
    yield "hostile", ["--ignore", "absent", old, new]
    yield "absent", [old, new]
    many = os.path.join(folder, "many.csv")
    write(many, [["id", "c", "number"]] +
          [[f"case {n}", f"category {n % 37}", str(n % 590)] for n in range(3000)])
    most = os.path.join(folder, "most.csv")
    write(most, [["id", "c"]] +
          [[f"other {n}", f"category {n % 36}" if n % 37 else "late"] for n in range(3000)])
    yield "many", [many, most]
    yield "bins", [with_many_bins(program, folder), many]


def main():
    program, weather, chromium = sys.argv[1:]
    failed = False

    def complain(where, what):
        nonlocal failed
        failed = True
        print(f"{where}: {what}")

    folder = tempfile.mkdtemp()
    browser = Browser(chromium, os.path.join(folder, "profile"))
    try:
        for name, arguments in pages(program, weather, folder):
            page = os.path.join(folder, name + ".html")
            report = json.loads(run(program, ["--format", "json", "--report", page, *arguments]))
            text = run(program, arguments).decode()
            for width in WIDTHS:
                findings, found = browser.open(page, width)
                for complaint in found:
                    complain(f"{name} at {width} pixels", complaint)
            for complaint in [*parsed(page), *structure(findings),
                              *content(findings, report.get("checks", [report]), text)]:
                complain(name, complaint)
            if browser.nameless_images():
                complain(name, "a screen reader meets a drawing without a name")
            if name == "changes":
                for word, fault in FAULTS.items():
                    if not any(word in complaint for complaint in browser.open(page, 800, fault)[1]):
                        complain(name, f"nothing is noticed of {fault}")
    finally:
        browser.close()
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
