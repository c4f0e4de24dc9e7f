"""Translates what a session said, with the translators there are."""

import asyncio
from typing import Callable

from . import protocol
from .engines import Report, Workers
from .hearing import Heard
from .languages import AUTO, canonical, same
from .notices import Notice, notice
from .protocol import Config
from .translators import Passage, TranslatorError
from .translators.selection import Choice, choose

ChooseTranslator = Callable[..., Choice]

# After a failure the next best serves for this long before the better one is tried again.
RETRY_SECONDS = 30.0

_CONTEXT_SENTENCES = 2
_CONTEXT_AGE_SECONDS = 30.0


class Translating:
    """The translator of one session; its functions are called one after another on the loop."""

    def __init__(
        self,
        workers: Workers,
        report: Report,
        now: Callable[[], float],
        choose_translator: ChooseTranslator = choose,
    ) -> None:
        self._workers = workers
        self._report = report
        self._now = now
        self._choose_translator = choose_translator
        self._config = Config()
        self._choices: dict[str, Choice] = {}
        self._failed_until: dict[tuple[object, ...], float] = {}
        self._said: list[Heard] = []
        self._warming: set["asyncio.Task[None]"] = set()

    def configure(self, config: Config) -> None:
        """Takes the wishes for all that follows; what failed before gets another chance."""
        self._config = config
        self._choices.clear()
        self._failed_until.clear()
        self._said.clear()

    async def told(self, language: str) -> tuple[str, tuple[Notice, ...]]:
        """Who translates from a language, which is chosen and got ready when it is not yet: a name,
        empty when nobody does, and what there is to tell about it."""
        if self._config.skipTranslation:
            return "", (notice("translation.by_client"),)
        if canonical(language) == AUTO:
            return "", (notice("translation.awaits_language"),)
        choice = await self._choice(language)
        return (choice.translator.name if choice.translator else ""), choice.notices

    def has_chosen(self, language: str) -> bool:
        """Whether it is settled who translates from a language."""
        self._forgive()
        return self._config.skipTranslation or canonical(language) in self._choices

    async def translate(self, heard: Heard) -> str:
        """The translation; the text itself where nobody knows the languages, or all failed; empty
        where the client translates."""
        if self._config.skipTranslation:
            return ""
        passage = Passage(heard.text, self._context(heard))
        self._said = [*self._said, heard][-_CONTEXT_SENTENCES:]
        tried: set[tuple[object, ...]] = set()
        choice = await self._choice(heard.language)
        while choice.translator is not None:
            translator = choice.translator
            try:
                return await self._workers.run(lambda: translator.translate(passage))
            except TranslatorError as error:
                await self._report(protocol.STATUS_WARNING, error.notice)
                tried.add(translator.key)
                if not (error.is_passing or error.is_of_text):
                    self._failed_until[translator.key] = self._now() + RETRY_SECONDS
                    self._choices.pop(canonical(heard.language), None)
            choice = await self._chosen(heard.language, frozenset({*self._failed_until, *tried}))
        return heard.text

    async def _choice(self, language: str) -> Choice:
        self._forgive()
        language = canonical(language)
        if language not in self._choices:
            choice = await self._chosen(language, frozenset(self._failed_until))
            self._choices[language] = choice
            self._warm_up(choice)
        return self._choices[language]

    async def _chosen(self, language: str, without: frozenset[tuple[object, ...]]) -> Choice:
        target = self._config.targetLang
        return await self._workers.run(
            lambda: self._choose_translator(language, target, without=without)
        )

    def _warm_up(self, choice: Choice) -> None:
        """Gets a translator ready while others may serve; that it fails shows when it is asked."""
        if choice.translator is None:
            return
        get_ready = choice.translator.warm_up

        async def warm_up() -> None:
            try:
                await self._workers.run(get_ready)
            except TranslatorError as error:
                await self._report(protocol.STATUS_WARNING, error.notice)

        task = asyncio.ensure_future(warm_up())
        self._warming.add(task)
        task.add_done_callback(self._warming.discard)

    def close(self) -> None:
        """Ends what still goes on."""
        for task in self._warming:
            task.cancel()

    def _context(self, heard: Heard) -> tuple[str, ...]:
        return tuple(
            one.text
            for one in self._said
            if same(one.language, heard.language) and heard.begin - one.end < _CONTEXT_AGE_SECONDS
        )

    def _forgive(self) -> None:
        """Lets failures go that are long enough past, so that the better one is tried again."""
        recovered = [key for key, until in self._failed_until.items() if until <= self._now()]
        for key in recovered:
            del self._failed_until[key]
        if recovered:
            self._choices.clear()
