"""The companion speech server: takes audio chunks over a WebSocket, answers with subtitles."""

# The version of the link's message format, announced to every client.
BACKEND_VERSION = 4
