"""A desktop portal that tells programs whether the person wants them light or dark."""

import pathlib
import subprocess
import sys

_NAME = "org.freedesktop.portal.Desktop"
_PATH = "/org/freedesktop/portal/desktop"
_GROUP = "org.freedesktop.appearance"
_KEY = "color-scheme"
_SCHEMES = {"none": 0, "dark": 1, "light": 2}

_INTERFACE = """
<node>
  <interface name="org.freedesktop.portal.Settings">
    <method name="Read">
      <arg type="s" direction="in"/><arg type="s" direction="in"/>
      <arg type="v" direction="out"/>
    </method>
    <signal name="SettingChanged">
      <arg type="s"/><arg type="s"/><arg type="v"/>
    </signal>
  </interface>
</node>
"""


class Portal:
    """The settings portal on `desktop`'s bus, from now until the desktop ends. It is a process of
    its own, so that it answers while the test waits for something."""

    def __init__(self, desktop, scheme="light"):
        self._process = desktop.children.start(
            [sys.executable, "-m", "harness.portal", scheme],
            env={**desktop.environment, "PYTHONDONTWRITEBYTECODE": "1"},
            cwd=pathlib.Path(__file__).resolve().parents[1],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._wait_for_answer()

    def set_scheme(self, scheme):
        """Changes the person's wish: "none", "dark" or "light"; programs are told."""
        self._process.stdin.write(scheme + "\n")
        self._process.stdin.flush()
        self._wait_for_answer()

    def _wait_for_answer(self):
        if not self._process.stdout.readline():
            raise RuntimeError("the settings portal ended")


def _serve(scheme):
    import gi
    gi.require_version("Gio", "2.0")
    from gi.repository import Gio, GLib

    loop = GLib.MainLoop()
    current = {"scheme": scheme}
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def value():
        return GLib.Variant("u", _SCHEMES[current["scheme"]])

    def called(_bus, _sender, _path, _interface, _method, arguments, invocation):
        if tuple(arguments.unpack()) == (_GROUP, _KEY):
            # The portal wraps what it reads once more.
            invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", value()),)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such setting")

    bus.register_object(_PATH, Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0], called)
    Gio.bus_own_name_on_connection(bus, _NAME, Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), None)

    def told(channel, _condition):
        line = channel.readline()
        if not line:
            loop.quit()
            return False
        current["scheme"] = line.strip()
        bus.emit_signal(None, _PATH, "org.freedesktop.portal.Settings", "SettingChanged",
                        GLib.Variant("(ssv)", (_GROUP, _KEY, value())))
        bus.flush_sync()
        print("changed", flush=True)
        return True

    GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, told)
    loop.run()


if __name__ == "__main__":
    _serve(sys.argv[1])
