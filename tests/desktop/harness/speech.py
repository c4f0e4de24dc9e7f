"""Recorded speech with its words, and a measure of how well it was understood."""

import array
import dataclasses
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import wave

PACKAGE = "pocketsphinx-testdata"

# Below this the recordings are taken to be silent (full scale is 32768).
_SILENCE_AMPLITUDE = 500


@dataclasses.dataclass
class Sentence:
    file: pathlib.Path
    words: list
    duration: float          # Seconds.
    trailing_silence: float  # Seconds after the last word.


def recorded_sentences():
    """The five sentences read aloud that Debian's package of test recordings holds."""
    listing = subprocess.run(["dpkg", "-L", PACKAGE], check=True, text=True,
                             stdout=subprocess.PIPE).stdout.split()
    transcript = next(pathlib.Path(path) for path in listing
                      if path.endswith("/librivox/transcription"))
    sentences = []
    for line in transcript.read_text().splitlines():
        match = re.fullmatch(r"<s> (.*) </s> \((.*)\)", line.strip())
        file = transcript.parent / f"{match.group(2)}.wav"
        duration, silence = _measure(file)
        sentences.append(Sentence(file, match.group(1).split(), duration, silence))
    return sentences


def _measure(file):
    with wave.open(str(file)) as sound:
        rate = sound.getframerate()
        samples = array.array("h", sound.readframes(sound.getnframes()))
    last = max((i for i, sample in enumerate(samples) if abs(sample) > _SILENCE_AMPLITUDE),
               default=len(samples) - 1)
    return len(samples) / rate, (len(samples) - 1 - last) / rate


def words_of(text):
    """The words of a text, comparable: lower case, without punctuation."""
    return re.findall(r"[\w']+", text.lower())


def align(reference, heard):
    """The shortest way from the words that were said to those that were heard: pairs (said, heard),
    where either is None for a word that was missed or made up."""
    # costs[i][j]: of the way from the first i words said to the first j heard.
    costs = [[i + j if i == 0 or j == 0 else 0 for j in range(len(heard) + 1)]
             for i in range(len(reference) + 1)]
    for i, said in enumerate(reference, start=1):
        for j, word in enumerate(heard, start=1):
            costs[i][j] = min(costs[i - 1][j] + 1, costs[i][j - 1] + 1,
                              costs[i - 1][j - 1] + (said != word))
    pairs = []
    i, j = len(reference), len(heard)
    while i or j:
        if i and j and costs[i][j] == costs[i - 1][j - 1] + (reference[i - 1] != heard[j - 1]):
            i, j = i - 1, j - 1
            pairs.append((reference[i], heard[j]))
        elif i and costs[i][j] == costs[i - 1][j] + 1:
            i -= 1
            pairs.append((reference[i], None))
        else:
            j -= 1
            pairs.append((None, heard[j]))
    return pairs[::-1]


def word_errors(reference, heard):
    """Substitutions, deletions and insertions that turn `reference` into `heard`, at least."""
    return sum(said != word for said, word in align(reference, heard))


def sclite_error_rate(pairs):
    """The word error rate in percent as sclite counts it over (reference, heard) pairs of word
    lists; None where sclite is not installed."""
    if shutil.which("sctk") is None:
        return None
    with tempfile.TemporaryDirectory() as folder:
        files = {}
        for name, part in (("ref", 0), ("hyp", 1)):
            files[name] = os.path.join(folder, f"{name}.trn")
            with open(files[name], "w", encoding="utf-8") as file:
                for number, pair in enumerate(pairs):
                    file.write(f"{' '.join(pair[part])} (reader_{number:03})\n")
        report = subprocess.run(
            ["sctk", "sclite", "-r", files["ref"], "trn", "-h", files["hyp"], "trn", "-i", "rm",
             "-o", "sum", "stdout"], text=True, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL).stdout
    match = re.search(r"Sum/Avg\s*\|[^|]*\|([^|]*)\|", report)
    return float(match.group(1).split()[4]) if match else None
