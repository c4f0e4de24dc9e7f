"""What the desktop's own programs do not offer: speaks to the X server itself."""

import contextlib
import ctypes

_Atom = ctypes.c_ulong


class _Monitor(ctypes.Structure):
    _fields_ = [("name", _Atom), ("primary", ctypes.c_int), ("automatic", ctypes.c_int),
                ("noutput", ctypes.c_int), ("x", ctypes.c_int), ("y", ctypes.c_int),
                ("width", ctypes.c_int), ("height", ctypes.c_int), ("mwidth", ctypes.c_int),
                ("mheight", ctypes.c_int), ("outputs", ctypes.POINTER(ctypes.c_ulong))]


@contextlib.contextmanager
def _connection(display_name):
    x11 = ctypes.CDLL("libX11.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XDefaultRootWindow.restype = ctypes.c_ulong
    x11.XInternAtom.restype = x11.XGetSelectionOwner.restype = _Atom
    display = ctypes.c_void_p(x11.XOpenDisplay(display_name.encode()))
    try:
        yield x11, display
    finally:
        x11.XCloseDisplay(display)


def _atom(x11, display, name):
    return _Atom(x11.XInternAtom(display, name.encode(), 0))


def has_compositor(display_name):
    """Whether somebody holds the selection of those who blend windows."""
    with _connection(display_name) as (x11, display):
        return x11.XGetSelectionOwner(display, _atom(x11, display, "_NET_WM_CM_S0")) != 0


def stop_key_repeat(display_name):
    with _connection(display_name) as (x11, display):
        x11.XAutoRepeatOff(display)


def set_wallpaper(display_name, color):
    """Covers the ground with `color` (0xRRGGBB), in the way that compositors know."""
    with _connection(display_name) as (x11, display):
        x11.XCreatePixmap.restype = ctypes.c_ulong
        x11.XCreateGC.restype = ctypes.c_void_p
        root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
        depth = x11.XDefaultDepth(display, x11.XDefaultScreen(display))
        pixmap = ctypes.c_ulong(x11.XCreatePixmap(display, root, 1, 1, depth))
        context = ctypes.c_void_p(x11.XCreateGC(display, pixmap, ctypes.c_ulong(0), None))
        x11.XSetForeground(display, context, ctypes.c_ulong(color))
        x11.XFillRectangle(display, pixmap, context, 0, 0, 1, 1)
        x11.XSetWindowBackgroundPixmap(display, root, pixmap)
        x11.XClearWindow(display, root)
        for name in ("_XROOTPMAP_ID", "ESETROOT_PMAP_ID"):
            x11.XChangeProperty(display, root, _atom(x11, display, name),
                                _atom(x11, display, "PIXMAP"), 32, 0,
                                ctypes.byref(pixmap), 1)
        x11.XSetCloseDownMode(display, 1)  # The picture outlives this connection.


def _monitors(xrandr, x11, display):
    root = ctypes.c_ulong(x11.XDefaultRootWindow(display))
    count = ctypes.c_int()
    present = xrandr.XRRGetMonitors(display, root, 1, ctypes.byref(count))
    return root, [present[i] for i in range(count.value)]


def _xrandr():
    library = ctypes.CDLL("libXrandr.so.2")
    library.XRRGetMonitors.restype = ctypes.POINTER(_Monitor)
    return library


def plug_monitors(display_name, monitors):
    """Divides the screen into `monitors`, a list of (name, x, y, width, height); the first one is
    the main one."""
    xrandr = _xrandr()
    with _connection(display_name) as (x11, display):
        root, found = _monitors(xrandr, x11, display)
        for number, (name, x, y, width, height) in enumerate(monitors):
            # The screen's one real output belongs to the last monitor, since one without an output
            # can be unplugged.
            last = number == len(monitors) - 1
            outputs = (ctypes.c_ulong * 1)(found[0].outputs[0])
            monitor = _Monitor(_atom(x11, display, name), number == 0, 0, 1 if last else 0, x, y,
                               width, height, width // 4, height // 4, outputs)
            xrandr.XRRSetMonitor(display, root, ctypes.byref(monitor))
        x11.XSync(display, 0)


def unplug_monitor(display_name, name):
    xrandr = _xrandr()
    with _connection(display_name) as (x11, display):
        root, _ = _monitors(xrandr, x11, display)
        xrandr.XRRDeleteMonitor(display, root, _atom(x11, display, name))
        x11.XSync(display, 0)
