"""What the other tests stand on."""

import os
import pathlib
import socket
import unittest

from harness.isolation import isolate
from harness.speech import align, word_errors
from harness.weak_network import WeakNetwork


class Harness(unittest.TestCase):
    def test_words_are_aligned_the_shortest_way(self):
        said = "he was not an ill disposed young man".split()
        heard = "he was an ill suppose young man indeed".split()
        self.assertEqual(align(said, heard), [
            ("he", "he"), ("was", "was"), ("not", None), ("an", "an"), ("ill", "ill"),
            ("disposed", "suppose"), ("young", "young"), ("man", "man"), (None, "indeed")])
        self.assertEqual(word_errors(said, heard), 3)
        self.assertEqual(align(["one"], []), [("one", None)])
        self.assertEqual(align([], ["one"]), [(None, "one")])
        self.assertEqual(word_errors([], []), 0)

    def test_a_network_of_its_own_has_loopback_and_nobody_else(self):
        displays = pathlib.Path("/tmp/.X11-unix")
        displays.mkdir(mode=0o1777, exist_ok=True)
        ours = displays / f"of-process-{os.getpid()}"
        ours.touch()
        self.addCleanup(ours.unlink)
        with socket.create_server(("127.0.0.1", 0)) as ours:
            port = ours.getsockname()[1]
            child = os.fork()
            if child == 0:
                os._exit(self.look_for(port))
            _, status = os.waitpid(child, 0)
        self.assertIn(os.waitstatus_to_exitcode(status), (0, 7))

    def look_for(self, port):
        """In a child: 0 when neither the port nor a display of ours can be reached from a new network,
        in which other ports can be; 7 when the system allows no such network."""
        if isolate():
            return 7
        if os.listdir("/tmp/.X11-unix"):
            return 2
        with socket.socket() as caller:
            if caller.connect_ex(("127.0.0.1", port)) == 0:
                return 1
        with socket.create_server(("127.0.0.1", port)) as theirs, socket.socket() as caller:
            return caller.connect_ex(theirs.getsockname())


class WeakNetworks(unittest.TestCase):
    NEEDS_WEAK_NETWORK = True

    def setUp(self):
        self.server = self.enterContext(socket.create_server(("127.0.0.1", 0)))
        self.network = self.enterContext(WeakNetwork())
        host, port = self.network.stand_for(self.server.getsockname()[1]).split(":")
        self.address = host, int(port)
        self.caller = self.call()
        self.called = self.enterContext(self.server.accept()[0])

    def call(self):
        caller = self.enterContext(socket.create_connection(self.address))
        caller.settimeout(0.2)
        return caller

    def ask(self):
        """What comes back for what is sent, if anything does in time."""
        self.caller.sendall(b"x")
        self.called.sendall(self.called.recv(1))
        return self.caller.recv(1)

    def test_it_carries_and_loses_nothing_by_itself(self):
        self.assertEqual(self.ask(), b"x")

    def test_what_is_swallowed_comes_once_the_network_is_back(self):
        self.network.swallow()
        self.caller.sendall(b"x")
        self.called.settimeout(0.2)
        with self.assertRaises(TimeoutError):
            self.called.recv(1)
        self.network.swallow(False)
        self.called.settimeout(None)
        self.assertEqual(self.called.recv(1), b"x")

    def test_another_address_leaves_the_old_connections_behind(self):
        before = self.caller.getsockname()
        self.network.move()
        self.caller.sendall(b"x")
        self.called.settimeout(0.2)
        with self.assertRaises(TimeoutError):
            self.called.recv(1)
        self.assertNotEqual(self.call().getsockname()[0], before[0])


if __name__ == "__main__":
    unittest.main()
