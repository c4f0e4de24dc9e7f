#!/usr/bin/python3
"""Shows the overlay page in headless Chromium and looks at it over the DevTools protocol.

    overlay_page_in_browser.py OVERLAY_HOST [--screenshots FOLDER]

OVERLAY_HOST is the program that OverlayHost.cpp makes. Times are the page's own; nothing is waited
for but conditions, each with a limit that only bounds a broken run.
"""

import argparse
import asyncio
import base64
import contextlib
import itertools
import json
import logging
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.request

import websockets

CHROMIUM = "/usr/bin/chromium"
LIMIT = 30.0


class OverlayHost:
    """An overlay server in a process of its own."""

    def __init__(self, program):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)
        self.url = f"http://localhost:{int(self.process.stdout.readline())}/overlay"

    def tell(self, **command):
        print(json.dumps(command), file=self.process.stdin, flush=True)
        assert self.process.stdout.readline() == "ok\n"

    def broadcast(self, original, translation):
        self.tell(broadcast=[original, translation])

    def set(self, **values):
        self.tell(set=values)

    def close(self):
        self.process.stdin.close()
        self.process.wait(timeout=LIMIT)
        self.process.stdout.close()


class Browser:
    """Headless Chromium with one tab."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.process = subprocess.Popen(
            [CHROMIUM, "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--disable-dev-shm-usage", "--remote-debugging-port=0",
             "--window-size=1280,720", f"--user-data-dir={self.folder.name}", "about:blank"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.socket = None
        self.numbers = itertools.count(1)

    async def connect(self):
        port_file = pathlib.Path(self.folder.name, "DevToolsActivePort")
        port = await until(lambda: port_file.exists() and port_file.read_text().split("\n")[0])

        def tabs():
            with contextlib.suppress(OSError):
                with urllib.request.urlopen(f"http://127.0.0.1:{port}/json/list") as answer:
                    return [tab for tab in json.load(answer) if tab["type"] == "page"]
            return []

        tab = (await until(tabs))[0]
        self.socket = await websockets.connect(tab["webSocketDebuggerUrl"], max_size=None)

    async def call(self, method, **parameters):
        number = next(self.numbers)
        await self.socket.send(json.dumps({"id": number, "method": method, "params": parameters}))
        while True:
            answer = json.loads(await asyncio.wait_for(self.socket.recv(), LIMIT))
            if answer.get("id") == number:
                assert "error" not in answer, answer
                return answer["result"]

    async def evaluate(self, expression):
        answer = await self.call("Runtime.evaluate", expression=expression, awaitPromise=True,
                                 returnByValue=True)
        assert "exceptionDetails" not in answer, answer
        return answer["result"].get("value")

    async def open(self, url):
        await self.call("Page.navigate", url=url)
        await until(lambda: self.evaluate(
            f"location.href === {json.dumps(url)} && document.readyState === 'complete'"))

    async def screenshot(self, path):
        picture = await self.call("Page.captureScreenshot", format="png")
        path.write_bytes(base64.b64decode(picture["data"]))

    async def close(self):
        if self.socket:
            with contextlib.suppress(Exception):
                await self.call("Browser.close")
            # The browser may be gone before it has said goodbye.
        with contextlib.suppress(websockets.ConnectionClosed):
            await self.socket.close()
        self.process.terminate()
        self.process.wait(timeout=LIMIT)
        self.folder.cleanup()


async def until(condition, limit=LIMIT):
    """What `condition` gives as soon as that is true."""
    end = time.monotonic() + limit
    while True:
        result = condition()
        if asyncio.iscoroutine(result):
            result = await result
        if result:
            return result
        if time.monotonic() > end:
            raise TimeoutError("the condition did not come true")
        await asyncio.sleep(0.02)


class OverlayPageTest(unittest.IsolatedAsyncioTestCase):
    program = None
    screenshots = None

    async def asyncSetUp(self):
        self.host = OverlayHost(self.program)
        self.addCleanup(self.host.close)
        self.browser = Browser()
        self.addAsyncCleanup(self.browser.close)
        await self.browser.connect()

    def style(self, element, name):
        return self.browser.evaluate(
            f"getComputedStyle(document.getElementById('{element}')).{name}")

    def text(self, element):
        return self.browser.evaluate(f"document.getElementById('{element}').textContent")

    async def shows(self, translation):
        return (await self.text("trans") == translation
                and float(await self.style("box", "opacity")) == 1)

    async def picture(self, name, backdrop):
        if self.screenshots:
            await self.browser.evaluate(
                f"document.documentElement.style.background = {json.dumps(backdrop)}")
            await self.browser.screenshot(self.screenshots / f"{name}.png")
            await self.browser.evaluate("document.documentElement.style.background = ''")

    async def test_shows_nothing_before_a_result(self):
        await self.browser.open(self.host.url)
        # Two polls have been answered when the second one begins after the first.
        await self.browser.evaluate("""new Promise(done => {
            const send = window.fetch; let polls = 0;
            window.fetch = (...args) => { if (++polls > 2) done(true); return send(...args); };
        })""")
        self.assertEqual(await self.style("box", "opacity"), "0")

    async def test_shows_a_result_and_follows_show_original(self):
        await self.browser.open(self.host.url)
        self.host.broadcast("Guten Morgen, meine Damen und Herren.",
                            "Good morning, ladies and gentlemen.")
        await until(lambda: self.shows("Good morning, ladies and gentlemen."))
        self.assertEqual(await self.style("orig", "display"), "none")
        await self.picture("translation-on-dark", "#101418")

        self.host.set(showOriginal=True)
        await until(lambda: self.browser.evaluate(
            "getComputedStyle(document.getElementById('orig')).display === 'block'"))
        self.assertEqual(await self.text("orig"), "Guten Morgen, meine Damen und Herren.")
        self.assertTrue(await self.browser.evaluate(
            "orig.getBoundingClientRect().bottom <= trans.getBoundingClientRect().top"))
        await self.picture("both-on-light", "#f4f4f0")
        await self.picture("both-on-dark", "linear-gradient(#203040, #000)")

        self.host.broadcast("Zweiter Satz: äöü ß", "第二句 – deuxième phrase 🎧 " * 12)
        await until(lambda: self.shows("第二句 – deuxième phrase 🎧 " * 12))
        await self.picture("long-text", "linear-gradient(90deg, #000, #fff)")

        self.host.set(showOriginal=False)
        await until(lambda: self.browser.evaluate(
            "getComputedStyle(document.getElementById('orig')).display === 'none'"))

    async def test_lies_centred_at_the_bottom_of_a_transparent_page(self):
        await self.browser.open(self.host.url)
        self.host.broadcast("", "Centred")
        await until(lambda: self.shows("Centred"))
        for element in ("document.documentElement", "document.body"):
            self.assertEqual(
                await self.browser.evaluate(f"getComputedStyle({element}).backgroundColor"),
                "rgba(0, 0, 0, 0)")
        left, right, below = await self.browser.evaluate("""(() => {
            const place = box.getBoundingClientRect();
            return [place.left, innerWidth - place.right, (innerHeight - place.bottom) / innerHeight];
        })()""")
        self.assertAlmostEqual(left, right, delta=1)
        self.assertGreater(left, 400)
        self.assertAlmostEqual(below, 0.06, delta=0.002)

    async def test_treats_results_as_text(self):
        await self.browser.open(self.host.url)
        hostile = "<script>window.broken = true</script><img src=x onerror='broken = true'> & </div>"
        self.host.set(showOriginal=True)
        self.host.broadcast(hostile, hostile)
        await until(lambda: self.shows(hostile))
        self.assertEqual(await self.text("orig"), hostile)
        self.assertEqual(await self.browser.evaluate("box.getElementsByTagName('*').length"), 2)
        self.assertIsNone(await self.browser.evaluate("window.broken"))
        await self.picture("markup-as-text", "#101418")

    async def test_follows_the_colours_without_a_restart(self):
        await self.browser.open(self.host.url)
        self.assertEqual(await self.style("box", "backgroundColor"), "rgba(144, 238, 144, 0.85)")
        self.assertEqual(await self.style("box", "borderTopColor"), "rgb(46, 125, 50)")
        self.assertEqual(await self.style("box", "borderTopWidth"), "3px")
        self.assertEqual(await self.style("trans", "color"), "rgb(0, 0, 0)")
        self.host.set(overlayBgColor="#102030", overlayOpacity=0.5, overlayTextColor="#FFEE00",
                      overlayBorderColor="#FFFFFF", showOriginal=True)
        self.host.broadcast("Andere Farben", "Other colours")
        await self.browser.call("Page.reload")
        await until(lambda: self.browser.evaluate(
            "document.readyState === 'complete' && !!window.getComputedStyle && "
            "getComputedStyle(box).backgroundColor === 'rgba(16, 32, 48, 0.5)'"))
        for element in ("orig", "trans"):
            self.assertEqual(await self.style(element, "color"), "rgb(255, 238, 0)")
        self.assertEqual(await self.style("box", "borderTopColor"), "rgb(255, 255, 255)")
        await until(lambda: self.shows("Other colours"))
        await self.picture("other-colours", "#803030")
        self.host.set(overlayBorderEnabled=False)
        await self.browser.call("Page.reload")
        await until(lambda: self.browser.evaluate(
            "document.readyState === 'complete' && getComputedStyle(box).borderTopWidth === '0px'"))

    def looks(self, **wanted):
        """Whether the open page has these computed styles, each given as element_property."""
        tests = [f"getComputedStyle({name.split('_')[0]}).{name.split('_')[1]} === {json.dumps(value)}"
                 for name, value in wanted.items()]
        return self.browser.evaluate(" && ".join(tests))

    async def test_an_open_page_follows_the_look_without_a_reload(self):
        await self.browser.open(self.host.url)
        await self.browser.evaluate("window.sameDocument = true")
        self.assertFalse(await self.browser.evaluate("box.hasAttribute('style')"))
        self.host.set(showOriginal=True)
        self.host.broadcast("Bleibt stehen", "Stays where it is")
        await until(lambda: self.shows("Stays where it is"))
        before = await self.browser.evaluate("box.getBoundingClientRect().height")

        self.host.set(overlayBgColor="#102030", overlayTextColor="#FFEE00",
                      overlayBorderColor="#FFFFFF")
        await until(lambda: self.looks(
            box_backgroundColor="rgba(16, 32, 48, 0.85)", box_borderTopColor="rgb(255, 255, 255)",
            box_borderTopWidth="3px", box_borderTopStyle="solid", orig_color="rgb(255, 238, 0)",
            trans_color="rgb(255, 238, 0)"))
        self.assertEqual(await self.browser.evaluate("box.getBoundingClientRect().height"), before)

        self.host.set(overlayOpacity=0.25)
        await until(lambda: self.looks(box_backgroundColor="rgba(16, 32, 48, 0.25)"))
        self.host.set(overlayBorderEnabled=False)
        await until(lambda: self.looks(box_borderTopWidth="0px"))
        self.host.set(overlayBorderEnabled=True, overlayBorderColor="#FF0000")
        await until(lambda: self.looks(box_borderTopWidth="3px", box_borderTopColor="rgb(255, 0, 0)"))

        # The rest of the look is as it was, and nothing was loaded anew.
        self.assertTrue(await self.looks(
            box_borderTopLeftRadius="16px", box_paddingLeft="24px", orig_opacity="0.7",
            trans_fontSize="34px", box_textAlign="center"))
        self.assertTrue(await self.browser.evaluate("window.sameDocument"))
        self.assertEqual(await self.text("trans"), "Stays where it is")
        await self.picture("followed-look", "#803030")

    async def test_an_open_page_looks_as_a_reloaded_one_whatever_the_colours_are(self):
        await self.browser.open(self.host.url)
        properties = ("backgroundColor", "borderTopColor", "borderTopWidth", "borderTopStyle", "color")

        async def look():
            return [[await self.style(element, name) for name in properties]
                    for element in ("box", "orig", "trans")]

        for text, border in (("blue", "green"), ("no colour at all", "neither"), ("", ""),
                             ("#FF0000", "rgb(1 2 3)"), ("red;}</style>", "red; } #wrap {")):
            self.host.set(overlayTextColor=text, overlayBorderColor=border)
            await until(lambda: self.browser.evaluate(
                "fetch('/text').then(answer => answer.json())"
                ".then(result => JSON.stringify(result.style) === JSON.stringify(shown))"))
            followed = await look()
            await self.browser.evaluate("window.isOld = true")
            await self.browser.call("Page.reload")
            await until(lambda: self.browser.evaluate(
                "document.readyState === 'complete' && !window.isOld"))
            with self.subTest(text=text, border=border):
                self.assertEqual(followed, await look())

    async def test_keeps_its_style_with_broken_colours(self):
        self.host.set(overlayTextColor="red;}</style><script>window.broken = true</script>",
                      overlayBorderColor="red;} #wrap { display: none")
        await self.browser.open(self.host.url)
        self.assertIsNone(await self.browser.evaluate("window.broken"))
        self.assertEqual(await self.style("wrap", "display"), "flex")
        self.assertEqual(await self.style("trans", "fontSize"), "34px")
        self.assertEqual(await self.style("trans", "color"), "rgb(0, 0, 0)")

    async def test_fades_as_always_when_the_program_is_gone(self):
        await self.browser.open(self.host.url)
        self.host.broadcast("Letzte Worte", "Last words")
        await until(lambda: self.shows("Last words"))
        self.host.close()
        await self.browser.evaluate("lastChange -= 9000")
        await until(lambda: self.browser.evaluate("getComputedStyle(box).opacity === '0'"))

    async def test_polls_do_not_overtake_each_other(self):
        await self.browser.open(self.host.url)
        await self.browser.evaluate("""
            window.running = 0;
            window.most = 0;
            const send = window.fetch;
            window.fetch = async (...args) => {
                most = Math.max(most, ++running);
                try {
                    await new Promise(done => setTimeout(done, 700));
                    return await send(...args);
                } finally {
                    --running;
                }
            };
        """)
        self.host.broadcast("Langsam", "Slow")
        await until(lambda: self.shows("Slow"))
        self.assertEqual(await self.browser.evaluate("most"), 1)

    async def test_a_poll_that_is_never_answered_does_not_end_the_polling(self):
        await self.browser.open(self.host.url)
        await self.browser.evaluate("""
            const send = window.fetch;
            const later = window.setTimeout;
            window.setTimeout = (work, time) => later(work, time / 100);
            window.fetch = (address, options) => {
                window.fetch = send;
                return new Promise((done, fail) =>
                    options.signal.addEventListener("abort", () => fail(new Error("given up"))));
            };
        """)
        self.host.broadcast("Weiter", "Onwards")
        await until(lambda: self.shows("Onwards"))

    async def test_fades_eight_seconds_after_the_last_change(self):
        await self.browser.open(self.host.url)
        await self.browser.evaluate("""
            window.times = {};
            new MutationObserver(() => {
                times[box.classList.contains('show') ? 'shown' : 'hidden'] = performance.now();
            }).observe(box, { attributes: true });
        """)
        self.host.broadcast("Alt", "Old")
        await until(lambda: self.shows("Old"))
        # Another result in between begins the eight seconds anew.
        await until(lambda: self.browser.evaluate("performance.now() - times.shown > 2000"))
        await self.browser.evaluate("""
            new MutationObserver(() => { times.changed = performance.now(); })
                .observe(trans, { childList: true });
        """)
        self.host.broadcast("Neu", "New")
        await until(lambda: self.shows("New"))
        await until(lambda: self.browser.evaluate("times.hidden !== undefined"))
        stayed = await self.browser.evaluate("times.hidden - times.changed")
        # The page's own clock starts a little before the picture changes.
        self.assertGreater(stayed, 7900)
        self.assertLess(stayed, 14000)
        await until(lambda: self.browser.evaluate("getComputedStyle(box).opacity === '0'"))
        self.host.broadcast("Wieder", "Again")
        await until(lambda: self.shows("Again"))

    async def test_survives_a_server_that_is_away(self):
        await self.browser.open(self.host.url)
        self.host.broadcast("Da", "Here")
        await until(lambda: self.shows("Here"))
        # Polls that fail leave what is shown; the next good one goes on.
        await self.browser.evaluate("""new Promise(done => {
            const send = window.fetch; let failures = 0;
            window.fetch = () => {
                if (++failures === 3) { window.fetch = send; done(true); }
                return Promise.reject(new TypeError('away'));
            };
        })""")
        self.assertTrue(await self.shows("Here"))
        self.host.broadcast("Zurück", "Back")
        await until(lambda: self.shows("Back"))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--screenshots", type=pathlib.Path)
    options, rest = parser.parse_known_args()
    logging.getLogger("asyncio").setLevel(logging.ERROR)  # Else it tells of every slow step.
    OverlayPageTest.program = options.program
    OverlayPageTest.screenshots = options.screenshots
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)


if __name__ == "__main__":
    main()
