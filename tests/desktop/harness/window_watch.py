"""Sees when windows appear, as the display server tells it, without asking again and again."""

import select
import time

from Xlib import X, display, error
from Xlib.ext import xtest

from .processes import PATIENCE, Timeout


class WindowWatch:
    """A client of the display called `name` that is told of the windows of others."""

    def __init__(self, name, ground=(0x5B, 0x6B, 0x7D)):
        self._display = display.Display(name)
        self._root = self._display.screen().root
        self._root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self._display.sync()
        self._ground = ground

    def forget(self):
        """Drops what has happened so far."""
        self._display.sync()
        while self._display.pending_events():
            self._display.next_event()

    def click(self, x, y):
        """Clicks without starting a program first, as the user's hand does."""
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        xtest.fake_input(self._display, X.ButtonPress, 1)
        xtest.fake_input(self._display, X.ButtonRelease, 1)
        self._display.flush()

    def _next_event(self, deadline, what):
        while not self._display.pending_events():
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self._display.fileno()], [], [], left)[0]:
                raise Timeout(f"waited in vain for: {what}")
        return self._display.next_event()

    def follow(self, number):
        """From now on, changes of the window `number` are told."""
        self._display.create_resource_object("window", number).change_attributes(
            event_mask=X.StructureNotifyMask)
        self._display.sync()

    def wait_for_wider(self, number, width, limit=PATIENCE):
        """The time at which the window `number`, which is followed, was made wider than `width`."""
        deadline = time.monotonic() + limit
        while True:
            event = self._next_event(deadline, f"window {number} to grow")
            if event.type == X.ConfigureNotify and event.window.id == number \
                    and event.width > width:
                return time.monotonic()

    def wait_for_window(self, width, limit=PATIENCE):
        """The time at which a window at least as wide as `width` was on the screen and painted."""
        deadline = time.monotonic() + limit
        while True:
            event = self._next_event(deadline, f"a window {width} wide")
            if event.type != X.MapNotify:
                continue
            try:
                place = event.window.get_geometry()
            except error.XError:
                continue
            if place.width >= width:
                return self._wait_for_paint(place, deadline)

    def _wait_for_paint(self, place, deadline):
        x, y = place.x + place.width // 2, place.y + 40
        while time.monotonic() < deadline:
            image = self._root.get_image(x, y, 1, 1, X.ZPixmap, 0xFFFFFFFF)
            if tuple(image.data[2::-1]) != self._ground:
                return time.monotonic()
        raise Timeout("the window was not painted")
