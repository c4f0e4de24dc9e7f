"""Shows the program at work on a machine that has no display, sound, microphone, account or model.

Started by scripts/demo, which sees to it that everything is installed and built.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from harness.processes import end_on_signals  # noqa: E402
from harness.road import (APP_ROAD, MICROPHONE_ROAD, SYSTEM_ROAD, Road, median_delay,  # noqa: E402
                          word_error_rate)
from harness.speech import recorded_sentences, sclite_error_rate  # noqa: E402

PICTURES = ROOT / "build" / "demo"
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


def show(spoken):
    print(f"    spoken:     {' '.join(spoken.sentence.words)}")
    for subtitle in spoken.subtitles:
        print(f"    recognised: {subtitle.original}")
        print(f"    translated: {subtitle.translation}")
        print(f"    delay:      {subtitle.arrived - spoken.ended:.2f} s after the sentence's end")
    if not spoken.subtitles:
        print("    nothing came back")
    print(flush=True)


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
    PICTURES.mkdir(parents=True, exist_ok=True)
    for old in PICTURES.glob("*.png"):
        old.unlink()
    road.desktop.screenshot(PICTURES / "desktop.png")
    say(f"picture: {(PICTURES / 'desktop.png').relative_to(ROOT)}")
    page = PICTURES / "overlay.png"
    if last and picture_of_page(road, page):
        say(f"picture: {page.relative_to(ROOT)}")
    else:
        say("no picture of the overlay page: no browser, or nothing to show")


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
    sentences = recorded_sentences()
    with Road(options.program, ROOT / "scripts" / "install-backend",
              source=options.source, say=say) as road:
        road.show_panel()
        road.start_backend()
        road.start_translation()
        print()
        results = []
        for sentence in sentences:
            spoken = road.play_sentence(sentence)
            show(spoken)
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
