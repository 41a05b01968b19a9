#!/usr/bin/python3 -B
"""The page of `ipodctl serve` in a real browser, with a simulated iPod.

usage: tests/page/page_test.py BUILD_DIR [TEST...]
"""

import json
import os
import pathlib
import re
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from selenium import webdriver
from selenium.common.exceptions import ElementClickInterceptedException, ElementNotInteractableException
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

BIN = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "build/release").resolve() / "bin"
MODELS = ["classic", "nano", "video", "mini", "touch", "strict", "hasty"]
HOSTILE = "<img src=x onerror=document.title='broken'>"
LIMIT = 15
# A busy machine delays any frame, also of a page that does nothing. The page is slow when it is slow
# each time.
TRIES = 5
FRAME = 100


def start_browser():
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(options=options)


def wait_for(condition, what, limit=LIMIT):
    """Returns the first result of the condition that is true. What the page has just replaced is looked for again."""
    end = time.monotonic() + limit
    while True:
        try:
            found = condition()
            if found:
                return found
        except StaleElementReferenceException:
            pass
        if time.monotonic() > end:
            raise AssertionError(f"not within {limit} s: {what}")
        time.sleep(0.05)


class Ipod:
    """A simulated iPod and the program with the page."""

    def __init__(self, *options):
        self.folder = tempfile.TemporaryDirectory(prefix="page-")
        self.place = pathlib.Path(self.folder.name)
        self.processes = []
        self.start("ipodsim", "--link", self.place / "ipod", "--control", self.place / "control",
                   "--quiet", *options)
        wait_for((self.place / "ipod").exists, "the simulated iPod starts")
        line = self.start("ipodctl", "serve", "--port", "0", "--device", self.place / "ipod",
                          "--control", self.place / "control").stdout.readline()
        self.url = line.split()[-1]

    def start(self, program, *arguments):
        log = open(self.place / f"{program}.log", "w", encoding="utf-8")
        environment = os.environ | {"XDG_RUNTIME_DIR": self.folder.name}
        process = subprocess.Popen([BIN / program, *arguments], stdout=subprocess.PIPE, stderr=log,
                                   text=True, env=environment)
        log.close()
        self.processes.append(process)
        return process

    def ask(self, **request):
        with socket.socket(socket.AF_UNIX) as control:
            control.settimeout(LIMIT)
            control.connect(str(self.place / "control"))
            control.sendall(json.dumps(request).encode() + b"\n")
            return json.loads(control.makefile().readline())

    def end(self):
        for process in reversed(self.processes):
            process.terminate()
        for process in self.processes:
            try:
                process.wait(LIMIT)
            except subprocess.TimeoutExpired:
                process.kill()
                raise
            process.stdout.close()
        self.folder.cleanup()


class PageTest(unittest.TestCase):
    """Each test has a new simulated iPod; the browser is the same."""

    ipod = None

    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def open(self, *options, width=800, height=480):
        self.ipod = Ipod(*options)
        self.addCleanup(self.ipod.end)
        self.size(width, height)
        self.browser.get(self.ipod.url)
        self.await_ready()

    def size(self, width, height):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def theme(self, name):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": name}]})

    def tearDown(self):
        errors = [entry["message"] for entry in self.browser.get_log("browser")
                  if entry["level"] == "SEVERE" and "ERR_" not in entry["message"]
                  and "Failed to load resource" not in entry["message"]]
        self.browser.get("about:blank")
        self.assertEqual(errors, [])

    def find(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return " ".join(self.browser.execute_script(
            "return [...document.querySelectorAll(arguments[0])].map((each) => each.textContent)", selector))

    def await_ready(self):
        wait_for(lambda: self.find(".row") and not self.find("[role=alert].view"), "a list is shown")

    def rows(self):
        """The names of the rows in their order."""
        return self.browser.execute_script(
            "return [...document.querySelectorAll('.row')]"
            ".sort((a, b) => a.dataset.number - b.dataset.number)"
            ".map((row) => row.querySelector('.name')?.textContent ?? null)")

    def named_rows(self):
        """The names of the rows when there are rows and all of them have their names."""
        rows = self.rows()
        return rows if rows and None not in rows else None

    def click_one_of(self, elements):
        """Returns whether one was there and could be clicked."""
        try:
            for element in elements[:1]:
                element.click()
                return True
        except (ElementClickInterceptedException, ElementNotInteractableException):
            pass
        return False

    def touch(self, name):
        """Touches the row with this name."""
        wait_for(lambda: self.click_one_of([each for each in self.find(".row .name") if each.text == name]),
                 f"the row {name}")

    def open_list(self, name):
        """Touches the row with this name, and returns the rows of the list that it opens."""
        self.touch(name)
        wait_for(lambda: self.text("#title") == name, f"the list {name}")
        return wait_for(self.named_rows, f"the rows of {name}")

    def press(self, label):
        wait_for(lambda: self.click_one_of(
            [each for each in self.find(f"#unit [aria-label='{label}']") if each.is_enabled()]),
                 f"the button {label}")

    def browse_to_tracks(self):
        """Returns the names of the tracks."""
        self.open_list("Artists")
        albums = self.open_list("Amos Ferriday")
        self.assertEqual(albums[0], "Play all")
        return self.open_list(albums[1])

    def seconds(self):
        """The position that is shown; -1 without one."""
        found = re.fullmatch(r"(\d+):(\d+)", self.text(".now strong"))
        return 60 * int(found[1]) + int(found[2]) if found else -1

    def test_browses_plays_and_survives_a_pulled_cable(self):
        self.open()
        title = next(name for name in self.browse_to_tracks() if name != "Play all")
        self.touch(title)
        wait_for(lambda: self.text(".track") == title, "the track's title")
        wait_for(lambda: self.seconds() >= 2, "the position moves")
        self.assertEqual(self.ipod.ask(do="status")["track"]["title"], title)

        self.ipod.ask(do="unplug")
        wait_for(lambda: "Check the cable" in self.text("#screen"), "the sentence for the driver", 2)
        self.ipod.ask(do="plug")
        wait_for(lambda: self.text(".track") == title, "what plays, after the cable is back")
        self.press("Back")
        self.touch("Artists")
        wait_for(lambda: "Amos Ferriday" in self.rows(), "the artists, after the cable is back")

    def test_shows_each_model(self):
        self.open(width=1400, height=900)
        for model in MODELS:
            with self.subTest(model=model):
                self.ipod.ask(do="unplug")
                wait_for(lambda: self.find("[role=alert].view"), "the cable is pulled", 5)
                self.assertTrue(self.ipod.ask(do="plug", personality=model)["ok"])
                self.await_ready()
                self.touch("Albums")
                wait_for(self.named_rows, "the albums")
                wait_for(lambda: self.browser.execute_script(
                    "return document.querySelector('#ipod select').value") == model, "the name of the model")
                self.assertGreater(self.browser.execute_script(
                    "return document.querySelector('#ipod img').naturalWidth"), 0)

    def test_takes_names_for_nothing_but_texts(self):
        library = {"tracks": [{"title": HOSTILE, "artist": HOSTILE, "album": "A" * 60, "lengthMs": 60000},
                              {"title": "日本語", "artist": "مرحبا", "album": "B" * 240, "lengthMs": 60000},
                              {"title": "x", "artist": "\u202eevil", "album": "Ångström", "lengthMs": 60000}]}
        with tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
            json.dump(library, file)
            file.flush()
            self.open("--library", file.name)
        title = self.browser.title
        self.touch("Artists")
        wait_for(lambda: HOSTILE in self.rows(), "the hostile name")
        self.press("Library")
        self.touch("Albums")
        wait_for(lambda: "B" * 240 in self.rows() and "Ångström" in self.rows(), "the long name")
        self.assertEqual(self.browser.execute_script(
            "const rows = document.querySelector('.rows'); return rows.scrollWidth - rows.clientWidth"), 0)
        self.press("Library")
        self.touch("Tracks")
        self.touch(HOSTILE)
        wait_for(lambda: self.text(".track") == HOSTILE, "the hostile title")
        self.assertEqual(self.browser.title, title)
        self.assertEqual(self.find("#screen img"), [])

    def test_scrolls_100000_tracks(self):
        self.open("--tracks", "100000", "--fault", "late=10@04:001A")
        self.touch("Tracks")
        wait_for(lambda: len(self.named_rows() or []) >= 5, "the first tracks")
        longest = [self.longest_frame()]
        while longest[-1] >= FRAME and len(longest) < TRIES:
            longest.append(self.longest_frame())
        self.assertLess(longest[-1], FRAME, f"the longest frames in ms: {longest}")
        for place in (6_000_000, 10_000, 4_321_000):
            taken = [self.seconds_until_names(place)]
            while taken[-1] >= 1 and len(taken) < TRIES:
                taken.append(self.seconds_until_names(place + 50_000 * len(taken)))
            self.assertLess(taken[-1], 1, f"seconds until the names are there: {taken}")

    def longest_frame(self):
        """Scrolls on in each of 120 frames, and returns the longest in ms."""
        return max(self.browser.execute_async_script("""
            const [done] = arguments;
            const rows = document.querySelector('.rows');
            const frames = [];
            let last = performance.now();
            const step = (now) => {
              frames.push(now - last);
              last = now;
              rows.scrollTop += 4000;
              if (frames.length < 120) requestAnimationFrame(step); else done(frames);
            };
            requestAnimationFrame(step);""")[1:])

    def seconds_until_names(self, place):
        self.browser.execute_script("document.querySelector('.rows').scrollTop = arguments[0]", place)
        started = time.monotonic()
        wait_for(self.sees_all_names, "the names in view")
        return time.monotonic() - started

    def sees_all_names(self):
        return self.browser.execute_script("""
            const view = document.querySelector('.rows').getBoundingClientRect();
            const rows = [...document.querySelectorAll('.row')].filter((row) => {
              const place = row.getBoundingClientRect();
              return place.bottom > view.top && place.top < view.bottom;
            });
            return rows.length >= 5 && rows.every((row) => row.querySelector('.name'));""")

    def test_two_pages_scroll_two_lists_while_a_third_client_plays(self):
        self.open("--tracks", "2000")
        first = self.browser.current_window_handle
        self.touch("Tracks")
        wait_for(self.sees_all_names, "the tracks")
        self.browser.switch_to.new_window("window")
        second = self.browser.current_window_handle
        self.size(800, 480)
        self.browser.get(self.ipod.url)
        self.await_ready()
        self.touch("Albums")
        wait_for(self.sees_all_names, "the albums")
        command = [BIN / "ipodctl", "play", "artists/2/tracks", "0"]
        environment = os.environ | {"XDG_RUNTIME_DIR": self.ipod.folder.name}
        seen = {}
        for place in range(0, 3000, 600):
            for window in (first, second):
                self.browser.switch_to.window(window)
                self.browser.execute_script("document.querySelector('.rows').scrollTop = arguments[0]", place)
                wait_for(self.sees_all_names, "the names in view")
                seen.setdefault(window, {}).update(self.browser.execute_script("""
                    return Object.fromEntries([...document.querySelectorAll('.row')]
                      .filter((row) => row.querySelector('.name'))
                      .map((row) => [row.dataset.number, row.querySelector('.name').textContent]))"""))
            subprocess.run(command, env=environment, check=True, capture_output=True, timeout=LIMIT)
        self.browser.close()
        self.browser.switch_to.window(first)
        # The same names, when nobody else asks for anything.
        self.assertEqual(seen[first], self.listed("tracks", seen[first], 0))
        albums = seen[second]
        self.assertEqual(albums.pop("0"), "Play all")
        self.assertEqual(albums, self.listed("albums", albums, 1))

    def listed(self, path, numbers, shift):
        """The names of these rows as the server returns them."""
        last = max(map(int, numbers))
        names = self.browser.execute_async_script("""
            const [path, last, done] = arguments;
            (async () => {
              const {generation} = await (await fetch('/v1/state')).json();
              const names = [];
              for (let offset = 0; offset <= last; offset += 100) {
                const page = await (await fetch(
                  `/v1/list/${path}?generation=${generation}&offset=${offset}&count=100`)).json();
                names.push(...page.items.map((item) => item.name || '(no name)'));
              }
              done(names);
            })();""", path, last)
        return {number: names[int(number) - shift] for number in numbers}

    def test_is_made_for_fingers_in_both_themes(self):
        self.open()
        self.browse_to_tracks()
        for theme in ("light", "dark"):
            self.theme(theme)
            for screen in ("list", "now"):
                with self.subTest(theme=theme, screen=screen):
                    if screen == "now":
                        self.press("What plays")
                        wait_for(lambda: self.find(".now"), "what plays")
                    found = self.browser.execute_script(MEASURE)
                    self.assertEqual(found, [])
            self.press("Back")

    def test_is_used_with_the_keyboard(self):
        self.open()
        body = self.browser.find_element(By.TAG_NAME, "body")
        body.send_keys(Keys.ARROW_DOWN, Keys.ENTER)
        wait_for(lambda: self.text("#title") == "Albums", "the second entry")
        body.send_keys(Keys.ESCAPE)
        wait_for(lambda: "Genres" in self.rows(), "the library")
        self.touch(self.browse_to_tracks()[0])
        wait_for(lambda: self.ipod.ask(do="status")["state"] == "playing", "it plays")
        body.send_keys(Keys.SPACE)
        wait_for(lambda: self.ipod.ask(do="status")["state"] == "paused", "space pauses")

    def test_says_that_the_program_has_ended(self):
        self.open()
        self.ipod.processes[-1].terminate()
        wait_for(lambda: "does not answer" in self.text("#screen"), "the sentence", 5)


# What is too small to touch or to read: the size of each button, the text's size and its contrast.
MEASURE = """
const luminance = (colour) => {
  const [red, green, blue] = colour.match(/[\\d.]+/g).map(Number).map((value) => {
    value /= 255;
    return value <= 0.03928 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
};
const ground = (element) => {
  for (let each = element; each; each = each.parentElement) {
    const colour = getComputedStyle(each).backgroundColor;
    if (!/, 0\\)$/.test(colour) && colour !== 'transparent') return colour;
  }
  return 'rgb(255, 255, 255)';
};
const wrong = [];
for (const button of document.querySelectorAll('#unit button')) {
  const {width, height} = button.getBoundingClientRect();
  if (width < 76 || height < 76) wrong.push(`${button.ariaLabel} is ${width} x ${height}`);
}
for (const element of document.querySelectorAll('#unit *')) {
  const text = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
  if (!text || element.closest('button:disabled')) continue;
  const style = getComputedStyle(element);
  if (parseFloat(style.fontSize) < 20) wrong.push(`${element.textContent}: ${style.fontSize}`);
  const lights = [luminance(style.color), luminance(ground(element))].sort((a, b) => b - a);
  const contrast = (lights[0] + 0.05) / (lights[1] + 0.05);
  if (contrast < 4.5) wrong.push(`${element.textContent}: contrast ${contrast.toFixed(2)}`);
}
return wrong;
"""

if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
