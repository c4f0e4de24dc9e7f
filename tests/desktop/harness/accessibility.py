"""Uses the program the way an assistive program does: by what its controls are called."""

import contextlib
import os

from .processes import PATIENCE, Timeout, wait_until


# How long the program may be busy before a question counts as failed, also at its start. The
# library's own 0.8 s is less than a busy machine needs.
_PATIENCE_MILLISECONDS = 60_000

# What some versions of the library call a role, and how it is called here.
_ROLES = {"button": "push button"}


def _role_of(node):
    role = node.get_role_name()
    return _ROLES.get(role, role)


class Accessibility:
    """The accessible programs of `desktop`. One per process: the library keeps its connection."""

    _connected_to = None

    def __init__(self, desktop):
        address = desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        if Accessibility._connected_to not in (None, address):
            raise RuntimeError("one process can use one accessible desktop only")
        Accessibility._connected_to = address
        for name in ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "XDG_RUNTIME_DIR"):
            os.environ[name] = desktop.environment[name]
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        Atspi.init()
        Atspi.set_timeout(_PATIENCE_MILLISECONDS, _PATIENCE_MILLISECONDS)
        # Nobody runs the event loop here, so a cache would never hear of changes.
        self._atspi = Atspi

    def _application(self, pid):
        desktop = self._atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child is not None and child.get_process_id() == pid:
                return child
        return None

    def nodes(self, pid):
        """Every node of the program's windows that is on screen, in reading order. One that goes
        meanwhile is left out with what is in it."""
        application = self._ask(lambda: self._application(pid))
        stack = [application] if application is not None else []
        while stack:
            node = stack.pop()
            self._ask(node.clear_cache)
            if node is application or self._ask(lambda: self._is_showing(node)):
                yield node
                stack += reversed(self._ask(lambda: self._children_of(node)) or [])

    def _children_of(self, node):
        children = [node.get_child_at_index(i) for i in range(node.get_child_count())]
        return [child for child in children if child is not None]

    def _ask(self, question):
        """The answer, or None when whom it is about has gone."""
        try:
            return question()
        except self._errors():
            return None

    def _errors(self):
        from gi.repository import GLib
        return (GLib.Error, AttributeError)

    def _is_showing(self, node):
        return node.get_state_set().contains(self._atspi.StateType.SHOWING)

    def find(self, pid, name, role=None):
        """The first node on screen called `name` (of `role`, if given), or None."""
        for node in self.nodes(pid):
            if self._ask(lambda: node.get_name() == name and role in (None, _role_of(node))):
                return node
        return None

    def wait_for(self, pid, name, role=None, limit=PATIENCE):
        return wait_until(lambda: self.find(pid, name, role), f"a control called {name!r}", limit)

    def names(self, pid):
        """What is on screen: (role, name) of every node."""
        found = [self._ask(lambda: (_role_of(node), node.get_name()))
                 for node in self.nodes(pid)]
        return [names for names in found if names]

    def press(self, pid, name, limit=PATIENCE):
        """Presses the button (or switch) called `name` as soon as it can be pressed."""

        def pressed():
            for node in self.nodes(pid):
                if self._ask(lambda: node.get_name() == name and self._is_enabled(node)) and (
                        action := self._ask(lambda: self._press_of(node))):
                    return self._ask(action)
            return False

        try:
            wait_until(pressed, f"a button called {name!r}", limit)
        except Timeout as error:
            raise Timeout(f"{error}; on screen: {self.names(pid)}") from None

    def _is_enabled(self, node):
        return node.get_state_set().contains(self._atspi.StateType.ENABLED)

    def _press_of(self, node):
        """What presses `node`, or None."""
        action = node.get_action_iface()
        for index in range(action.get_n_actions() if action else 0):
            if action.get_action_name(index).lower() in ("press", "toggle", "click"):
                return lambda: action.do_action(index)
        return None

    def press_when_told(self, pid, name):
        """Finds the button called `name`; returns what presses it, without any further search."""
        return self._press_of(self.wait_for(pid, name))

    def focused(self, pid):
        """The node on screen that has the focus, or None."""
        for node in self.nodes(pid):
            if self._ask(lambda: node.get_state_set().contains(self._atspi.StateType.FOCUSED)):
                return node
        return None

    def has_active_window(self, pid):
        """Whether one of the program's windows has the keyboard's focus."""
        return any(self._ask(lambda: self.is_active(node)) for node in self.nodes(pid))

    def is_active(self, window):
        """Whether `window` is the one that gets the keys."""
        return window.get_state_set().contains(self._atspi.StateType.ACTIVE)

    def grab_focus(self, node):
        """Gives `node` the focus the way a screen reader does."""
        return node.get_component_iface().grab_focus()

    def value(self, node):
        """What a slider stands at."""
        return node.get_value_iface().get_current_value()

    def set_value(self, node, value):
        """Moves a slider to `value`, as assistive programs do; None when it has gone."""
        return self._ask(lambda: node.get_value_iface().set_current_value(value))

    def menu_items(self, move):
        """The items of the menu in which `move()` moves the focus, top to bottom. Menus stand beside
        the tree of windows, so the way to them is the news of the focus. A menu that has just come
        may miss the first move, which is then made again."""
        from gi.repository import GLib
        found = []
        listener = self._atspi.EventListener.new(
            lambda event, *_: found.append(event.source) if event.detail1 else None)
        listener.register("object:state-changed:focused")

        def item():
            while GLib.MainContext.default().iteration(False):
                pass
            # News of another menu's items may still be on its way when they have gone.
            return next((node for node in found
                         if self._ask(node.get_role_name) == "menu item"), None)

        def moved():
            move()
            with contextlib.suppress(Timeout):
                return wait_until(item, "", limit=2.0)
            return None

        try:
            menu = wait_until(moved, "an item of a menu to get the focus").get_parent()
        finally:
            listener.deregister("object:state-changed:focused")
        return [menu.get_child_at_index(index) for index in range(menu.get_child_count())]

    def is_checked(self, pid, name):
        return self.shows_checked(self.wait_for(pid, name))

    def shows_checked(self, node):
        node.clear_cache()
        return node.get_state_set().contains(self._atspi.StateType.CHECKED)

    def value_text(self, pid, name):
        """What a choice called `name` shows as chosen."""
        node = self.wait_for(pid, name, "combo box")
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child.get_role_name() == "text":
                # By the interface's name: newer versions have another operation of this name.
                text = self._atspi.Text
                return text.get_text(child, 0, text.get_character_count(child))
        return ""

    def extents(self, node):
        """(x, y, width, height) of a node on the screen."""
        box = node.get_extents(self._atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height
