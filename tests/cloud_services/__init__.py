"""Strict stand-ins on loopback for streaming speech services; see README.md."""
