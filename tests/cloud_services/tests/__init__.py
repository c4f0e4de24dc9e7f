"""Proof that the stand-ins keep their rules, by a client that shares no code with them."""
