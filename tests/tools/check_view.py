#!/usr/bin/env python3
"""The page of velmorak-view in a headless Chromium: what it shows of runs that announce themselves, and what one can do.

usage: check_view.py VELMORAK-VIEW VELMORAK-RUN [FOLDER]
With a folder, pictures of the page go there. Without Chromium and Selenium the check is skipped.
"""

import fcntl
import json
import os
import pathlib
import shutil
import socket
import sys
import time

from pipelines import plugin, table
from view_server import View, began, ended

sys.path.append("/usr/lib/python3/dist-packages")
SKIPPED = 77


def browser(language="en", width=1300, is_dark=False):
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=%d,1000" % width):
        options.add_argument(argument)
    options.add_experimental_option("prefs", {"intl.accept_languages": language,
                                              "download.default_directory": "/nowhere"})
    if is_dark:
        options.add_argument("--blink-settings=preferredColorScheme=0")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


def knows_localhost():
    try:
        return bool(socket.getaddrinfo("localhost", None))
    except OSError:
        return False


class Page:
    def __init__(self, view, **choices):
        self.driver = browser(**choices)
        self.driver.get(view.address)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()

    def do(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def text(self, selector="body"):
        return self.do("const e = document.querySelector(arguments[0]); return e ? e.innerText : '';", selector)

    def wait(self, script, *arguments):
        from selenium.webdriver.support.ui import WebDriverWait
        return WebDriverWait(self.driver, 120, 0.1).until(lambda _: self.do("return " + script, *arguments), script)

    def press(self, selector, keys):
        from selenium.webdriver.common.by import By
        self.driver.find_element(By.CSS_SELECTOR, selector).send_keys(keys)

    def complaints(self):
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] == "SEVERE"]

    def picture(self, folder, name):
        if folder:
            height = self.do("return document.documentElement.scrollHeight")
            size = self.driver.get_window_size()
            self.driver.set_window_size(size["width"], min(3000, height + 150))
            self.driver.save_screenshot(str(pathlib.Path(folder) / name))


def analysis(view):
    """A run of the real runner: numbers, a fit, a cut flow, pictures, a failure."""
    document = view.folder / "Peak.zedra"
    plugins = table(20000) + [
        plugin("Mass", "Histogram1D", table=["Rows", "table"], expression="91 + 2*x", bins="50", low="80", high="102",
               title="Mass of the pair", axis="m [GeV]"),
        plugin("Peak", "Fit", data=["Mass", "histogram"], model="gauss"),
        plugin("Both", "Histogram2D", table=["Rows", "table"], x="x", y="x*x", xbins="30", ybins="30", xlow="-3", xhigh="3",
               ylow="0", yhigh="9"),
        plugin("Cuts", "CutFlow", table=["Rows", "table"], cuts="up: x > 0"),
        plugin("Picture", "Plot", object=["Mass", "histogram"], objects="2", object2=["Peak", "function"]),
        plugin("Wrong <b>", "Filter", table=["Rows", "table"], condition="y > 1"),
        plugin("After", "Statistics", data=["Wrong <b>", "table"], expression="x")]
    for position, each in enumerate(plugins):
        each["position"] = [220 * (position % 4), 600 - 110 * (position // 4)]
    document.write_text(json.dumps({"zedra": 1, "plugins": plugins}))
    return document


def run(view, runner, *arguments):
    import subprocess
    return subprocess.run([runner, *map(str, arguments)], cwd=view.folder, env=view.environment, capture_output=True,
                          text=True, timeout=600)


def check_a_real_run(view, runner, pictures):
    document = analysis(view)
    assert run(view, runner, document).returncode == 2
    with Page(view) as page:
        page.wait("document.querySelectorAll('.box').length == 12")
        assert "Peak.zedra: failed" in page.text("#summary"), page.text("#summary")
        assert 'there is no column "y"' in page.text("#summary")
        assert page.do("return document.querySelectorAll('.box.failed').length") == 1
        assert page.do("return document.querySelectorAll('#summary b, .box b, #messages b').length") == 0, "markup stays text"
        page.wait("document.querySelectorAll('#pictures img').length == 1")
        page.do("document.querySelector('#pictures img').scrollIntoView()")
        page.wait("document.querySelector('#pictures img').naturalWidth > 100")
        results = page.text("#results")
        assert "Mass of the pair" in results and "entries, mean 9" in results, results
        check_the_details(page)
        assert "\u00b1" in results and "converged" in results and "up" in page.text("#results"), results
        check_the_chart(page)
        check_the_keyboard(page)
        assert page.complaints() == []
        page.do("window.scrollTo(0, 0)")
        page.picture(pictures, "view.png")
    check_differences(view, runner, document)
    check_a_scan(view, runner, document)


def check_the_details(page):
    """Rows, time and reason of a plug-in that was chosen."""
    page.do("document.querySelector('.box[data-name=\"Cuts\"]').dispatchEvent(new MouseEvent('click'))")
    details = page.text("#detail").replace("\t", " ")
    assert "rows in 20,000" in details and "time" in details and "up: x > 0" in details, details
    page.do("choosePlugin('Wrong <b>')")
    assert 'there is no column "y"' in page.text("#detail"), page.text("#detail")
    page.do("choosePlugin('After')")
    assert "skipped" in page.text("#detail") and 'not run because of "Wrong <b>"' in page.text("#detail"), page.text("#detail")
    page.do("choosePlugin(null)")


def check_differences(view, runner, document):
    changed = run(view, runner, "--set", "Rows.seed=8", document)
    assert changed.returncode == 2
    with Page(view) as page:
        page.wait("document.querySelector('#differences table') !== null")
        differences = page.text("#differences")
        assert "Rows seed" in differences and "\u03c3" in differences, differences


def check_a_scan(view, runner, document):
    """The runs of a scan are side by side, and their settings tell which is which."""
    run(view, runner, "--scan", "Mass.bins=10,20", document)
    with Page(view) as page:
        page.wait("document.querySelectorAll('#runs .settings').length == 3")
        settings = page.do("return [...document.querySelectorAll('#runs .settings')].map((each) => each.innerText)")
        assert settings[:2] == ["Mass.bins=20", "Mass.bins=10"] and settings[2] == "Rows.seed=8", settings
        page.do("document.querySelectorAll('#runs button')[1].click()")
        page.wait("document.querySelector('#summary').innerText.includes('Mass.bins=10')")
        page.wait("[...charts.values()].some((known) => known.chart.name == 'Mass of the pair' && known.chart.csv().trim().split('\\n').length == 11)")


def check_the_chart(page):
    """Zoom by mouse and keys, logarithmic axis, value under the pointer, exports."""
    chart = "[...charts.values()].map((known) => known.chart).find((chart) => chart.name == 'Mass of the pair')"
    page.wait("%s !== undefined" % chart)
    assert page.do("return %s.contents.lines.length" % chart) == 1, "the fit is drawn over its data"
    whole = page.do("const c = %s; return [c.scale.x.low, c.scale.x.high]" % chart)
    assert whole == [80, 102], whole
    page.do("""const c = %s; const box = c.svg.getBoundingClientRect();
        const at = (part) => ({clientX: box.left + part * box.width, clientY: box.top + box.height / 2, bubbles: true});
        c.svg.dispatchEvent(new PointerEvent('pointerdown', at(0.4)));
        c.svg.dispatchEvent(new PointerEvent('pointerup', at(0.6)));
        c.svg.dispatchEvent(new PointerEvent('pointermove', at(0.5)));""" % chart)
    low, high = page.do("const c = %s; return [c.scale.x.low, c.scale.x.high]" % chart)
    assert 85 < low < high < 97, (low, high)
    assert "\u00b1" in page.do("return %s.under.textContent" % chart)
    page.do("const c = %s; c.svg.focus(); c.svg.dispatchEvent(new KeyboardEvent('keydown', {key: 'l'})); "
            "c.svg.dispatchEvent(new KeyboardEvent('keydown', {key: '0'}))" % chart)
    assert page.do("const c = %s; return [c.isLog.y, c.scale.x.low]" % chart) == [True, 80]
    table = page.do("return %s.csv()" % chart)
    assert table.startswith("x_low,x_high,y,error_down,error_up\n80,80.44,") and len(table.splitlines()) == 51, table[:200]
    assert page.do("return new DOMParser().parseFromString(%s.svgText(), 'image/svg+xml').documentElement.nodeName" % chart) == "svg"


def check_the_keyboard(page):
    from selenium.webdriver.common.keys import Keys
    page.do("document.querySelector('.box[data-name=\"Peak\"]').focus()")
    page.press(".box[data-name=\"Peak\"]", Keys.ENTER)
    assert "gauss" in page.text("#detail"), page.text("#detail")
    assert page.do("return document.querySelectorAll('#messageList .message.plain').length") > 0
    page.press("#which", "w")
    page.wait("document.querySelectorAll('#messageList .message.plain').length == 0")
    assert page.do("return document.querySelectorAll('#messageList .message.failed').length") == 1
    page.press("#words", "failed")
    page.wait("document.querySelectorAll('#messageList .message').length == 1")


def check_states_and_languages(view, pictures):
    """A run that lives, one that has died, and the page at many sizes."""
    pipeline = [{"name": name, "kind": "Kind", "x": 200.0 * at, "y": 0.0, "outputs": [],
                 "inputs": [{"name": "in", "from": ["A", "out"]}] if at else []} for at, name in enumerate("ABC")]
    died = view.announce(77, began("/x/died.zedra", view.folder, pipeline, time=int(1000 * time.time()) + 1000))
    lives = view.announce(78, began("/x/lives.zedra", view.folder, pipeline, time=int(1000 * time.time()) + 2000))
    progress = {"event": "progress", "plugin": "A", "pass": 1, "file": 3, "files": 9, "rows": 12345, "fraction": 0.25,
                "seconds": 1.0, "rowsPerSecond": 12345.0, "secondsLeft": 3.0}
    lives.with_name(lives.name + ".progress").write_text(json.dumps(progress))
    with open(lives) as held:
        fcntl.flock(held, fcntl.LOCK_EX)
        for language, width, is_dark, word in (("en", 500, False, "running"), ("de", 1300, True, "l\u00e4uft"),
                                               ("de", 2560, False, "l\u00e4uft"), ("en", 800, True, "running")):
            with Page(view, language=language, width=width, is_dark=is_dark) as page:
                page.wait("document.querySelectorAll('.box').length == 3")
                assert word in page.text("#summary"), (word, page.text("#summary"))
                assert page.do("return document.querySelector('progress').value") == 0.25
                assert page.do("return document.querySelectorAll('.box.running').length") == 1
                if width == 500:  # Chromium has no narrower window.
                    page.do("document.body.style.width = '400px'")
                assert page.do("return document.documentElement.scrollWidth <= innerWidth"), "no sideways scrolling"
                ground = page.do("return getComputedStyle(document.body).backgroundColor")
                assert (ground == "rgb(21, 24, 28)") == is_dark, ground
                names = page.text("#runs")
                assert ("abgest\u00fcrzt" if language == "de" else "died") in names, names
                if width == 1300:
                    page.picture(pictures, "view-dark.png")
                assert page.complaints() == []
        with Page(view) as page:
            page.wait("document.querySelectorAll('.box').length == 3")
            with open(lives, "a") as more:
                more.write(json.dumps({"event": "plugin", "name": "A", "kind": "Kind", "outcome": "failed", "sentence": "it broke",
                                       "reason": "", "rowsIn": 0, "rowsOut": 0, "seconds": 0.1, "outputs": [], "files": []}) + "\n"
                           + json.dumps(ended("failed")) + "\n")
            page.wait("document.querySelector('#summary').innerText.includes('it broke')")
            page.wait("document.querySelectorAll('.box.failed').length == 1")
    died.unlink()
    lives.unlink()


def check_states(view):
    """A colour for each state, and what a running plug-in has done and needs still."""
    states = ("done", "reused", "failed", "skipped", "running", "waiting")
    pipeline = [{"name": state, "kind": "Kind", "x": 200.0 * at, "y": 0.0, "outputs": [], "inputs": []}
                for at, state in enumerate(states)]
    told = [{"event": "plugin", "name": state, "kind": "Kind", "outcome": state, "sentence": "sentence of " + state, "reason": "",
             "rowsIn": 1234, "rowsOut": 567, "seconds": 0.25, "outputs": [], "files": []} for state in states[:4]]
    run = view.announce(55, began("/x/states.zedra", view.folder, pipeline, time=int(1000 * time.time()) + 1000), *told)
    progress = {"event": "progress", "plugin": "running", "pass": 2, "file": 3, "files": 9, "rows": 12345, "fraction": 0.25,
                "seconds": 1.0, "rowsPerSecond": 23456.0, "secondsLeft": 3.0}
    run.with_name(run.name + ".progress").write_text(json.dumps(progress))
    with open(run) as held:
        fcntl.flock(held, fcntl.LOCK_EX)
        with Page(view) as page:
            page.wait("document.querySelectorAll('.box').length == %d" % len(states))
            classes = page.do("return [...document.querySelectorAll('.box')].map((box) => box.classList[1])")
            assert tuple(classes) == states, classes
            looks = page.do("""return [...document.querySelectorAll('.box rect.frame')].map((frame) => {
                const style = getComputedStyle(frame);
                return style.stroke + style.strokeDasharray;
            })""")
            assert len(set(looks)) == len(states), "each state has its colour: %s" % looks
            assert page.do("return document.querySelectorAll('.box.running .bar').length") == 1
            assert "1,234 \u2192 567" in page.do("return document.querySelector('.box.done').textContent")
            assert page.text("#summary progress + p") == \
                "running: 12,345 rows, 23,456 rows per second, pass 2, file 3 of 9, 3 s left", page.text("#summary")
    run.unlink()


def check_pictures_as_they_are_made(view):
    """Each appears when its plug-in has ended, while the run goes on."""
    results = view.folder / "growing.results"
    results.mkdir()
    pipeline = [{"name": name, "kind": "Plot", "x": 200.0 * at, "y": 0.0, "outputs": [], "inputs": []} for at, name in enumerate("ABC")]
    run = view.announce(56, began("/x/growing.zedra", results, pipeline, time=int(1000 * time.time()) + 2000))
    with open(run, "a") as growing:
        fcntl.flock(growing, fcntl.LOCK_EX)
        with Page(view) as page:
            page.wait("document.querySelectorAll('.box.waiting').length == 3")
            for number, name in enumerate("AB"):
                assert page.do("return document.querySelectorAll('#pictures img').length") == number
                (results / (name + ".svg")).write_text("<svg xmlns='http://www.w3.org/2000/svg' width='300' height='200'/>")
                growing.write(json.dumps({"event": "plugin", "name": name, "kind": "Plot", "outcome": "done", "sentence": "",
                                          "reason": "", "rowsIn": 0, "rowsOut": 0, "seconds": 0.1, "outputs": [],
                                          "files": [name + ".svg"]}) + "\n")
                growing.flush()
                page.wait("document.querySelectorAll('#pictures img').length == %d" % (number + 1))
            assert "running" in page.text("#summary") and page.complaints() == []
    run.unlink()


def check_many_pictures(view):
    results = view.folder / "many.results"
    results.mkdir()
    for number in range(500):
        shutil.copy(view.folder / "Peak.results" / "Picture.png", results / ("p%03d.png" % number))
    view.announce(99, began("/x/many.zedra", results, time=int(1000 * time.time()) + 9000), ended())
    with Page(view) as page:
        page.wait("document.querySelectorAll('#pictures img').length == 500")
        loaded = page.do("return [...document.querySelectorAll('#pictures img')].filter((p) => p.complete).length")
        assert loaded < 100, "%d pictures are loaded before they are seen" % loaded


def missing_programs():
    """What this machine lacks for a browser that is driven; empty for nothing."""
    try:
        import selenium  # noqa: F401
    except ImportError:
        return "python3-selenium is not installed"
    if not shutil.which("chromedriver"):
        return "chromium-driver is not installed"
    if not knows_localhost():
        return "this machine does not know the name localhost, by which the driver and the browser connect; see /etc/hosts"
    return ""


def main():
    if reason := missing_programs():
        print("SKIPPED: " + reason)
        return SKIPPED
    pictures = sys.argv[3] if len(sys.argv) > 3 else None
    runner = os.path.abspath(sys.argv[2])
    with View(sys.argv[1]) as view:
        view.start()
        check_states_and_languages(view, pictures)
        check_states(view)
        check_pictures_as_they_are_made(view)
        check_a_real_run(view, runner, pictures)
        check_many_pictures(view)
    return 0


if __name__ == "__main__":
    sys.exit(main())
