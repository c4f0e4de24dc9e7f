"""What a chat model says: a translation, or one of the ways it comes wrapped, cut or not at all."""

import math
from dataclasses import dataclass, replace
from typing import Any, Callable, Mapping, Optional, Sequence

from ._http import Reply, html_page

Messages = Sequence[Mapping[str, Any]]
_THOUGHT = "The user wants this line in the other language. I think of each word."


@dataclass(frozen=True)
class Answer:
    content: Optional[str]
    reasoning: str = ""
    finish: str = "stop"
    status: int = 0  # Instead of an answer, worded as the server words it.
    reply: Optional[Reply] = None  # Instead of everything.

    def thinking(self) -> "Answer":
        """The same after some thought."""
        return replace(self, reasoning=self.reasoning or _THOUGHT)

    def within(self, most: int) -> "Answer":
        """Cut off after so many tokens, thoughts first."""
        if tokens(self.reasoning) + tokens(self.content or "") <= most:
            return self
        thought = self.reasoning.encode()[: most * 4].decode(errors="ignore")
        left = most - tokens(thought)
        content = (self.content or "").encode()[: left * 4].decode(errors="ignore")
        return replace(self, content=content, reasoning=thought, finish="length")

    def joined(self) -> "Answer":
        """With its thoughts in the text."""
        if not self.reasoning:
            return self
        closing = "\n</think>\n\n" if self.content else ""
        return replace(
            self, content=f"<think>\n{self.reasoning}{closing}{self.content or ''}", reasoning=""
        )


def tokens(text: str) -> int:
    """A rough count."""
    return math.ceil(len(text.encode()) / 4)


def capitals(messages: Messages) -> str:
    """What is answered unless a test says otherwise: the last paragraph in capitals."""
    said = messages[-1]["content"]
    content = said if isinstance(said, str) else "".join(part["text"] for part in said)
    return content.rstrip().rpartition("\n\n")[2].strip().upper()


# From the right text to what is said instead.
STYLES: Mapping[str, Callable[[str], Answer]] = {
    "plain": Answer,
    "think": lambda text: Answer(f"<think>\n{_THOUGHT}\n</think>\n\n{text}"),
    "think_empty": lambda text: Answer(f"<think>\n\n</think>\n\n{text}"),
    "think_unclosed": lambda text: Answer(f"<think>\n{_THOUGHT} Perhaps {text}", finish="length"),
    "think_end": lambda text: Answer(f"{_THOUGHT}\n</think>\n\n{text}"),
    "quoted": lambda text: Answer(f'"{text}"'),
    "curly": lambda text: Answer(f"“{text}”"),
    "guillemets": lambda text: Answer(f"« {text} »"),
    "fenced": lambda text: Answer(f"```text\n{text}\n```"),
    "noted": lambda text: Answer(f"{text}\n\n(Note: this keeps the informal tone.)"),
    "labelled": lambda text: Answer(f"Here is the translation:\n\n{text}"),
    "spaced": lambda text: Answer(f" \n{text}\n\n"),
    "refusal": lambda text: Answer("I'm sorry, but I can't help with that request."),
    "chatty": lambda text: Answer("Good question! There are several views on this, so let us see."),
    "length": lambda text: Answer(text[: max(1, len(text) // 2)], finish="length"),
    "empty": lambda text: Answer("", reasoning=f"{_THOUGHT} So: {text}"),
    "null": lambda text: Answer(None),
    "html": lambda text: Answer(text, reply=html_page()),
    "missing": lambda text: Answer(text, status=404),
    "full": lambda text: Answer(text, status=503),
    "broken": lambda text: Answer(text, status=500),
    "no_choices": lambda text: Answer(text, reply=Reply(body=b'{"choices": []}')),
}
