"""Every instruction with every kind of value: first in order, so that nothing is left to chance, then at random."""
import random

from . import packets
from .packets import COLUMNS, ROWS

RAINBOW = [(0, 0, 0), (15, 15, 15), (15, 0, 0), (0, 15, 0), (0, 0, 15), (15, 15, 0), (0, 15, 15), (15, 0, 15),
           (7, 7, 7), (11, 11, 11), (8, 0, 0), (0, 8, 0), (0, 0, 8), (8, 8, 0), (0, 8, 8), (8, 0, 8)]
UNKNOWN = sorted(set(range(64)) - set(packets.KNOWN))


def _pixels(rng):
    return [rng.randrange(64) for _ in range(12)]


def _tile(rng, xor, channel=0, wild=False):
    row = rng.randrange(32 if wild else ROWS)
    column = rng.randrange(64 if wild else COLUMNS)
    return packets.tile(row, column, (rng.randrange(16), rng.randrange(16)), _pixels(rng), channel, xor)


def _scroll(rng, copy, wild=False):
    return packets.scroll(copy, rng.randrange(16), rng.randrange(4 if wild else 3), rng.randrange(4 if wild else 3),
                          rng.randrange(8 if wild else 6), rng.randrange(16 if wild else 12))


def _palette(rng):
    table = [tuple(rng.randrange(16) for _ in range(3)) for _ in range(16)]
    return rng.choice(packets.load_colors(table))


# Name: (weight, maker). Names are those that --kinds takes.
KINDS = {
    'memory': (1, lambda rng: packets.packet(packets.MEMORY_PRESET, (rng.randrange(16), rng.choice((0, 0, 1, 15))))),
    'border': (2, lambda rng: packets.border_preset(rng.randrange(16))),
    'tiles': (60, lambda rng: _tile(rng, False)),
    'xor': (40, lambda rng: _tile(rng, True)),
    'channels': (20, lambda rng: _tile(rng, rng.random() < 0.5, rng.randrange(16))),
    'scroll-preset': (5, lambda rng: _scroll(rng, False)),
    'scroll-copy': (5, lambda rng: _scroll(rng, True)),
    'colors': (6, _palette),
    'transparent': (1, lambda rng: packets.transparent([rng.randrange(64) for _ in range(16)])),
    'unknown': (3, lambda rng: packets.packet(rng.choice(UNKNOWN), [rng.randrange(64) for _ in range(16)])),
    'modes': (2, lambda rng: packets.any_packet(rng.choice([n for n in range(64) if n != packets.TV_GRAPHICS]),
                                                rng.randrange(64), [rng.randrange(64) for _ in range(16)])),
    'outside': (4, lambda rng: _tile(rng, rng.random() < 0.5, wild=True)),
    'odd-scrolls': (1, lambda rng: _scroll(rng, rng.random() < 0.5, wild=True)),
    'zero': (30, lambda rng: packets.ZERO),
}


def tour(rng, kinds):
    """The packets in order: colours, a picture of tiles, then each kind over its whole range."""
    result = packets.memory_preset(1) + packets.load_colors(RAINBOW)
    for row in range(ROWS):
        for column in range(COLUMNS):
            result.append(packets.tile(row, column, ((row + column) % 16, (row * 3 + column * 5 + 1) % 16), _pixels(rng)))
    if 'memory' in kinds:
        result += [packets.packet(packets.MEMORY_PRESET, (5, repeat)) for repeat in range(1, 16)]   # repeats alone: no effect
    if 'border' in kinds:
        result += [packets.border_preset(color) for color in (*range(16), 15, 0)]
    if 'xor' in kinds:
        result += [packets.tile(row, column, (0, 15), [63] * 12, xor=True) for row in range(ROWS)
                   for column in range(row % 2, COLUMNS, 2)]
    if 'channels' in kinds:
        result += [packets.tile(channel + 1, 2 + n, (channel, 15 - channel), [42, 21] * 6, channel, n % 2 == 1)
                   for channel in range(16) for n in range(6)]
    for copy in (False, True):
        if ('scroll-copy' if copy else 'scroll-preset') in kinds:
            for across in range(3):
                for down in range(3):
                    result += [packets.scroll(copy, 3 + across, across, down)] * 3
            result += [packets.scroll(copy, 6, 0, 0, offset % 6, offset % 12) for offset in range(12)]
            # A smooth scroll: the offset runs, and the plane moves when it starts again.
            for n in range(24):
                result.append(packets.scroll(copy, 7, 2 if n % 6 == 0 else 0, 0, n % 6, 0))
            for n in range(36):
                result.append(packets.scroll(copy, 8, 0, 2 if n % 12 == 0 else 0, 0, n % 12))
            result.append(packets.scroll(copy))
    if 'colors' in kinds:
        for step in range(8):
            result += packets.load_colors(packets.faded(RAINBOW, RAINBOW[::-1], step, 7))
    if 'unknown' in kinds:
        result += [packets.packet(instruction, [63] * 16) for instruction in UNKNOWN]
    return result


def stress(stream, seconds, seed, kinds=None):
    """Fills `seconds` with the tour, as far as it goes, and then packets of the kinds at random."""
    rng = random.Random(seed)
    chosen = {name: KINDS[name] for name in (kinds or KINDS)}
    count = int(seconds * packets.PACKETS_A_SECOND + 0.5)
    stream.add(*tour(rng, chosen)[:count])
    weights = [weight for weight, _ in chosen.values()]
    makers = [maker for _, maker in chosen.values()]
    while stream.position < count:
        stream.add(rng.choices(makers, weights)[0](rng))
