"""The sound of the score: plucked strings, bass, a soft lead as the singer's guide, strings below, brushes. No sample of others is used.

All in lists of floats at 44,100 a second. Every note begins and ends at zero, so that nothing clicks."""
import functools
import math
import random

from . import score

RATE = 44100
TABLE_BITS = 12
TABLE_SIZE = 1 << TABLE_BITS
PEAK = 10 ** (-3 / 20)      # of the whole, before the encoder, which adds a little


def frequency(pitch):
    return 440 * 2 ** ((pitch - 69) / 12)


@functools.lru_cache(maxsize=None)
def _wave(harmonics):
    """One period of a sum of sines; `harmonics` are their strengths."""
    total = sum(harmonics)
    return [sum(h * math.sin(2 * math.pi * n * (k + 1) / TABLE_SIZE) for k, h in enumerate(harmonics)) / total
            for n in range(TABLE_SIZE)]


def _envelope(count, attack, release):
    """Rises and falls as half a cosine; times in seconds."""
    rise, fall = min(int(attack * RATE), count // 2), min(int(release * RATE), count // 2)
    up = [0.5 - 0.5 * math.cos(math.pi * n / rise) for n in range(rise)]
    down = [0.5 + 0.5 * math.cos(math.pi * n / fall) for n in range(fall)]
    return up + [1.0] * (count - rise - fall) + down


def _tone(pitch, seconds, harmonics, attack, release, decay=0.0, vibrato=0.0):
    """A tone; `decay` is the time in which it falls to a third, `vibrato` a share of its frequency."""
    table, count = _wave(harmonics), int(seconds * RATE)
    step = frequency(pitch) * TABLE_SIZE / RATE
    if vibrato:
        # The vibrato comes in after the first third of a second, as a player's does.
        depth = vibrato * frequency(pitch) * TABLE_SIZE / (2 * math.pi * 5.2)
        places = [n * step + depth * min(1.0, max(0.0, n / RATE - 0.3) * 2) * math.sin(2 * math.pi * 5.2 * n / RATE)
                  for n in range(count)]
        samples = [table[int(place) % TABLE_SIZE] for place in places]
    else:
        samples = [table[int(n * step) % TABLE_SIZE] for n in range(count)]
    if decay:
        fall, level, fallen = math.exp(-1.1 / (decay * RATE)), 1.0, []
        for one in samples:
            fallen.append(one * level)
            level *= fall
        samples = fallen
    return [a * b for a, b in zip(samples, _envelope(count, attack, release))]


@functools.lru_cache(maxsize=None)
def lead(pitch, seconds):
    return _tone(pitch, seconds, (1, 0.34, 0.16, 0.05), 0.035, 0.11, vibrato=0.004)


@functools.lru_cache(maxsize=None)
def bass(pitch, seconds):
    return _tone(pitch, seconds, (1, 0.5, 0.22, 0.08), 0.012, 0.15, decay=1.3)


@functools.lru_cache(maxsize=None)
def strings(pitch, seconds, cents):
    return _tone(pitch + cents / 100, seconds, (1, 0.5, 0.33, 0.2, 0.12, 0.07), 0.45, 0.6)


@functools.lru_cache(maxsize=None)
def pluck(pitch, seconds):
    """A plucked string (Karplus and Strong): noise in a loop that loses its highs at every turn."""
    rng = random.Random(pitch)
    period = RATE / frequency(pitch) - 0.5      # the filter below delays by half a sample
    size = int(period)
    share = period - size           # the loop is longer by this part of a sample
    loop = [rng.uniform(-1, 1) for _ in range(size)]
    for _ in range(3):              # a finger, not a plectrum
        loop = [(a + b) / 2 for a, b in zip(loop, loop[1:] + loop[:1])]
    mean = sum(loop) / len(loop)
    loop = [one - mean for one in loop]
    count = int(seconds * RATE)
    out, before, place = [], 0.0, 0
    near, far = 0.996 * (1 - share), 0.996 * share
    tail = loop[-1]
    for _ in range(count):
        now = loop[place]
        value = near * now + far * tail
        tail = now
        out.append(now)
        loop[place] = 0.5 * (value + before)
        before = value
        place = place + 1 if place + 1 < size else 0
    return [a * b for a, b in zip(out, _envelope(count, 0.002, 0.25))]


@functools.lru_cache(maxsize=None)
def kick():
    count, phase, out = int(0.28 * RATE), 0.0, []
    for n in range(count):
        phase += 2 * math.pi * (46 + 60 * math.exp(-n / (0.03 * RATE))) / RATE
        out.append(math.sin(phase) * math.exp(-n / (0.09 * RATE)))
    return [a * b for a, b in zip(out, _envelope(count, 0.003, 0.08))]


@functools.lru_cache(maxsize=None)
def brush(number, seconds):
    """Noise without its lows, swept softly."""
    rng, count, last, out = random.Random(1000 + number), int(seconds * RATE), 0.0, []
    for n in range(count):
        noise = rng.uniform(-1, 1)
        out.append((noise - last) * 0.5 * math.exp(-n / (0.05 * RATE)))
        last = noise
    return [a * b for a, b in zip(out, _envelope(count, 0.008, 0.05))]


class Mix:
    """Two channels, and a send to the room."""

    def __init__(self, seconds):
        self.count = int(seconds * RATE)
        self.left, self.right, self.room = ([0.0] * self.count for _ in range(3))

    def add(self, seconds, samples, gain, pan=0.0, room=0.2):
        """pan -1 is left, 1 right; equal power."""
        start = int(seconds * RATE)
        samples = samples[:self.count - start]
        angle = (pan + 1) * math.pi / 4
        for line, share in ((self.left, gain * math.cos(angle)), (self.right, gain * math.sin(angle)),
                            (self.room, gain * room)):
            if share:
                line[start:start + len(samples)] = [a + b * share
                                                    for a, b in zip(line[start:start + len(samples)], samples)]

    @staticmethod
    def _comb(samples, delay, feedback):
        """Echoes that lose their highs."""
        ring, place, low, out = [0.0] * delay, 0, 0.0, []
        for one in samples:
            echo = ring[place]
            low = echo * 0.65 + low * 0.35
            ring[place] = one + low * feedback
            place = place + 1 if place + 1 < delay else 0
            out.append(echo)
        return out

    def finish(self):
        """Adds the room and returns 16-bit frames whose loudest sample is at PEAK."""
        for line, delays in ((self.left, (1427, 1781, 2143)), (self.right, (1493, 1693, 2239))):
            for delay in delays:
                echoes = self._comb(self.room, delay, 0.8)
                line[:] = [a + b * 0.5 for a, b in zip(line, echoes)]
        fade = int(1.2 * RATE)
        loudest = max(max(map(abs, self.left)), max(map(abs, self.right)))
        scale = PEAK * 32767 / loudest
        frames = bytearray()
        for n, (left, right) in enumerate(zip(self.left, self.right)):
            gain = scale * min(1.0, (self.count - 1 - n) / fade)
            frames += int(left * gain).to_bytes(2, 'little', signed=True)
            frames += int(right * gain).to_bytes(2, 'little', signed=True)
        return bytes(frames)


PATTERN = (0, 1, 2, 3, 2, 1)        # strings plucked in a bar, an eighth each


def _bars(mix):
    beat, last = score.BEAT, len(score.ALL_CHORDS) - 1
    verse_two = len(score.INTRO_CHORDS) + len(score.VERSE_CHORDS)
    for bar, name in enumerate(score.ALL_CHORDS):
        at = bar * score.BAR * beat
        root, chord = score.CHORDS[name]
        if bar == last:
            for n, pitch in enumerate(chord):
                mix.add(at + n * 0.05, pluck(pitch, 4.0), 0.34, -0.35 + n * 0.1, 0.3)
            mix.add(at, bass(root, 3.8), 0.42, 0, 0.05)
            for n, pitch in enumerate(chord[:3]):
                mix.add(at, strings(pitch, 3.8, (-4, 5, -3)[n]), 0.10, (-0.6, 0.1, 0.6)[n], 0.4)
            continue
        for n, string in enumerate(PATTERN):
            strong = 0.34 if n == 0 else 0.24 if n % 2 == 0 else 0.20
            mix.add(at + n * beat / 2, pluck(chord[string], 1.9), strong, -0.35 + string * 0.1, 0.3)
        mix.add(at, bass(root, beat * 2), 0.42, 0, 0.05)
        if bar >= len(score.INTRO_CHORDS):
            mix.add(at + 2 * beat, bass(root + 7 if root < 45 else root - 5, beat), 0.28, 0, 0.05)
            mix.add(at, kick(), 0.34, 0, 0.05)
            for n in (1, 2):
                mix.add(at + n * beat, brush(n, 0.22), 0.11 if n == 1 else 0.085, 0.3, 0.25)
        if bar >= verse_two or bar < 2:
            for n, pitch in enumerate(chord[:3]):
                mix.add(at, strings(pitch, score.BAR * beat + 0.5, (-4, 5, -3)[n]), 0.085, (-0.6, 0.1, 0.6)[n], 0.4)


def render():
    """The whole song as 16-bit stereo frames."""
    mix = Mix(score.SECONDS)
    _bars(mix)
    for beat, pitch, beats in score.melody():
        mix.add(beat * score.BEAT, lead(pitch, beats * score.BEAT + 0.06), 0.30, 0.08, 0.4)
    return mix.finish()
