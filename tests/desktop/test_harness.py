"""What the other tests stand on."""

import os
import pathlib
import socket
import unittest

from harness.isolation import isolate
from harness.speech import align, word_errors


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


if __name__ == "__main__":
    unittest.main()
