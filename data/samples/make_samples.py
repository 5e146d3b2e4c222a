#!/usr/bin/env python3
"""Composes the three sample files of the demonstration, each of another format.

  Morning Light.mp3   44.1 kHz stereo MP3 (VBR), ID3v2.3 tags in UTF-16
  Night Train.wav     48 kHz, 24 bits, mono, RIFF INFO tags
  Short Wave.wav      22.05 kHz, 16 bits, mono, RIFF INFO tags

Needs only Python's standard library and lame. The results are committed; the same script gives
the same WAV files, and with the same lame the same MP3.
"""
import math
import pathlib
import random
import struct
import subprocess

HERE = pathlib.Path(__file__).resolve().parent


def pitch(name):
    """Frequency in Hz of a note such as "C#4"; A4 is 440 Hz."""
    steps = {"C": -9, "D": -7, "E": -5, "F": -4, "G": -2, "A": 0, "B": 2}[name[0]]
    steps += name.count("#") - name[1:].count("b")
    return 440.0 * 2 ** (steps / 12 + int(name[-1]) - 4)


class Tape:
    """Mono samples in floating point, filled by mixing voices into it."""

    def __init__(self, rate, seconds):
        self.rate = rate
        self.samples = [0.0] * int(rate * seconds)

    def add(self, at, voice, gain):
        start = int(at * self.rate)
        for i, value in enumerate(voice[:max(0, len(self.samples) - start)]):
            self.samples[start + i] += gain * value

    def echo(self, delay, feedback):
        shift = int(delay * self.rate)
        for i in range(shift, len(self.samples)):
            self.samples[i] += feedback * self.samples[i - shift]

    def fade(self, fade_in, fade_out):
        count = len(self.samples)
        for i in range(int(fade_in * self.rate)):
            self.samples[i] *= i / (fade_in * self.rate)
        length = int(fade_out * self.rate)
        for i in range(length):
            self.samples[count - 1 - i] *= (i / length) ** 1.5


def tone(rate, hertz, seconds, partials, attack=0.005, vibrato=0.0):
    """Decaying partials (multiple, level, decay per second) with a short attack."""
    out = [0.0] * int(rate * seconds)
    for multiple, level, decay in partials:
        if hertz * multiple > 0.45 * rate:
            continue
        step = 2 * math.pi * hertz * multiple / rate
        fall = math.exp(-decay / rate)
        phase, gain = 0.0, level
        for i in range(len(out)):
            out[i] += gain * math.sin(phase)
            gain *= fall
            phase += step * (1 + vibrato * math.sin(2 * math.pi * 5.2 * i / rate))
    rise = max(1, int(attack * rate))
    tail = max(1, int(0.02 * rate))
    for i in range(min(rise, len(out))):
        out[i] *= i / rise
    for i in range(min(tail, len(out))):
        out[-1 - i] *= i / tail
    return out


def brush(rate, seconds, dice, brightness):
    """A stroke of filtered noise."""
    out, last = [], 0.0
    for i in range(int(rate * seconds)):
        white = dice.uniform(-1, 1)
        last += brightness * (white - last)
        out.append((white - last) * math.exp(-9 * i / (rate * seconds)))
    return out


BELL = ((1, 1.0, 2.6), (2, 0.35, 4.0), (3.01, 0.16, 6.5), (4.2, 0.07, 9.0))
PAD = ((1, 0.6, 0.35), (2.003, 0.25, 0.5), (0.5, 0.4, 0.3), (3, 0.08, 0.8))
BASS = ((1, 1.0, 3.0), (2, 0.45, 5.0), (3, 0.15, 8.0))
VIBES = ((1, 1.0, 2.2), (4, 0.22, 7.0), (10, 0.03, 14.0))
REED = ((1, 0.8, 0.25), (2, 0.4, 0.3), (3, 0.28, 0.35), (4, 0.10, 0.4), (5, 0.07, 0.5))


def morning_light():
    """An arpeggio that opens up; left and right answer each other."""
    rate, seconds = 44100, 12.0
    left, right = Tape(rate, seconds), Tape(rate, seconds)
    chords = (("D3", "A3", "D4", "F#4", "A4", "E5"), ("B2", "F#3", "B3", "D4", "F#4", "C#5"),
              ("G2", "D3", "G3", "B3", "D4", "A4"), ("A2", "E3", "A3", "C#4", "E4", "B4"),
              ("D3", "A3", "D4", "F#4", "A4", "D5"))
    for bar, chord in enumerate(chords):
        at = bar * 2.0
        for n, name in enumerate(chord[:3]):
            voice = tone(rate, pitch(name), 2.6, PAD, attack=0.5)
            left.add(at, voice, 0.055 + 0.01 * n)
            right.add(at + 0.012, voice, 0.065 - 0.01 * n)
        for n, step in enumerate((0, 2, 3, 4, 5, 4, 3, 2) if bar < 4 else (0, 2, 3, 4, 5)):
            voice = tone(rate, pitch(chord[step]) * 2, 1.8, BELL)
            pan = 0.25 + 0.5 * ((n * 3) % 8) / 7
            left.add(at + n * 0.25, voice, 0.15 * (1 - pan))
            right.add(at + n * 0.25, voice, 0.15 * pan)
    left.echo(0.375, 0.30)
    right.echo(0.5, 0.26)
    for side in (left, right):
        side.fade(0.05, 2.2)
    return rate, (left, right)


def night_train():
    """Wheels over the joints, a walking bass, vibraphone above."""
    rate, seconds, beat = 48000, 6.0, 0.36
    tape, dice = Tape(rate, seconds), random.Random(11)
    for n in range(int(seconds / beat)):
        tape.add(n * beat, brush(rate, 0.16, dice, 0.5), 0.10 if n % 2 else 0.05)
        tape.add(n * beat + beat * 0.66, brush(rate, 0.08, dice, 0.3), 0.05)
        name = ("A2", "C3", "D3", "E3", "F3", "E3", "D3", "B2")[n % 8]
        tape.add(n * beat, tone(rate, pitch(name) / 2, 0.5, BASS), 0.32)
    riff = (("A3", "C4", "E4"), ("G3", "B3", "E4"), ("F3", "A3", "D4"), ("E3", "G#3", "D4"))
    for n in range(8):
        for name in riff[(n // 2) % 4]:
            tape.add(n * 2 * beat + (0.66 * beat if n % 2 else 0), tone(rate, pitch(name) * 2, 1.1, VIBES), 0.09)
    for at, name in ((0, "E5"), (1.66, "D5"), (2, "C5"), (3.66, "A4"), (6, "B4"), (7.66, "C5"), (8, "D5"), (10, "A4")):
        tape.add(at * beat, tone(rate, pitch(name), 1.3, VIBES), 0.16)
    tape.fade(0.02, 1.2)
    return rate, (tape,)


def short_wave():
    """A far-off melody on an old receiver: a reed with vibrato, hum and a little crackle."""
    rate, seconds = 22050, 9.0
    tape, dice = Tape(rate, seconds), random.Random(5)
    tune = (("E4", 0, 0.9), ("G4", 0.9, 0.5), ("A4", 1.4, 1.2), ("G4", 2.6, 0.4), ("E4", 3.0, 0.6), ("D4", 3.6, 1.0),
            ("C4", 4.6, 0.5), ("D4", 5.1, 0.5), ("E4", 5.6, 0.8), ("A3", 6.4, 2.3))
    for name, at, length in tune:
        tape.add(at, tone(rate, pitch(name), length + 0.1, REED, attack=0.06, vibrato=0.006), 0.20)
    for name, at in (("A2", 0), ("F2", 2.6), ("C3", 4.6), ("A2", 6.4)):
        tape.add(at, tone(rate, pitch(name), 2.6, PAD, attack=0.3), 0.15)
    for i in range(len(tape.samples)):
        drift = 0.82 + 0.18 * math.sin(2 * math.pi * 0.33 * i / rate)
        tape.samples[i] = tape.samples[i] * drift + 0.004 * dice.uniform(-1, 1)
    for _ in range(60):
        tape.add(dice.uniform(0, seconds - 0.1), brush(rate, 0.006, dice, 0.2), dice.uniform(0.01, 0.05))
    tape.fade(0.15, 1.4)
    return rate, (tape,)


def normalised(tapes, peak):
    loudest = max(abs(v) for tape in tapes for v in tape.samples)
    return [[v * peak / loudest for v in tape.samples] for tape in tapes]


def pcm(channels, bits):
    """Interleaved little-endian integers."""
    top, out = 2 ** (bits - 1) - 1, bytearray()
    for frame in zip(*channels):
        for value in frame:
            out += round(value * top).to_bytes(bits // 8, "little", signed=True)
    return bytes(out)


def chunk(name, body):
    return name + struct.pack("<I", len(body)) + body + b"\0" * (len(body) % 2)


def wav(rate, tapes, bits, tags):
    data = pcm(normalised(tapes, 0.8), bits)
    frame = len(tapes) * bits // 8
    body = b"WAVE" + chunk(b"fmt ", struct.pack("<HHIIHH", 1, len(tapes), rate, rate * frame, frame, bits))
    if tags:
        texts = b"".join(chunk(key, text.encode("utf-8") + b"\0") for key, text in tags.items())
        body += chunk(b"LIST", b"INFO" + texts)
    return chunk(b"RIFF", body + chunk(b"data", data))


def id3v2(tags):
    """An ID3v2.3 tag whose texts are UTF-16 with a byte order mark."""
    frames = b""
    for key, text in tags.items():
        body = b"\x01" + text.encode("utf-16")
        frames += key + struct.pack(">IH", len(body), 0) + body
    size = len(frames)
    sync_safe = bytes((size >> shift) & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\x03\x00\x00" + sync_safe + frames


def main():
    tags = {b"TIT2": "Morning Light", b"TPE1": "Zoë Ångström", b"TALB": "Zib Samples", b"TYER": "2026"}
    rate, tapes = morning_light()
    encoded = subprocess.run(["lame", "--quiet", "-V", "4", "-q", "0", "-", "-"], check=True,
                             input=wav(rate, tapes, 16, {}), stdout=subprocess.PIPE).stdout
    target = HERE / "Morning Light.mp3"
    target.write_bytes(id3v2(tags) + encoded)
    for name, artist, bits, compose in (("Night Train", "The Sleepers", 24, night_train),
                                        ("Short Wave", "Radio Nord", 16, short_wave)):
        rate, tapes = compose()
        info = {b"INAM": name, b"IART": artist, b"IPRD": "Zib Samples", b"ICRD": "2026"}
        (HERE / f"{name}.wav").write_bytes(wav(rate, tapes, bits, info))


if __name__ == "__main__":
    main()
