"""The description names what there is, and nothing else."""

import pathlib
import re
import unittest

from tests.cloud_rest import transport
from tests.cloud_rest.azure_speech import AzureSpeech
from tests.cloud_rest.azure_translator import AzureTranslator
from tests.cloud_rest.google_speech import GoogleSpeech
from tests.cloud_rest.google_translate import GoogleTranslate

README = pathlib.Path(__file__).resolve().parents[1] / 'README.md'


class Readme(unittest.TestCase):
    def rows(self, head):
        """The names in the first column of the table that begins so."""
        lines = README.read_text(encoding='utf-8').splitlines()
        heads = [i for i, line in enumerate(lines) if line.startswith(f'| {head} |')]
        start = heads[-1] + 2  # A module also has a line in the first table of all.
        names = []
        for line in lines[start:]:
            if not line.startswith('|'):
                break
            names += re.findall(r'`([^`]+)`', line.split('|')[1])
        return names

    def assert_named(self, head, faults):
        names = self.rows(head)
        self.assertEqual(sorted(names), sorted(set(faults)))

    def test_the_way(self):
        self.assert_named('on the way', transport.FAULTS)

    def test_azure_speech(self):
        self.assert_named('`azure_speech`', AzureSpeech.FAULTS.keys())

    def test_azure_translator(self):
        self.assert_named('`azure_translator`', AzureTranslator.FAULTS.keys())

    def test_google(self):
        both = {**GoogleSpeech.FAULTS, **GoogleTranslate.FAULTS}
        self.assert_named('`google_speech`, `google_translate`', both)


if __name__ == '__main__':
    unittest.main()
