"""A stand-in as a program: options on the command line, events and commands as lines of JSON."""

from __future__ import annotations

import argparse
import pathlib
import sys

from .helpers import commands_to, die_with_parent, say
from .service import Service
from .transport import FAULTS


def common_options(service: type[Service]) -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        description=service.__doc__, allow_abbrev=False, epilog='--tls and --name NAME: with TLS'
    )
    parser.add_argument('--key', help='the only right one; without it every key is')
    parser.add_argument(
        '--fault',
        nargs='+',
        action='extend',
        choices=[*FAULTS, *service.FAULTS, 'none'],
        help='one for every request; of several one for each, and the last stays',
    )
    parser.add_argument('--heard', help='the language found where a request leaves it open')
    parser.add_argument('--slow', type=float, default=30.0, help='seconds of the fault "slow"')
    parser.add_argument('--large', type=int, default=64 * 1024 * 1024, help='bytes of "large"')
    parser.add_argument('--retry-after', type=int, default=1)
    return parser


def hears(parser: argparse.ArgumentParser) -> None:
    """The options of what recognises speech."""
    parser.add_argument('--lines', type=read_lines, help='file: what is understood, line by line')


def read_lines(name: str) -> list[str]:
    text = pathlib.Path(name).read_text(encoding='utf-8')
    return [line.strip() for line in text.splitlines() if line.strip()]


def run(service: type[Service], parser: argparse.ArgumentParser) -> None:
    die_with_parent()
    options, rest = parser.parse_known_args()
    sys.argv[1:] = rest  # TLS is commands_to's own business; so is what nobody knows.
    peer = service(**vars(options), emit=say)
    for command in commands_to(peer.open, None):
        peer.obey(command)
