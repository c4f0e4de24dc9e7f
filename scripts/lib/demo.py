"""Shows the program at work on a machine that has no display, sound, microphone, account or model.

Started by scripts/demo, which sees to it that everything is installed and built.
"""

import argparse
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import textwrap
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from harness.isolation import isolate  # noqa: E402
from harness.processes import end_on_signals  # noqa: E402
from harness.road import (APP_ROAD, MICROPHONE_ROAD, SYSTEM_ROAD, Road, median_delay,  # noqa: E402
                          word_error_rate)
from harness.speech import align, recorded_sentences, sclite_error_rate  # noqa: E402

LEFT_BEHIND = ROOT / "build" / "demo"
ENOUGH_SENTENCES = 4


def say(text):
    print(f"==> {text}", flush=True)


def arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/demo", description="Plays recorded speech to the program on a private "
        "desktop and shows the subtitles that come back.")
    parser.add_argument("--source", choices=(MICROPHONE_ROAD, SYSTEM_ROAD, APP_ROAD),
                        default=MICROPHONE_ROAD, help="what the program listens to")
    parser.add_argument("--keep", action="store_true",
                        help="stay up for a look when everything was played; Ctrl-C ends it")
    parser.add_argument("--program", type=pathlib.Path,
                        default=ROOT / "build" / "release" / "orvane",
                        help="the program to show (default: build/release/orvane)")
    return parser.parse_args()


def columns(pairs, width=92):
    """The words said above those heard, in lines of at most `width` characters: "=" stands for the
    same word below, "-" for none."""
    lines = []
    said_line = heard_line = ""
    for said, heard in pairs:
        lower = "=" if said == heard else heard or "-"
        upper = said or "-"
        wide = max(len(upper), len(lower)) + 1
        if len(said_line) + wide > width:
            lines.append((said_line, heard_line))
            said_line = heard_line = ""
        said_line += upper.ljust(wide)
        heard_line += lower.ljust(wide)
    return [*lines, (said_line, heard_line)]


def show(spoken):
    """A sentence, word under word, with what became of it."""
    pairs = align(spoken.sentence.words, spoken.heard)
    for said_line, heard_line in columns(pairs):
        print(f"    said        {said_line.rstrip()}")
        print(f"    heard       {heard_line.rstrip()}")
    if not spoken.subtitles:
        print("    nothing came back\n", flush=True)
        return
    right = sum(said == heard for said, heard in pairs)
    missing = sum(heard is None for _, heard in pairs)
    added = sum(said is None for said, _ in pairs)
    wrong = len(pairs) - right - missing - added
    print(f"    words       {right} right, {wrong} wrong, {missing} missing, {added} made up")
    for line in textwrap.wrap(spoken.translation, 92):
        print(f"    subtitle    {line}")
    print(f"    delay       {spoken.delay:.2f} s after the sentence's end\n", flush=True)


def picture_of_page(road, file):
    """A picture of the overlay page in a browser of its own; False where there is none."""
    browser = shutil.which("chromium") or shutil.which("chromium-browser")
    if browser is None:
        return False
    with tempfile.TemporaryDirectory(prefix="orvane-browser-") as profile:
        subprocess.run(
            [browser, "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", f"--user-data-dir={profile}", "--window-size=1280,720",
             "--default-background-color=5B6B7DFF", "--virtual-time-budget=3000",
             f"--screenshot={file}", road.overlay.url],
            env=road.desktop.environment, timeout=60, check=False,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return file.exists()


def pictures(road, last):
    for old in LEFT_BEHIND.glob("*.png"):
        old.unlink()
    road.desktop.screenshot(LEFT_BEHIND / "desktop.png")
    say(f"picture: {(LEFT_BEHIND / 'desktop.png').relative_to(ROOT)}")
    page = LEFT_BEHIND / "overlay.png"
    if last and picture_of_page(road, page):
        say(f"picture: {page.relative_to(ROOT)}")
    else:
        say("no picture of the overlay page: no browser, or nothing to show")


@contextlib.contextmanager
def keeping_log(road):
    """Leaves the log of the program, with what its speech server says in it, in build/demo/."""
    try:
        yield
    finally:
        # The program repeats what its speech server says, with a word in front.
        lines = road.program.lines()
        for name, kept in (("program", lines),
                           ("speech-server", [line.removeprefix("Backend:") for line in lines
                                              if line.startswith("Backend:")])):
            file = LEFT_BEHIND / f"{name}.log"
            file.write_text("\n".join(kept) + "\n", encoding="utf-8")
            say(f"log: {file.relative_to(ROOT)}")


def tell_the_wait(spoken):
    """How long a person waited from the command to the first subtitle, installation and build
    included; scripts/demo says when it began."""
    began = os.environ.get("ORVANE_DEMO_BEGAN")
    if began and spoken.subtitles:
        ago = time.monotonic() - spoken.subtitles[0].arrived
        seconds = round(time.time() - ago - float(began))
        say(f"first subtitle {seconds // 60}:{seconds % 60:02} min after the command")
        print(flush=True)


def summary(results):
    recognised = [spoken for spoken in results if spoken.heard]
    translated = [spoken for spoken in recognised if spoken.translation]
    print()
    say(f"{len(results)} sentences spoken, {len(recognised)} recognised, "
        f"{len(translated)} translated")
    say(f"word error rate {100 * word_error_rate(results):.1f} %")
    sclite = sclite_error_rate([(spoken.sentence.words, spoken.heard) for spoken in results])
    if sclite is not None:
        say(f"word error rate as sclite counts it {sclite:.1f} %")
    if median_delay(results) is not None:
        say(f"median delay from a sentence's end to its subtitle {median_delay(results):.2f} s")
    return len(translated)


def main():
    options = arguments()
    end_on_signals()
    LEFT_BEHIND.mkdir(parents=True, exist_ok=True)
    # Next to a person's own Orvane, whose speech server has the same port. Who wants to look at the
    # page afterwards has to reach it, though.
    if not options.keep and (reason := isolate()):
        say(f"the demonstration shares this machine's network ({reason})")
    sentences = recorded_sentences()
    with Road(options.program, ROOT / "scripts" / "install-backend",
              source=options.source, say=say) as road, keeping_log(road):
        road.show_panel()
        road.start_backend()
        road.start_translation()
        say('under each word what was heard: "=" the same word, "-" none')
        print()
        results = []
        for sentence in sentences:
            spoken = road.play_sentence(sentence)
            show(spoken)
            if not results:
                tell_the_wait(spoken)
            results.append(spoken)
        pictures(road, results[-1].subtitles)
        if options.keep:
            say(f"still up: overlay page {road.overlay.url}, display "
                f"{road.desktop.environment['DISPLAY']}; Ctrl-C ends it")
            try:
                road.program.process.wait()
            except KeyboardInterrupt:
                pass
        if road.program.process.poll() is None:
            road.show_panel()
            road.stop_translation()
            status = road.quit()
            say(f"the program has ended with status {status}")
        translated = summary(results)
    enough = translated >= min(ENOUGH_SENTENCES, len(sentences))
    if not enough:
        print("error: too few results came back through the whole road", file=sys.stderr)
    return 0 if enough else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        print("interrupted", file=sys.stderr)
        sys.exit(130)
