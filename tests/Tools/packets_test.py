"""The fields of each packet, and what make_cdg does to a whole stream."""
import unittest

import maker
from cdgmaker import packets, stress


class Packets(unittest.TestCase):
    def test_fields_stand_where_the_format_has_them(self):
        for made, instruction, data in (
                (packets.memory_preset(5)[3], 1, [5, 3]),
                (packets.border_preset(9), 2, [9]),
                (packets.tile(17, 49, (3, 12), [63] * 12), 6, [3, 12, 17, 49] + [63] * 12),
                (packets.tile(1, 2, (3, 12), [1] * 12, channel=6, xor=True), 38, [0x13, 0x2C, 1, 2] + [1] * 12),
                (packets.scroll(False, 4, 1, 2, 5, 11), 20, [4, 0x15, 0x2B]),
                (packets.scroll(True, 4, 2, 1, 0, 3), 24, [4, 0x20, 0x13]),
                (packets.load_colors([(10, 5, 12)] * 16)[0], 30, [0x29, 0x1C] * 8),
                (packets.load_colors([(0, 0, 0)] * 8 + [(15, 15, 15)] * 8)[1], 31, [0x3F, 0x3F] * 8),
                (packets.transparent(range(16)), 28, list(range(16)))):
            self.assertEqual(made[0], 9)
            self.assertEqual(made[1], instruction)
            self.assertEqual(list(made[4:20]), data + [0] * (16 - len(data)))

    def test_the_places_of_an_interleaved_packet(self):
        stream = bytes(range(1, 25)) + bytes(24) + bytes(range(101, 125))
        disc = packets.interleaved(stream)
        self.assertEqual(len(disc), 3 * 96)
        for n, place in enumerate((0, 66, 125, 191, 100, 50, 150, 175, 8, 33, 58, 83, 108, 133, 158, 183, 16, 41, 25, 91, 116,
                                   141, 166, 75)):
            self.assertEqual(disc[place], n + 1)
            self.assertEqual(disc[48 + place], n + 101)
        self.assertEqual(sum(map(bool, disc)), 48)

    def test_a_fade_ends_at_its_target_and_keeps_its_pace(self):
        stream = packets.Stream()
        stream.fade([(0, 0, 0)] * 16, [(15, 8, 1)] * 16, 5, 7)
        self.assertEqual(stream.position, 35)
        self.assertEqual(maker.split(stream.bytes)[28:30], packets.load_colors([(15, 8, 1)] * 16))


class Stress(maker.FolderTest):
    def test_every_instruction_is_there(self):
        stream = packets.Stream()
        stress.stress(stream, 30, 1)
        seen = {one[1] for one in maker.split(stream.bytes) if one[0] == 9}
        self.assertEqual(seen, set(range(64)))
        tiles = [one for one in maker.split(stream.bytes) if one[0] == 9 and one[1] in (6, 38)]
        self.assertEqual({(one[4] >> 4) * 4 + (one[5] >> 4) for one in tiles}, set(range(16)))
        for instruction in (20, 24):
            moves = [one for one in maker.split(stream.bytes) if one[:2] == bytes((9, instruction))]
            self.assertLessEqual({(a, d) for a in range(3) for d in range(3)}, {(m[5] >> 4, m[6] >> 4) for m in moves})
            self.assertLessEqual(set(range(6)), {m[5] & 7 for m in moves})
            self.assertLessEqual(set(range(12)), {m[6] & 15 for m in moves})

    def test_kinds_leave_the_others_out(self):
        self.make('stress', '--seconds', 20, '--kinds', 'tiles,memory', '--out', self.folder / 'a.cdg')
        seen = {one[1] for one in maker.split((self.folder / 'a.cdg').read_bytes())}
        self.assertEqual(seen, {1, 6, 30, 31})
        self.assertIn("no kind 'tile'", self.make('stress', '--kinds', 'tile', '--out', self.folder / 'b.cdg', fails=True).stderr)

    def test_the_same_seed_gives_the_same_bytes(self):
        for name, seed in (('a', 4), ('b', 4), ('c', 5)):
            self.make('stress', '--seconds', 5, '--seed', seed, '--damage', 10, '--out', self.folder / f'{name}.cdg')
        a, b, c = ((self.folder / f'{name}.cdg').read_bytes() for name in 'abc')
        self.assertEqual(a, b)
        self.assertNotEqual(a, c)
        self.assertEqual((self.folder / 'a.damage.tsv').read_text(), (self.folder / 'b.damage.tsv').read_text())

    def test_forms_of_one_stream(self):
        """With damage, without parity, with noise in the high bits, interleaved: all lead back to the same packets."""
        def read(name, *more):
            self.make('stress', '--seconds', 6, *more, '--out', self.folder / name)
            return (self.folder / name).read_bytes()
        plain = read('plain.cdg')
        self.assertEqual(len(plain), 6 * 300 * 24)
        read('hit.cdg', '--damage', 20)
        self.assertEqual((self.folder / 'hit.clean.cdg').read_bytes(), plain)
        healed = bytearray((self.folder / 'hit.cdg').read_bytes())
        self.assertNotEqual(healed, plain)
        for line in (self.folder / 'hit.damage.tsv').read_text().splitlines():
            n, _, _, before = line.split('\t')
            healed[int(n) * 24:int(n) * 24 + 24] = bytes.fromhex(before)
        self.assertEqual(healed, plain)
        noisy = read('noisy.cdg', '--high-bits')
        self.assertEqual(bytes(one & 63 for one in noisy), plain)
        self.assertGreater(sum(one > 63 for one in noisy), len(noisy) // 2)
        bare = read('bare.cdg', '--no-parity')
        for one, other in zip(maker.split(bare), maker.split(plain)):
            self.assertEqual(one, other[:2] + bytes(2) + other[4:20] + bytes(4))
        self.assertEqual(read('disc.cdg', '--interleave'), packets.interleaved(plain))
        self.make('stress', '--no-parity', '--damage', 5, '--out', self.folder / 'no.cdg', fails=True)


if __name__ == '__main__':
    unittest.main()
