"""A notification service that writes down what programs tell the person."""

import json
import pathlib
import subprocess
import sys

_NAME = "org.freedesktop.Notifications"
_PATH = "/org/freedesktop/Notifications"

_INTERFACE = """
<node>
  <interface name="org.freedesktop.Notifications">
    <method name="GetCapabilities"><arg type="as" direction="out"/></method>
    <method name="Notify">
      <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
      <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
      <arg type="u" direction="out"/>
    </method>
  </interface>
</node>
"""


class Notifications:
    """The notification service on `desktop`'s bus, from now until the desktop ends."""

    def __init__(self, desktop):
        self._file = pathlib.Path(desktop.folder) / "notifications"
        self._file.touch()
        process = desktop.children.start(
            [sys.executable, "-m", "harness.notifications", str(self._file)],
            env={**desktop.environment, "PYTHONDONTWRITEBYTECODE": "1"},
            cwd=pathlib.Path(__file__).resolve().parents[1], stdout=subprocess.PIPE, text=True)
        if not process.stdout.readline():
            raise RuntimeError("the notification service ended")

    def seen(self):
        """The [title, text] of every notification so far, oldest first."""
        return [json.loads(line) for line in self._file.read_text(encoding="utf-8").splitlines()]


def _serve(path):
    import gi
    gi.require_version("Gio", "2.0")
    from gi.repository import Gio, GLib

    def answer(_connection, _sender, _path, _interface, method, parameters, invocation):
        if method == "Notify":
            title, text = parameters.unpack()[3:5]
            with open(path, "a", encoding="utf-8") as file:
                file.write(json.dumps([title, text]) + "\n")
            invocation.return_value(GLib.Variant("(u)", (1,)))
        else:
            invocation.return_value(GLib.Variant("(as)", (["body"],)))

    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    interface = Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0]
    bus.register_object(_PATH, interface, answer, None, None)
    Gio.bus_own_name_on_connection(bus, _NAME, Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), None)
    GLib.MainLoop().run()


if __name__ == "__main__":
    _serve(sys.argv[1])
