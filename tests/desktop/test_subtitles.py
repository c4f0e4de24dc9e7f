"""The subtitle window on a desktop with a window manager, with and without a compositor."""

import contextlib
import subprocess
import tempfile
import unittest

import subtitles
from harness.desktop import WALLPAPER, Desktop
from harness.processes import end_on_signals, wait_until

end_on_signals()

_SHADOW = 28
_BACKGROUND = (0x90, 0xEE, 0x90)
_BACKDROP = (0x20, 0x28, 0x40)
_WALLPAPER = tuple(WALLPAPER.to_bytes(3, "big"))
_OPACITY = 0.85


class Subtitles(unittest.TestCase):
    def open(self, compositor=True, scale=1, width=1280, height=900, full_screen=True, **stage):
        context = contextlib.ExitStack()
        self.addCleanup(context.close)
        self.desktop = context.enter_context(
            Desktop(tray=False, compositor=compositor,
                    screen=f"{width * scale}x{height * scale}x24"))
        self.scale, self.width, self.height = scale, width, height
        self.shadow = _SHADOW if compositor else 0
        self.backdrop = subtitles.Backdrop(self.desktop, full_screen)
        self.stage = subtitles.Stage(self.desktop, scale=scale, **stage)

    def frame(self, window=None):
        """(x, y, width, height) of the subtitles in logical pixels, without their shadow."""
        x, y, width, height = (value / self.scale for value in window or self.stage.window())
        edge = self.shadow
        return x + edge, y + edge, width - 2 * edge, height - 2 * edge

    def pixels(self):
        """The whole screen: (width, bytes of RGB)."""
        with tempfile.NamedTemporaryFile(suffix=".png") as file:
            self.desktop.screenshot(file.name)
            data = subprocess.run(["convert", file.name, "-depth", "8", "rgb:-"], check=True,
                                  stdout=subprocess.PIPE).stdout
        return self.width * self.scale, data

    def pixel(self, x, y):
        width, data = self.pixels()
        start = 3 * (int(y * self.scale) * width + int(x * self.scale))
        return tuple(data[start:start + 3])

    def assert_color(self, found, wanted, tolerance=3):
        self.assertTrue(all(abs(a - b) <= tolerance for a, b in zip(found, wanted)),
                        f"{found} instead of {wanted}")

    def wait_for_color(self, x, y, wanted, tolerance=3):
        """The compositor draws when it likes."""
        wait_until(lambda: all(abs(a - b) <= tolerance
                               for a, b in zip(self.pixel(x, y), wanted)),
                   f"the colour {wanted} at {x}, {y}; it is {self.pixel(x, y)}")

    def blended(self, ground=_BACKDROP):
        return tuple(round(_OPACITY * own + (1 - _OPACITY) * below)
                     for own, below in zip(_BACKGROUND, ground))

    def show(self, name="short"):
        self.stage.show(*subtitles.TEXTS[name])

    def check_place(self, frame):
        x, y, width, height = frame
        self.assertEqual((x, width), ((self.width - 800) / 2, 800))
        self.assertEqual(y + height, self.height - 80)
        self.assertGreaterEqual(y, 16)

    def test_every_text_fits_and_stays_on_the_screen(self):
        self.open()
        self.stage.set(showOriginal=True)
        heights = {}
        for name in subtitles.TEXTS:
            self.show(name)
            self.check_place(self.frame())
            heights[name] = self.frame()[3]
        self.assertLess(heights["short"], heights["wrapping"])
        self.assertLess(heights["wrapping"], heights["long"])

    def check_looks(self, inside):
        x, y, width, height = self.frame()
        self.wait_for_color(x + 10, y + height / 2, inside)
        border = (0x2E, 0x7D, 0x32)
        self.assert_color(self.pixel(x + 400, y + 1), border)
        self.assert_color(self.pixel(x + 1, y + height / 2), border)
        self.wait_for_color(x + 3, y + 3, _BACKDROP, 20)     # Outside of a circle of 16,
        self.assert_color(self.pixel(x + 5, y + 5), border)  # and inside of it.

    def test_is_blended_with_what_is_below(self):
        self.open()
        self.show()
        self.check_looks(self.blended())
        x, y, width, height = self.frame()
        below = self.pixel(x + 400, y + height + 5)
        self.assertLess(sum(below), sum(_BACKDROP), "the shadow should darken what is below it")
        self.assert_color(self.pixel(x + 400, y + height + _SHADOW + 2), _BACKDROP, 1)
        self.assert_color(self.pixel(x + 400, y - _SHADOW - 2), _BACKDROP, 1)

    def test_is_opaque_without_a_compositor(self):
        self.open(compositor=False)
        self.show()
        self.check_place(self.frame())
        self.check_looks(_BACKGROUND)

    def test_follows_a_compositor_that_starts_and_ends(self):
        self.open(compositor=False)
        self.show()
        compositor = self.desktop.start_compositor()
        self.show("wrapping")
        self.shadow = _SHADOW
        self.check_looks(self.blended())
        self.desktop.children.stop(compositor)
        wait_until(lambda: not self.desktop.is_composited(), "the compositor to be gone")
        self.show()
        self.shadow = 0
        self.check_looks(_BACKGROUND)

    def test_is_sharp_at_twice_the_density(self):
        self.open(scale=2)
        self.stage.set(showOriginal=True)
        self.show("wrapping")
        self.check_place(self.frame())
        self.check_looks(self.blended())
        # Letters drawn at the density of the screen have edges between its pixels; letters that
        # are blown up consist of squares of two by two.
        x, y, width, height = (int(value * self.scale) for value in self.frame())
        row_width, data = self.pixels()
        uneven = 0
        for row in range(y + 40, y + height - 40, 2):
            for column in range(x + 60, x + width - 60, 2):
                start = 3 * (row * row_width + column)
                uneven += data[start:start + 3] != data[start + 3:start + 6]
        self.assertGreater(uneven, 2000)

    def test_clicks_go_through_to_the_window_below(self):
        self.open()
        self.show()
        x, y, width, height = self.frame()
        for place in ((x + 400, y + height - 25), (x + 5, y + 30), (x - 10, y + 20)):
            self.desktop.click(*(int(value) for value in place))
            self.backdrop.wait_for(f"click {int(place[0])} {int(place[1])}")

    def test_leaves_the_focus_where_it_is(self):
        self.open(full_screen=False)
        self.show()
        self.show("wrapping")
        self.desktop.key("x")
        self.backdrop.wait_for("key x")
        self.assertNotIn("active false", self.backdrop.lines())

    def test_is_above_a_full_screen_window_that_comes_later(self):
        self.open(full_screen=False)
        self.show()
        self.backdrop.full_screen()
        x, y, width, height = self.frame()
        wait_until(lambda: self.pixel(3, 3) == _BACKDROP, "the window to fill the screen")
        self.wait_for_color(x + 10, y + height / 2, self.blended())

    def test_the_next_result_comes_in_front_of_what_has_covered_the_last(self):
        self.open(compositor=False)
        self.show()
        x, y, width, height = self.frame()
        self.wait_for_color(x + 10, y + height - 25, _BACKGROUND)
        self.backdrop.cover()
        self.wait_for_color(x + 10, y + height - 25, _BACKDROP)
        self.show("wrapping")
        self.wait_for_color(x + 10, y + height - 25, _BACKGROUND)

    def test_is_on_every_virtual_desktop(self):
        self.open()
        self.show()
        self.desktop.go_to_virtual_desktop(1)
        self.wait_for_color(3, 3, _WALLPAPER)
        x, y, width, height = self.frame()
        self.wait_for_color(x + 10, y + height / 2, self.blended(_WALLPAPER))

    def test_has_no_entry_in_the_task_bar(self):
        self.open()
        before = self.desktop.managed_windows()
        self.show()
        self.assertEqual(self.desktop.managed_windows(), before)

    def test_takes_other_colours_while_it_is_shown(self):
        self.open()
        self.show()
        self.stage.set(overlayBgColor="#FFCC00", overlayOpacity=1.0, overlayBorderEnabled=False)
        x, y, width, height = self.frame()
        self.wait_for_color(x + 10, y + height / 2, (0xFF, 0xCC, 0x00))
        self.wait_for_color(x + 400, y + 1, (0xFF, 0xCC, 0x00))

    def test_is_gone_after_its_time(self):
        self.open(hide_after=300)
        self.show()
        wait_until(lambda: self.stage.window() is None, "the window to hide")

        def shown_again():
            # It may be gone again before this process has looked.
            self.show("wrapping")
            return self.stage.window()

        self.check_place(self.frame(wait_until(shown_again, "the window again")))

    def test_is_gone_at_the_end_of_a_run(self):
        self.open()
        self.show()
        self.stage.end()
        wait_until(lambda: self.stage.window() is None, "the window to hide")

    def test_moves_to_what_is_left_when_a_screen_is_unplugged(self):
        self.open(width=2000)
        self.desktop.plug_monitors([("right", 1000, 0, 1000, 900), ("left", 0, 0, 1000, 900)])
        self.show()
        wait_until(lambda: self.frame()[0] == 1000 + 100, "the window on the main screen")
        self.desktop.unplug_monitor("right")
        wait_until(lambda: self.frame()[0] == 100, f"the window to move: {self.stage.window()}")


if __name__ == "__main__":
    unittest.main()
