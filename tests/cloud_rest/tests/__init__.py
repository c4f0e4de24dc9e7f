"""Tests of the stand-ins, by clients that know nothing of them."""
