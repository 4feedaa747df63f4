"""Parity against a field that is multiplied bit by bit and polynomials that are summed term by term."""
import random
import unittest

import maker
from cdgmaker import damage, galois, packets, stress


def slow_multiply(a, b):
    product = 0
    for bit in range(6):
        if b >> bit & 1:
            product ^= a << bit
    for bit in range(11, 5, -1):
        if product >> bit & 1:
            product ^= 0x43 << (bit - 6)
    return product


def power(base, exponent):
    result = 1
    for _ in range(exponent):
        result = slow_multiply(result, base)
    return result


def is_whole(word, symbols):
    """Every root of the generator is a root of the word."""
    for n in range(symbols):
        total = 0
        for place, symbol in enumerate(word):
            total ^= slow_multiply(symbol, power(power(2, n), len(word) - 1 - place))
        if total:
            return False
    return True


class Galois(unittest.TestCase):
    def test_products(self):
        for a in range(64):
            for b in range(64):
                self.assertEqual(galois.multiply(a, b), slow_multiply(a, b))

    def test_generators_are_the_published_ones(self):
        self.assertEqual([galois.LOG[c] for c in galois.generator(2)[:0:-1]], [1, 6])
        self.assertEqual([galois.LOG[c] for c in galois.generator(4)[:0:-1]], [6, 21, 39, 18])

    def test_every_packet_of_a_stream_is_whole(self):
        stream = packets.Stream()
        stress.stress(stream, 12, 3)
        some = random.Random(1).sample(maker.split(stream.bytes), 400)
        self.assertGreater(len({one[1] for one in some}), 9)
        for one in some:
            self.assertLess(max(one), 64)
            self.assertTrue(is_whole(one[:4], 2), one.hex())
            self.assertTrue(is_whole(one, 4), one.hex())

    def test_repairable_is_what_few_errors_make(self):
        rng = random.Random(2)
        clean = packets.tile(3, 4, (1, 2), range(12))
        for errors in (0, 1, 2):
            for _ in range(60):
                word = bytearray(clean)
                for place in rng.sample(range(24), errors):
                    word[place] ^= rng.randrange(1, 64)
                self.assertTrue(galois.repairable(word, 4))
                self.assertEqual(galois.repairable(word[:4], 2) and not any(galois.syndromes(word, 4)), errors == 0)
        word = bytearray(clean)
        for place in (0, 5, 11):
            word[place] ^= 9
        self.assertFalse(galois.repairable(word, 4))


class Damage(unittest.TestCase):
    def test_each_kind_keeps_its_word(self):
        stream = packets.Stream()
        stress.stress(stream, 12, 5)
        clean = maker.split(stream.bytes)
        spoiled, hits = damage.damage(stream.bytes, 30, 8)
        self.assertEqual(len(hits), round(len(clean) * 0.3))
        self.assertEqual({kind for _, kind, _, _ in hits}, set(damage.KINDS))
        spoiled = maker.split(spoiled)
        hit = {n for n, _, _, _ in hits}
        self.assertTrue(all(spoiled[n] == clean[n] for n in range(len(clean)) if n not in hit))
        for n, kind, places, before in hits:
            self.assertEqual(before, clean[n])
            self.assertEqual(places, [k for k in range(24) if spoiled[n][k] != clean[n][k]])
            self.assertLess(max(spoiled[n]), 64)
            if kind == 'hopeless':
                self.assertGreaterEqual(len(places), 5)
                self.assertFalse(galois.repairable(spoiled[n][:4], 2) or galois.repairable(spoiled[n], 4))
            else:
                self.assertEqual(len(places), 1 if kind == 'one' else 2)
                self.assertLess(sum(place < 4 for place in places), 2)
            if not any(before):
                self.assertNotIn(0, places, 'a zero packet must not become graphics')


if __name__ == '__main__':
    unittest.main()
