"""A message bus of the test's own, with or without a notification service on it.

  message_bus.py [--notifications [--refuse]]

Says: listening {address}, asked {method}, notified {name, title, body}. With --refuse
the service answers with an error.
"""

import argparse
import subprocess
import sys
import threading

from gi.repository import Gio, GLib

from service_peer import die_with_parent, say

_INTERFACE = """<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="Notify">
    <arg type="s" name="app_name" direction="in"/><arg type="u" name="replaces_id" direction="in"/>
    <arg type="s" name="app_icon" direction="in"/><arg type="s" name="summary" direction="in"/>
    <arg type="s" name="body" direction="in"/><arg type="as" name="actions" direction="in"/>
    <arg type="a{sv}" name="hints" direction="in"/>
    <arg type="i" name="expire_timeout" direction="in"/>
    <arg type="u" name="id" direction="out"/>
  </method>
</interface></node>"""


def answer(_connection, _sender, _path, _interface, method, parameters, invocation):
    if method == "Notify":
        name, _replaces, _icon, title, body, *_rest = parameters.unpack()
        say(event="notified", name=name, title=title, body=body)
        invocation.return_value(GLib.Variant("(u)", (1,)))
        return
    say(event="asked", method=method)
    if options.refuse:
        invocation.return_dbus_error("org.example.Refused", "nobody may notify")
    else:
        invocation.return_value(GLib.Variant("(as)", (["body"],)))


parser = argparse.ArgumentParser()
parser.add_argument("--notifications", action="store_true")
parser.add_argument("--refuse", action="store_true")
options = parser.parse_args()
bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                       preexec_fn=die_with_parent)
address = bus.stdout.readline().strip()
loop = GLib.MainLoop()


def own_name():
    connection = Gio.DBusConnection.new_for_address_sync(
        address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
        | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
    interface = Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0]
    connection.register_object("/org/freedesktop/Notifications", interface, answer, None, None)
    Gio.bus_own_name_on_connection(
        connection, "org.freedesktop.Notifications", Gio.BusNameOwnerFlags.NONE,
        lambda *_: say(event="listening", address=address), None)


def wait_for_the_end():
    sys.stdin.read()
    GLib.idle_add(loop.quit)


threading.Thread(target=wait_for_the_end, daemon=True).start()
if options.notifications:
    own_name()
else:
    say(event="listening", address=address)
loop.run()
bus.terminate()
bus.wait()
