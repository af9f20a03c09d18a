# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""An independent recogniser with a small language model of the station's texts: word errors of spoken sentences."""
import collections
import math
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
MODEL = pathlib.Path("/usr/share/pocketsphinx/model/en-us")
FILLED = {"song": "lanterns at noon", "name": "the apricot sextet", "album": "quiet rivers", "station": "windowsill radio",
          "program": "morning breeze", "personality": "samantha reed", "trackno": "three", "trackleft": "two", "band": "eighty",
          "artistinfo": "", "time": "nine"}


def words(text):
    return re.findall(r"[a-z']+", text.lower())


def sentences():
    lines = (ROOT / "bench/voice/sentences.txt").read_text().splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def station_texts():
    for program in sorted((ROOT / "station/Programs").glob("*.txt")):
        for line in program.read_text().splitlines():
            text = re.match(r"\w+: \d+, say (.*)", line)
            if text and text[1].isascii():
                yield re.sub(r"\[\[(\w+)\]\]", lambda found: FILLED.get(found[1], ""), text[1])


def write_model(folder):
    """Word pairs with Witten-Bell smoothing, as an ARPA file, and the words' pronunciations."""
    pronunciations = collections.defaultdict(list)
    for line in (MODEL / "cmudict-en-us.dict").read_text().splitlines():
        word, phones = line.split(" ", 1)
        pronunciations[re.sub(r"\(\d\)$", "", word)].append(phones)
    pronunciations["windowsill"] = ["W IH N D OW S IH L"]
    texts = [words(part) for text in [*sentences(), *station_texts()] for part in re.split(r"[.!?]", text)]
    texts = [["<s>", *text, "</s>"] for text in texts if text and all(word in pronunciations for word in text)]
    single = collections.Counter(word for text in texts for word in text)
    pairs = collections.Counter(pair for text in texts for pair in zip(text, text[1:]))
    followers = collections.Counter(first for first, _ in pairs)
    total = sum(single.values())
    lines = ["\\data\\", f"ngram 1={len(single)}", f"ngram 2={len(pairs)}", "", "\\1-grams:"]
    for word, count in sorted(single.items()):
        seen = sum(number for (first, _), number in pairs.items() if first == word)
        left = followers[word] / (seen + followers[word]) if seen else 1
        lines.append(f"{math.log10(count / total):.4f} {word} {math.log10(left):.4f}")
    lines += ["", "\\2-grams:"]
    for (first, second), count in sorted(pairs.items()):
        seen = single[first]
        lines.append(f"{math.log10(count / (seen + followers[first])):.4f} {first} {second}")
    (folder / "model.arpa").write_text("\n".join([*lines, "", "\\end\\", ""]))
    with (folder / "words.dict").open("w") as file:
        for word in sorted(single):
            for number, phones in enumerate(pronunciations.get(word, [])):
                print(word if number == 0 else f"{word}({number + 1})", phones, file=file)


def recognise(folder, names):
    """The words of each NAME.wav in the folder, which are 16 kHz mono."""
    (folder / "names.ctl").write_text("".join(name + "\n" for name in names))
    subprocess.run(["pocketsphinx_batch", "-hmm", MODEL / "en-us", "-lm", folder / "model.arpa", "-dict", folder / "words.dict",
                    "-adcin", "yes", "-adchdr", "44", "-cepdir", folder, "-cepext", ".wav", "-ctl", folder / "names.ctl",
                    "-hyp", folder / "heard.txt"], check=True, capture_output=True)
    heard = {}
    for line in (folder / "heard.txt").read_text().splitlines():
        text, name = re.fullmatch(r"(.*) ?\((\S+) -?\d+\)", line).groups()
        heard[name] = words(text)
    return heard


def errors(said, heard):
    """The words that were left out, put in or taken for others: the edit distance."""
    row = list(range(len(heard) + 1))
    for i, word in enumerate(said, 1):
        diagonal, row[0] = row[0], i
        for j, other in enumerate(heard, 1):
            diagonal, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, diagonal + (word != other))
    return row[-1]
