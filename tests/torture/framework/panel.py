"""What the panel says about a run, by the names of what is on the screen."""

from harness.texts import Texts

text = Texts("en")


class Panel:
    """One reading of it. What changes meanwhile may be in it half, so what a reading says is true once a
    second one says it, too: see `seen`."""

    def __init__(self, life):
        self.names = [name for _, name in life.stage.accessibility.names(life.program.pid) if name]

    def says(self, key):
        return text(key) in self.names

    def begins(self, begin):
        """What begins so, or None."""
        return next((name for name in self.names if name.startswith(begin)), None)

    def tells(self, key):
        """The same for a text that ends with something that is put in."""
        return self.begins(text(key).partition("%1")[0])

    @property
    def listens(self):
        return self.begins(text("status.listening")) is not None

    @property
    def is_interrupted(self):
        return self.says("run.interrupted")

    @property
    def offers_server(self):
        """Whether it takes the speech server for one that does not run."""
        return self.says("main.backend.start")

    @property
    def is_well(self):
        return (self.listens and not self.is_interrupted and self.says("main.backend.stop")
                and self.says("main.stop"))


def seen(life, fits, what):
    """Waits until two readings in a row fit; returns the second."""
    def twice():
        return fits(Panel(life)) and fits(panel := Panel(life)) and panel

    return life.until(twice, f"the panel to say: {what}")
