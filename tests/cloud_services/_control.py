"""A stand-in as a program: events on standard output, commands on standard input, as JSON lines.

It ends when standard input ends.
"""

import argparse
import json
import pathlib
import sys
from collections.abc import Callable
from typing import Any

from tests.cloud_services._clock import Clock, ManualClock
from tests.cloud_services._peer import Peer, Unknown
from tests.cloud_services._support import service_peer


def parser(name: str, faults: dict[str, Any]) -> argparse.ArgumentParser:
    """The arguments that all stand-ins have."""
    arguments = argparse.ArgumentParser(name)
    add = arguments.add_argument
    add('--tls', action='store_true', help='with a certificate made on the spot')
    add('--key', help='the only key that is accepted; without it any is')
    add('--fault', nargs='+', action='extend', default=[], metavar='NAME[:TIMES]')
    add('--lines', type=pathlib.Path, help='what is recognised, a line for each utterance')
    add('--rate', type=float, help='how many times as fast as the clock sound may come')
    add('--burst', type=float, default=2.0, help='seconds of sound a client may be ahead, or "inf"')
    add('--sessions', type=int, help='how many there may be at once')
    add('--clock', choices=['machine', 'manual'], default='machine')
    arguments.epilog = 'Faults: ' + ' '.join(sorted(faults))
    return arguments


def common(options: argparse.Namespace) -> dict[str, Any]:
    """These arguments, as `Peer` takes them."""
    return {
        'key': options.key,
        'faults': options.fault,
        'lines': options.lines.read_text('utf-8').splitlines() if options.lines else (),
        'tls': options.tls,
        'clock': ManualClock() if options.clock == 'manual' else Clock(),
        'rate': options.rate,
        'burst': options.burst,
        'sessions': options.sessions,
    }


def run(make: Callable[..., Peer]) -> None:
    """Runs what `make` makes; it is given the `say` to make it with."""
    with make(say=service_peer().say) as peer:
        for line in sys.stdin:
            try:
                peer.obey(json.loads(line))
            except (Unknown, ValueError, AttributeError) as error:
                peer.note('misunderstood', line=line.strip(), why=str(error))
