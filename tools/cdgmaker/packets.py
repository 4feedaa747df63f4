"""Packets of every instruction, and the stream that collects them.

Source: Red Book (IEC 60908), sub-code channels R to W, the TV graphics mode (command 9)."""
import random

from . import galois

PACKET_BYTES = 24
PACKETS_A_SECOND = 300
ZERO = bytes(PACKET_BYTES)
TV_GRAPHICS = 9

MEMORY_PRESET, BORDER_PRESET, TILE, TILE_XOR = 1, 2, 6, 38
SCROLL_PRESET, SCROLL_COPY, TRANSPARENT, COLORS_LOW, COLORS_HIGH = 20, 24, 28, 30, 31
KNOWN = (1, 2, 6, 38, 20, 24, 28, 30, 31)

TILE_WIDTH, TILE_HEIGHT, COLUMNS, ROWS = 6, 12, 50, 18      # of the plane of 300 x 216; the border is one tile wide


def _head(instruction):
    head = bytes([TV_GRAPHICS, instruction]) + galois.q_parity(TV_GRAPHICS, instruction)
    return head, galois.p_share(head)


_HEADS = [_head(instruction) for instruction in range(64)]
_TABLES = galois.P_TABLE[4:]


def packet(instruction, data):
    """One graphics packet with its parity; `data` may be shorter than 16 bytes."""
    data = bytes(data).ljust(16, b'\0')
    head, share = _HEADS[instruction]
    for row, symbol in zip(_TABLES, data):
        share ^= row[symbol]
    return head + data + share.to_bytes(4, 'big')


def any_packet(command, instruction, data):
    """A packet of another mode than graphics, with right parity."""
    body = bytes([command, instruction]) + galois.q_parity(command, instruction) + bytes(data).ljust(16, b'\0')
    return body + galois.p_share(body).to_bytes(4, 'big')


def without_parity(stream):
    """The same stream with both parity fields zero."""
    result = bytearray(stream)
    count = len(stream) // PACKET_BYTES
    for n in (2, 3, 20, 21, 22, 23):
        result[n::PACKET_BYTES] = bytes(count)
    return result


def memory_preset(color):
    """The screen filled with one colour. Discs send it 16 times, so that a scratch does not lose it."""
    return [packet(MEMORY_PRESET, (color, repeat)) for repeat in range(16)]


def border_preset(color):
    return packet(BORDER_PRESET, (color,))


def tile(row, column, colors, pixels, channel=0, xor=False):
    """Twelve rows of six pixels: bit 5 is the left one. A channel 0-15 is split over the two colour bytes."""
    head = (colors[0] | (channel >> 2) << 4, colors[1] | (channel & 3) << 4, row, column)
    return packet(TILE_XOR if xor else TILE, bytes(head) + bytes(pixels))


def scroll(copy, color=0, across=0, down=0, offset_across=0, offset_down=0):
    """across: 1 right, 2 left; down: 1 down, 2 up. The offsets are 0-5 and 0-11."""
    return packet(SCROLL_COPY if copy else SCROLL_PRESET,
                  (color, across << 4 | offset_across, down << 4 | offset_down))


def transparent(values):
    return packet(TRANSPARENT, [value & 63 for value in values])


def load_colors(table):
    """Both halves of a table of 16 colours (red, green, blue, 0-15 each)."""
    packed = bytearray()
    for red, green, blue in table:
        packed += bytes((red << 2 | green >> 2, (green & 3) << 4 | blue))
    return [packet(COLORS_LOW, packed[:16]), packet(COLORS_HIGH, packed[16:])]


def faded(source, target, step, steps):
    """The table that lies step / steps on the way from one to the other."""
    return [tuple((a * (steps - step) + b * step + steps // 2) // steps for a, b in zip(one, other))
            for one, other in zip(source, target)]


def with_high_bits(stream, seed):
    """Noise in bits 6 and 7 of every byte, which belong to the channels Q and P."""
    noise = random.Random(seed).randbytes(len(stream))
    return bytes(symbol | high & 0xC0 for symbol, high in zip(stream, noise))


# Packet byte i of a disc leaves at this byte of the interleaved stream, counted from the packet's first: three pairs of
# bytes change places, then each of eight lines is delayed by one packet more than the one before.
_SWAPS = {1: 18, 18: 1, 2: 5, 5: 2, 3: 23, 23: 3}
INTERLEAVE = [place + PACKET_BYTES * (place % 8) for place in (_SWAPS.get(n, n) for n in range(PACKET_BYTES))]


def interleaved(stream):
    """The stream as a disc carries it, in whole sectors of 96 bytes; two sectors longer than the packets."""
    count = len(stream) // PACKET_BYTES
    sectors = (count + 3) // 4 + 2
    result = bytearray(sectors * 96)
    for n, place in enumerate(INTERLEAVE):
        result[place:place + count * PACKET_BYTES:PACKET_BYTES] = stream[n::PACKET_BYTES]
    return result


class Stream:
    """Packets in order; a position is a packet number."""

    def __init__(self):
        self.bytes = bytearray()

    @property
    def position(self):
        return len(self.bytes) // PACKET_BYTES

    @property
    def seconds(self):
        return self.position / PACKETS_A_SECOND

    def add(self, *packets):
        for one in packets:
            self.bytes += one

    def rest_until(self, position):
        """Zero packets up to `position`; nothing if it is past."""
        missing = position - self.position
        if missing > 0:
            self.bytes += bytes(missing * PACKET_BYTES)

    def fade(self, source, target, steps, pace=6):
        """A fade by colour tables, `pace` packets a step."""
        last = source
        for step in range(1, steps + 1):
            table = faded(source, target, step, steps)
            start = self.position
            if table != last:
                self.add(*load_colors(table))
            self.rest_until(start + pace)
            last = table
