"""A LibreTranslate server."""

from typing import Any, Callable, Mapping, Optional, Union
from urllib.parse import parse_qsl

from . import _http
from ._http import HttpStandIn, Reply, Request, json_reply

_LANGUAGES = {"en": "English", "de": "German", "es": "Spanish", "fr": "French", "ja": "Japanese"}
_FORMATS = ("text", "html")
# From text, source and target to the translation.
Translation = Callable[[str, str, str], str]


class _Refused(Exception):
    def __init__(self, status: int, text: str) -> None:
        super().__init__(text)
        self.status = status


def marked_capitals(text: str, source: str, target: str) -> str:
    """What is answered unless a test says otherwise."""
    return f"{target}: {text.upper()}"


class LibreTranslateServer(HttpStandIn):
    """`calls` holds what was understood: its fields, a text always as it came.

    `languages` are the codes there are; each is translated into all others but for `missing`.
    `detected` is what "auto" is taken for. `refuses` is a status for every call, and 0 is none.
    """

    def __init__(
        self,
        *,
        translate: Translation = marked_capitals,
        languages: Optional[Mapping[str, str]] = None,
        missing: tuple[tuple[str, str], ...] = (),
        detected: str = "en",
        key: Optional[str] = None,
        longest: int = 0,
        most: int = 0,
        refuses: int = 0,
        **options: Any,
    ) -> None:
        super().__init__(**options)
        self.calls: list[Mapping[str, Any]] = []
        self.refuses = refuses
        self._translate = translate
        self._languages = dict(_LANGUAGES if languages is None else languages)
        self._missing = missing
        self._detected = detected
        self._key = key
        self._longest = longest
        self._most = most

    def answer(self, request: Request) -> Reply:
        route = (request.method, request.path)
        if route == ("GET", "/languages"):
            return json_reply([self._language(code) for code in self._languages])
        if route == ("POST", "/translate"):
            return self.planned(lambda: self._translation(request))
        if request.path in ("/languages", "/translate"):
            return json_reply({"error": "405 Method Not Allowed"}, 405)
        return json_reply({"error": "404 Not Found"}, 404)

    def _language(self, code: str) -> Mapping[str, object]:
        targets = [other for other in self._languages if (code, other) not in self._missing]
        return {"code": code, "name": self._languages[code], "targets": targets}

    def _translation(self, request: Request) -> Reply:
        try:
            body = _fields(request)
            self._check_key(body)
            self._check_limits(body)
            self._check(body)
        except _Refused as refused:
            return json_reply({"error": str(refused)}, refused.status)
        with self._changed:
            self.calls.append(body)
            self._changed.notify_all()
        return json_reply(self._translated(body))

    def _check_key(self, body: Mapping[str, Any]) -> None:
        given = body.get("api_key")
        if self._key is None:
            return
        if not given:
            raise _Refused(403, "Please contact the server operator to get an API key")
        if given != self._key:
            raise _Refused(403, "Invalid API key")

    def _check_limits(self, body: Mapping[str, Any]) -> None:
        texts = _texts(body.get("q"))
        if self.refuses:
            said = {429: "Slowdown: too many requests", 500: "Cannot translate text: it failed"}
            raise _Refused(self.refuses, said.get(self.refuses, "Refused"))
        if self._most and len(texts) > self._most:
            raise _Refused(400, f"Invalid request: more than {self._most} texts")
        if self._longest and sum(map(len, texts)) > self._longest:
            raise _Refused(400, f"Invalid request: text longer than {self._longest} characters")

    def _check(self, body: Mapping[str, Any]) -> None:
        for name in ("q", "source", "target"):
            if not body.get(name):
                raise _Refused(400, f"Invalid request: missing {name} parameter")
        source, target = body["source"], body["target"]
        if source != "auto" and source not in self._languages:
            raise _Refused(400, f"{source} is not supported")
        if target not in self._languages:
            raise _Refused(400, f"{target} is not supported")
        if (source, target) in self._missing:
            raise _Refused(400, f"{source} to {target} is not supported")
        if body.get("format", "text") not in _FORMATS:
            raise _Refused(400, f"{body['format']} format is not supported")
        if not str(body.get("alternatives", 0)).isdigit():
            raise _Refused(400, "Invalid request: alternatives is no number")

    def _translated(self, body: Mapping[str, Any]) -> Mapping[str, object]:
        many = isinstance(body["q"], list)
        auto = body["source"] == "auto"
        source = self._detected if auto else body["source"]
        texts = [self._translate(text, source, body["target"]) for text in _texts(body["q"])]
        found: dict[str, object] = {"translatedText": texts if many else texts[0]}
        if auto:
            told = {"confidence": 90.0, "language": self._detected}
            found["detectedLanguage"] = [told] * len(texts) if many else told
        count = int(body.get("alternatives", 0))
        if count:
            others = [[f"{text} ({n + 2})" for n in range(count)] for text in texts]
            found["alternatives"] = others if many else others[0]
        return found


def _fields(request: Request) -> Mapping[str, Any]:
    """Of JSON or of a form."""
    kind = request.media_type()
    if kind == "application/x-www-form-urlencoded":
        return dict(parse_qsl(request.body.decode("utf-8", "replace")))
    if kind != "application/json":
        raise _Refused(400, "Invalid request: missing q parameter")
    try:
        body = request.json()
    except ValueError:
        raise _Refused(400, "Invalid JSON format") from None
    if not isinstance(body, dict):
        raise _Refused(400, "Invalid JSON format")
    for name in ("source", "target", "format", "api_key"):
        if not isinstance(body.get(name, ""), str):
            raise _Refused(400, f"Invalid request: {name} is no text")
    return body


def _texts(q: Union[str, list[str], None]) -> list[str]:
    """Fails with _Refused."""
    texts = q if isinstance(q, list) else [q or ""]
    if not all(isinstance(text, str) for text in texts):
        raise _Refused(400, "Invalid request: q is no text")
    return texts


def main() -> None:
    parser = _http.options(str(__doc__))
    parser.add_argument("--detected", default="en", help='what "auto" is taken for')
    parser.add_argument("--refuses", type=int, default=0, help="a status for every translation")
    parser.add_argument("--text", help="the translation, whatever comes")
    parser.add_argument("--hold", type=int, default=0, help="calls that wait for `release`")
    given = parser.parse_args()
    stand_in = LibreTranslateServer(
        key=given.key, detected=given.detected, refuses=given.refuses, port=given.port,
        plan=[_http.Turn(hold=True)] * given.hold,
        translate=marked_capitals if given.text is None else lambda *call: str(given.text),
    )  # fmt: skip
    _http.run(stand_in, given.log)


if __name__ == "__main__":
    main()
