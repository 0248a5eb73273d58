"""Opens the pages of `report` in a headless browser, and looks at what it shows and asks for.

check_report.py <browser> <host program> <folder for the pictures>
"""

import html.parser
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

WIDE, NARROW = (1280, 9000), (500, 9000)  # a browser's window is not narrower
VOID = {"meta", "link", "br", "hr", "img", "input"}


class Browser:
    """Runs the browser on a page, in a home of its own and without its own errands to the network."""

    def __init__(self, program, home):
        self.program, self.home = program, home

    def run(self, page, *options):
        words = [
            self.program, "--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-default-apps",
            "--disable-dev-shm-usage", f"--user-data-dir={self.home}", "--host-resolver-rules=MAP * ~NOTFOUND",
            "--enable-logging=stderr", *options, page.as_uri(),
        ]
        run = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120, check=True)
        return run.stdout.decode(), run.stderr.decode(errors="replace")

    def open(self, page):
        """The rendered document, the lines of the console, and the addresses that were asked for."""
        log = pathlib.Path(self.home) / "net.json"
        document, said = self.run(page, "--dump-dom", f"--log-net-log={log}")
        console = [line for line in said.splitlines() if ":CONSOLE" in line]
        return document, console, requests(log)

    def picture(self, page, file, size, dark):
        theme = ["--force-dark-mode"] if dark else []
        self.run(page, f"--window-size={size[0]},{size[1]}", f"--screenshot={file}", *theme)


def requests(log):
    """Every address that the page asked for and that leads out of the machine. The browser's own errands, which it runs
    in spite of all options, come from no page."""
    events = json.loads(log.read_text(encoding="utf-8", errors="replace"))["events"]
    asked = [event["params"] for event in events if "initiator" in event.get("params", {})]
    urls = {request.get("url", "") for request in asked if request["initiator"] != "not an origin"}
    return sorted(url for url in urls if url.split(":")[0] in ("http", "https", "ws", "wss", "ftp"))


class Page(html.parser.HTMLParser):
    """The figures of the page: by section, database, table and name the text that people see."""

    def __init__(self, text):
        super().__init__()
        self.figures, self.open, self.name = {}, [], None
        self.feed(text)
        assert not self.open, f"never closed: {self.open}"

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag not in VOID:
            self.open.append((tag, attributes))
        if tag == "data" and "class" in attributes:
            self.name = attributes["class"]

    def handle_endtag(self, tag):
        assert self.open[-1][0] == tag, f"{tag} ends {self.open[-1]}"
        self.open.pop()
        self.name = None

    def handle_data(self, data):
        if self.name:
            key = (self.inner("id"), self.inner("data-database"), self.inner("data-table"), self.name)
            self.figures[key] = (data, self.inner("value"))

    def inner(self, attribute):
        return next((found[attribute] for _, found in reversed(self.open) if attribute in found), None)


def expected(status):
    """The figures that the page must show, by the document of `status`."""
    figures = {}
    for database in status["databases"]:
        if database["missing"]:
            continue
        name = database["name"]
        for size in ("file_bytes", "live_bytes", "free_bytes", "wal_bytes"):
            figures["limits", name, None, size] = database[size]
        for table in database["tables"]:
            if table["missing"]:
                continue
            deleted = table["next_run"]
            figures["limits", name, table["table"], "rows"] = table["rows"]
            figures["limits", name, table["table"], "next_pass"] = sum(deleted.values())
            figures["change", name, table["table"], "before"] = table["rows"]
            figures["change", name, table["table"], "after"] = table["rows"] - sum(deleted.values())
            for reason, rows in deleted.items():
                figures["change", name, table["table"], reason] = rows
    return figures


def report_of_status(program, data, page):
    """Writes a page while no row expires, and gives the figures that it must show."""
    def figures():
        return expected(json.loads(host(program, "status", "--data-dir", data, "--json")))

    for _ in range(20):
        before = figures()
        host(program, "report", "--data-dir", data, "--html", str(page))
        if before == figures():
            return before
    sys.exit("rows expire between any two commands")


def compare(page, wanted):
    assert len(wanted) > 200, f"only {len(wanted)} figures to compare"
    for key, number in wanted.items():
        text, value = page.figures[key]
        assert value == str(number), f"{key}: {value} instead of {number}"
        if not key[3].endswith("_bytes"):
            assert text == f"{number:,}", f"{key} reads {text} instead of {number:,}"


def host(program, *words):
    run = subprocess.run([program, *words], stdout=subprocess.PIPE, check=True)
    return run.stdout.decode()


def check_that_errands_are_seen(browser, folder):
    """What is looked for would be found."""
    page = folder / "errands.html"
    page.write_text("<img src='http://corvo.invalid/x.png'><script>console.error('seen')</script>", encoding="utf-8")
    _, console, asked = browser.open(page)
    assert any("seen" in line for line in console), console
    assert asked == ["http://corvo.invalid/x.png"], asked


def check(browser, page, pictures):
    Page(page.read_text(encoding="utf-8"))  # as written, before the browser mends it
    document, console, asked = browser.open(page)
    assert not console, console
    assert not asked, asked
    for theme in ("light", "dark"):
        for size in (WIDE, NARROW):
            file = pictures / f"{page.stem}-{theme}-{size[0]}.png"
            browser.picture(page, file, size, theme == "dark")
            assert file.stat().st_size > 20_000, f"{file} shows next to nothing"
    one, other = (pictures / f"{page.stem}-{theme}-{WIDE[0]}.png" for theme in ("light", "dark"))
    assert one.read_bytes() != other.read_bytes(), "both themes look alike"
    return Page(document[document.index("<html"):])


def main(browser, program, pictures):
    pictures = pathlib.Path(pictures)
    shutil.rmtree(pictures, ignore_errors=True)
    pictures.mkdir(parents=True)
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        folder = pathlib.Path(folder)
        browser = Browser(browser, folder / "home")
        os.environ["HOME"] = str(folder)
        data = str(folder / "data")
        host(program, "generate", "--data-dir", data, "--scale", "0.2")
        host(program, "run", "--data-dir", data)
        host(program, "generate", "--data-dir", data, "--scale", "0.3", "--seed", "2", "--force")
        check_that_errands_are_seen(browser, folder)
        page = folder / "status.html"
        wanted = report_of_status(program, data, page)
        compare(check(browser, page, pictures), wanted)
        for subject in ("plan", "run"):
            page = folder / f"{subject}.html"
            host(program, "report", "--data-dir", data, "--html", str(page), "--of", subject)
            check(browser, page, pictures)


main(*sys.argv[1:])
