"""Wrong symbols in a stream, of a told kind, so that a test knows what the error correction owes.

one, two    that many wrong symbols; at most one of them in bytes 0-3, where the Q word repairs no more. What is repaired is
            the undamaged packet.
hopeless    five or more wrong symbols, and neither word can be explained by the number of errors it repairs: both stand."""
import random

from . import galois
from .packets import PACKET_BYTES, TV_GRAPHICS

KINDS = ('one', 'two', 'hopeless')


def _spoil(rng, word, places):
    for place in places:
        word[place] ^= rng.randrange(1, 64)


def _hopeless(rng, clean):
    """Damage that no decoder may claim to repair; the command and the parity fields stay non-zero."""
    while True:
        word = bytearray(clean)
        _spoil(rng, word, rng.sample(range(1, PACKET_BYTES), rng.randrange(5, 9)))
        if not galois.repairable(word[:4], 2) and not galois.repairable(word, 4):
            return word


def damage(stream, percent, seed, hopeless_share=0.1):
    """Returns the damaged stream and a list of (packet, kind, wrong places, undamaged bytes).

    Zero packets are hit too, but never in byte 0: whatever becomes of them, they must draw nothing."""
    rng = random.Random(seed)
    count = len(stream) // PACKET_BYTES
    spoiled, hits = bytearray(stream), []
    for n in sorted(rng.sample(range(count), min(count, round(count * percent / 100)))):
        clean = bytes(stream[n * PACKET_BYTES:(n + 1) * PACKET_BYTES])
        graphics = clean[0] == TV_GRAPHICS
        kind = 'hopeless' if graphics and rng.random() < hopeless_share else rng.choice(KINDS[:2])
        word = bytearray(clean)
        if kind == 'hopeless':
            word = _hopeless(rng, clean)
        elif kind == 'one':
            _spoil(rng, word, [rng.randrange(0 if graphics else 1, PACKET_BYTES)])
        else:
            first = rng.randrange(0 if graphics else 1, PACKET_BYTES)
            _spoil(rng, word, [first, rng.choice([k for k in range(4, PACKET_BYTES) if k != first])])
        spoiled[n * PACKET_BYTES:(n + 1) * PACKET_BYTES] = word
        hits.append((n, kind, [k for k in range(PACKET_BYTES) if word[k] != clean[k]], clean))
    return spoiled, hits


def write_list(path, hits):
    """One damaged packet a line: its number, the kind, the wrong bytes, the undamaged packet in hex."""
    with open(path, 'w', encoding='ascii') as file:
        for n, kind, places, clean in hits:
            file.write(f"{n}\t{kind}\t{','.join(map(str, places))}\t{clean.hex()}\n")
