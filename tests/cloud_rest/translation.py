"""What the stand-ins make of a text: where it was to go, and the text itself, so that it can be undone."""

from __future__ import annotations

import html


def translated(text: str, target: str, as_html: bool) -> str:
    """In HTML quotes and ampersands are written as entities, and what came as entities is understood;
    marks stay as they are."""
    if as_html:
        text = (
            html.unescape(text).replace('&', '&amp;').replace('"', '&quot;').replace("'", '&#39;')
        )
    return f'{target}: {text}'
