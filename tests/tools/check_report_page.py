#!/usr/bin/env python3
"""Pages of Report in a headless Chromium: nothing makes a narrow window scroll sideways, values are folded, and the list
of contents leads to every section.

usage: check_report_page.py VELMORAK-RUN EXAMPLES
Without Chromium and Selenium the check is skipped.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile

from check_view import SKIPPED, browser, knows_localhost

WIDTHS = (400, 800, 2560)


def page_of(runner, example, folder):
    copy = pathlib.Path(folder) / example.stem
    shutil.copytree(example.parent, copy)
    subprocess.run([runner, str(copy / example.name)], cwd=folder, check=True, stderr=subprocess.DEVNULL)
    return next((copy / (example.stem + ".results")).glob("*.html"))


def check(driver, page):
    driver.get(page.as_uri())
    for width in WIDTHS:
        driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                               {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        for is_open in (False, True):
            driver.execute_script("for (const e of document.querySelectorAll('details')) { e.open = arguments[0]; }",
                                  is_open)
            scrolls = driver.execute_script("return document.documentElement.scrollWidth;")
            assert scrolls <= width, "%s is %d wide in a window of %d" % (page.name, scrolls, width)
    driver.get(page.as_uri())
    assert driver.execute_script("return document.querySelectorAll('details').length > 0 &&"
                                 " document.querySelectorAll('details[open]').length === 0;")
    leads = driver.execute_script("return [...document.querySelectorAll('nav a')].every("
                                  "a => document.querySelector(a.getAttribute('href')).textContent === a.textContent);")
    assert leads, "%s: the contents lead elsewhere" % page.name
    print("%s fits %s" % (page.name, ", ".join(map(str, WIDTHS))))


def main():
    runner, examples = sys.argv[1], pathlib.Path(sys.argv[2])
    try:
        import selenium  # noqa: F401
    except ImportError:
        return SKIPPED
    if not shutil.which("chromedriver") or not knows_localhost():
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        driver = browser()
        try:
            for name in ("Output/Everything_written.zedra", "Particle_physics/Resonance_fit.zedra"):
                check(driver, page_of(runner, examples / name, folder))
        finally:
            driver.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
