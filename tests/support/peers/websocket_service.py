"""What the scripted WebSocket services have in common, on Debian's `websockets` library: version
10.4 of Debian 12 has another interface than version 15 of Debian 13."""

import websockets

MAX_SIZE = 64 * 1024 * 1024  # Bytes of one message.


def serve(handle, admit=None, **options):
    """A server on a free port of loopback, to be awaited; its clients go to `handle`.

    `admit(path, headers)` gives the status to refuse a client with and the text to say, or None.
    """
    async def process_request(first, second):
        if isinstance(first, str):  # The old interface: path and headers.
            refusal = admit(first, second)
            return refusal and (refusal[0], [], refusal[1].encode())
        refusal = admit(second.path, second.headers)
        return refusal and first.respond(*refusal)

    return websockets.serve(handle, "127.0.0.1", 0, max_size=MAX_SIZE,
                            process_request=admit and process_request, **options)


def path_of(client):
    """What the client asked for."""
    return client.request.path if hasattr(client, "request") else client.path


def headers_of(client):
    """The headers of the client's handshake."""
    return client.request.headers if hasattr(client, "request") else client.request_headers
