"""The private desktop: screen, window manager, tray, message bus, accessibility."""

import os
import pathlib
import shutil
import subprocess
import tempfile

from . import x11
from .processes import Children, Timeout, wait_until

SCREEN = "1280x900x24"
EMPTY_TRAY_WIDTH = 8
_SERVER_STARTS = 5
WALLPAPER = 0x5B6B7D


class Desktop:
    """A context: the desktop stands inside it and is gone, with all its files, after it.

    `environment` is what programs on this desktop are started with; `home` is their home directory.
    """

    def __init__(self, tray=True, language="en_US.UTF-8", keep_folder=None, compositor=False,
                 screen=SCREEN):
        self._with_tray = tray
        self._with_compositor = compositor
        self._screen = screen
        self._language = language
        self._keep_folder = keep_folder
        self.children = Children()
        self.environment = {}

    def __enter__(self):
        self.folder = pathlib.Path(self._keep_folder or tempfile.mkdtemp(prefix="orvane-desktop-"))
        self.home = self.folder / "home"
        try:
            self._make_folders()
            self._start_screen()
            self._start_bus()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, *_):
        self.children.stop_all()
        if not self._keep_folder:
            shutil.rmtree(self.folder, ignore_errors=True)

    def _make_folders(self):
        runtime = self.folder / "runtime"
        for folder in (self.home, runtime):
            folder.mkdir(mode=0o700, parents=True, exist_ok=True)
        kept = {name: value for name, value in os.environ.items()
                if name in ("PATH", "TZ") or name.endswith("SAN_OPTIONS")}
        self.environment = {
            **kept,
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_STATE_HOME": str(self.home / ".local/state"),
            "LANG": "C.UTF-8",
            "LANGUAGE": self._language,
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_QPA_PLATFORM": "xcb",
            "NO_AT_BRIDGE": "0",
        }

    def _start(self, command, **options):
        log = (self.folder / f"{pathlib.Path(command[0]).name}.log").open("ab")
        with log:
            return self.children.start(command, env=self.environment, stdout=log, stderr=log,
                                       **options)

    def _start_server(self):
        """Starts an X server; returns its number, or nothing when it gives up."""
        read_end, write_end = os.pipe()
        try:
            self._start(["Xvfb", "-displayfd", str(write_end), "-screen", "0", self._screen,
                         "-nolisten", "tcp", "-noreset"], pass_fds=(write_end,))
        finally:
            os.close(write_end)
        with os.fdopen(read_end) as answer:
            return answer.readline().strip()

    def _start_screen(self):
        # Servers of one number, each in a network of its own, keep their compiled keyboards in the same
        # place and may take them away from each other.
        number = next(filter(None, (self._start_server() for _ in range(_SERVER_STARTS))), None)
        if not number:
            raise RuntimeError("Xvfb did not start:\n" + self.log_of("Xvfb"))
        self.environment["DISPLAY"] = f":{number}"
        # A plain ground, neither black nor white, on which windows and subtitles can be seen.
        x11.set_wallpaper(self.environment["DISPLAY"], WALLPAPER)
        # A key whose release is late on a busy machine is still pressed only once.
        x11.stop_key_repeat(self.environment["DISPLAY"])
        # A window that appears while the window manager takes over the screen can get lost.
        ready = self.folder / "openbox.ready"
        self._start(["openbox", "--sm-disable", "--startup", f"touch '{ready}'"])
        wait_until(ready.exists, "the window manager")
        if self._with_compositor:
            self.start_compositor()
        if self._with_tray:
            self._start(["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                         "--heighttype", "pixel", "--height", "28", "--SetPartialStrut", "true"])
            self._wait_for_tray()

    def start_compositor(self):
        """Lets translucent windows be blended with what is below them from now on. It is told to
        draw shadows, as desktops do."""
        settings = self.folder / "picom.conf"
        settings.write_text('shadow = true;\nshadow-exclude = ["_GTK_FRAME_EXTENTS@:c"];\n')
        process = self._start(["picom", "--config", str(settings), "--backend", "xrender"])
        wait_until(self.is_composited, "the compositor")
        return process

    def is_composited(self):
        return x11.has_compositor(self.environment["DISPLAY"])

    def plug_monitors(self, monitors):
        """Divides the screen into monitors: see harness.x11."""
        x11.plug_monitors(self.environment["DISPLAY"], monitors)

    def unplug_monitor(self, name):
        x11.unplug_monitor(self.environment["DISPLAY"], name)

    def go_to_virtual_desktop(self, number):
        self._run(["xdotool", "set_desktop", str(number)])

    def managed_windows(self):
        """The windows that a task bar would list."""
        return self._run(["xprop", "-root", "-notype", "_NET_CLIENT_LIST"])

    def _wait_for_tray(self):
        try:
            wait_until(self.tray_window, "the tray")
        except Timeout as error:
            raise Timeout(f"{error}; it says: {self.log_of('trayer')!r}; on screen: "
                          + self._run(["xwininfo", "-root", "-tree"])) from None

    def _start_bus(self):
        # The bus leads to the accessibility services, which it starts itself when asked.
        bus = self.children.start(
            ["dbus-daemon", "--session", "--nofork", "--print-address=1",
             f"--address=unix:path={self.folder}/bus"],
            env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        address = bus.stdout.readline().strip()
        if not address:
            raise RuntimeError("dbus-daemon did not start")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self._start(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        wait_until(self._has_accessibility, "the accessibility bus")

    def _run(self, command, required=True):
        return subprocess.run(command, env=self.environment, check=required, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def _has_accessibility(self):
        answer = self._run(
            ["dbus-send", "--session", "--print-reply=literal", "--dest=org.a11y.Bus",
             "/org/a11y/bus", "org.a11y.Bus.GetAddress"], required=False)
        return "unix:" in answer

    def log_of(self, program):
        """What `program`, one of the desktop's own, has printed."""
        file = self.folder / f"{program}.log"
        return file.read_text(errors="replace") if file.exists() else ""

    def tray_window(self):
        """The tray's (x, y, width, height), or None."""
        return next(iter(self.windows("panel")), None)

    def tray_number(self):
        """The number of the tray's window."""
        return int(self._run(["xdotool", "search", "--onlyvisible", "--classname", "^panel$"])
                   .split()[0])

    def tray_item(self):
        """The (x, y, width, height) of the tray once it holds an item, else None. It grows first and
        moves to the edge of the screen then."""
        window = self.tray_window()
        if window and window[2] > EMPTY_TRAY_WIDTH and (
                window[0] + window[2] == int(self._screen.split("x")[0])):
            return window
        return None

    def wait_until_tray_is_empty(self):
        """An ended program's item goes a little later than the program."""

        def is_empty():
            window = self.tray_window()
            return window is not None and window[2] <= EMPTY_TRAY_WIDTH

        wait_until(is_empty, "the tray to be empty")

    def is_above(self, window, other):
        """Whether a managed window, by its number, stands in front of another one."""
        said = self._run(["xprop", "-root", "-notype", "_NET_CLIENT_LIST_STACKING"])
        stacked = [int(number.strip(" ,"), 16) for number in said.split("#")[-1].split(",")]
        return stacked.index(int(window)) > stacked.index(int(other))

    def windows(self, name):
        """The (x, y, width, height) of every visible window whose class is called `name`. Finds
        also what the accessibility services do not list: a tray's item and menu."""
        return [place for _, place in self.numbered_windows(name)]

    def numbered_windows(self, name):
        """The same with each window's number, as (number, place)."""
        places = [(window, self._place(window)) for window in self._run(
            ["xdotool", "search", "--onlyvisible", "--classname", f"^{name}$"],
            required=False).split()]
        return [(window, place) for window, place in places if place]

    def _place(self, window):
        values = dict(line.split("=", 1) for line in self._run(
            ["xdotool", "getwindowgeometry", "--shell", window], required=False).splitlines()
            if "=" in line)
        return (tuple(int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))
                if "WIDTH" in values else None)

    def click_tray(self, button=1):
        """Clicks the only item in the tray."""
        x, y, width, height = wait_until(self.tray_item, "an item in the tray")
        self._run(["xdotool", "mousemove", str(x + width // 2), str(y + height // 2),
                   "click", str(button)])

    def key(self, *keys):
        """Presses keys, named as xdotool names them, in the window with the focus."""
        self._run(["xdotool", "key", "--clearmodifiers", *keys])

    def type(self, text):
        self._run(["xdotool", "type", "--delay", "5", text])

    def click(self, x, y, button=1):
        self._run(["xdotool", "mousemove", str(x), str(y), "click", str(button)])

    def screenshot(self, path, window="root"):
        """Saves a picture of the whole screen, or of the window with the given number."""
        pathlib.Path(path).parent.mkdir(parents=True, exist_ok=True)
        self._run(["import", "-silent", "-window", window, "-strip", str(path)])

    def brightness(self, x, y):
        """How bright the pixel at (x, y) of the screen is, 0..1."""
        return float(self._run(["import", "-silent", "-window", "root", "-crop", f"1x1+{x}+{y}",
                                "-colorspace", "gray", "-format", "%[fx:mean]", "info:"]))
