"""Strict stand-ins for the REST services of Azure and Google, on loopback: see README.md."""
