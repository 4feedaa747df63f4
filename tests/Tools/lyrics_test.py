"""Songs from their text to the picture that another decoder shows."""
import unittest

import maker
from cdgmaker import lyrics, packets, page, song

SONG = """title: Two Words
credit: Words by nobody
colors: 004 fff fd2
second: 8df 4f8
length: 15
[6.0]Hel[6.5]lo [7.0]there[8.0]
2:[8.5]Good [9.0]night[10.0]

[12]Last[13]
"""
SPANS = ((70, 71), (71, 100), (103, 107))       # of pixels, none ends at the edge of a tile
BACKGROUND, WHITE, SUNG = (0, 0, 0x44), (255, 255, 255), (255, 0xDD, 0x22)


class Text(unittest.TestCase):
    def test_times_and_letters(self):
        read = song.read_song(SONG)
        self.assertEqual([len(one) for one in read.pages], [2, 1])
        first, second = read.pages[0]
        self.assertEqual(first.text, 'Hello there')
        self.assertEqual([(s.start, s.end, s.letters) for s in first.syllables], [(6, 6.5, 0), (6.5, 7, 3), (7, 8, 6)])
        self.assertTrue(second.second)
        self.assertEqual((read.title, read.length, read.colors[0]), ('Two Words', 15, (0, 0, 4)))

    def test_a_told_pace(self):
        read = song.read_song('start: 4.7\npace: 10\nab cdefg hi\nnext')
        self.assertEqual([(round(s.start, 3), round(s.end, 3)) for s in read.pages[0][0].syllables],
                         [(5.0, 5.3), (5.3, 5.9), (5.9, 6.1)])
        self.assertAlmostEqual(read.pages[0][1].syllables[0].start, 6.4)

    def test_faults_name_their_line(self):
        for text, message in (('', 'no words'), ('title: x\nwords', 'line 2: neither'), ('[1]a[0.5]', 'line 1: the times'),
                              ('[1]a', 'line 1: no time at the end'), ('a[1]b[2]', 'line 1: neither'), ('[1][2]', 'line 1: no words'),
                              ('colors: 00g 111 222', 'line 1: a colour'), ('colors: 000', 'line 1: wrong number'),
                              ('length: long', 'line 1: no number'), ('pace: -1', 'line 1: out of range'),
                              ('[1]a[2]\n[1.5]b[3]', 'line 2: begins before'),
                              ('[1]a[2]\n[2]a[3]\n[3]a[4]\n[4]a[5]\n[5]a[6]', 'line 5: more than 4')):
            with self.assertRaisesRegex(song.SongError, message.replace('[', r'\['), msg=text):
                song.read_song(text)


class Letters(unittest.TestCase):
    def test_the_packets_paint_what_was_rasterised(self):
        """Tiles are executed one pixel at a time; every level of every pixel must come out, then the sweep from a to b."""
        line = page.TextLine('Quick Åse, jump!', 6)
        pixels = {}

        def execute(some):
            for one in some:
                for y in range(12):
                    for x in range(6):
                        at = one[7] * 6 + x, one[6] * 12 + y
                        color = one[5] & 15 if one[8 + y] >> (5 - x) & 1 else one[4] & 15
                        pixels[at] = pixels.get(at, 0) ^ color if one[1] == 38 else color
        execute(line.draw(8))
        before = dict(pixels)
        drawn = {at: color for at, color in pixels.items() if color & 3}
        self.assertGreater(len(drawn), 500)
        self.assertTrue(all(color & 12 == 8 for color in pixels.values()))
        self.assertEqual({color & 3 for color in drawn.values()}, {1, 2, 3})
        self.assertTrue(all(6 * 12 <= y < 8 * 12 and 12 <= x < 288 for x, y in drawn))
        for left, right in SPANS:
            execute(line.sweep(left, right))
        for (x, y), color in pixels.items():
            hit = color & 3 and any(left <= x - 6 < right for left, right in SPANS)
            self.assertEqual(color, before[x, y] ^ (4 if hit else 0))

    def test_long_lines_are_made_to_fit(self):
        line = page.TextLine('The quick brown fox jumps over the lazy dog again', 2)
        self.assertGreaterEqual(line.left, page.MARGIN)
        self.assertLessEqual(line.right, 288 - page.MARGIN)


class Pictures(maker.FolderTest):
    def setUp(self):
        super().setUp()
        (self.folder / 'song.txt').write_text(SONG)
        self.path = self.folder / 'song.cdg'
        self.make('lyrics', '--in', self.folder / 'song.txt', '--out', self.path)

    def count(self, picture, color, rows):
        """Pixels of a colour in some rows of tiles."""
        return sum(line.count(color) for line in picture[rows[0] * 12:rows[1] * 12])

    def test_the_stream_is_as_long_as_told(self):
        self.assertEqual(self.path.stat().st_size, 15 * 300 * 24)

    def test_the_title_then_the_page_then_the_sweep(self):
        title = self.frame(self.path, 1.5)
        self.assertGreater(self.count(title, SUNG, (2, 9)), 300)
        self.assertGreater(self.count(title, WHITE, (10, 17)), 100)
        first, second = (6, 8), (10, 12)        # two lines in the middle of the screen
        unsung = self.frame(self.path, 5.9)
        self.assertEqual(self.count(unsung, SUNG, first), 0)
        self.assertGreater(self.count(unsung, WHITE, first), 300)
        half, done = self.frame(self.path, 7.0), self.frame(self.path, 8.3)
        self.assertGreater(self.count(half, SUNG, first), 100)
        self.assertGreater(self.count(half, WHITE, first), 100)
        self.assertEqual(self.count(done, WHITE, first), 0)
        self.assertEqual(self.count(done, SUNG, first), self.count(unsung, WHITE, first))
        sung = [x for line in half[72:96] for x, color in enumerate(line) if color == SUNG]
        rest = [x for line in half[72:96] for x, color in enumerate(line) if color == WHITE]
        self.assertLess(max(sung), min(rest) + 2, 'the sweep runs from left to right')
        self.assertEqual(self.count(done, (0x88, 0xDD, 255), second) > 100, True, 'the second voice has its own colour')
        for picture in (title, unsung, done):
            edge = set(picture[0] + picture[215] + [line[0] for line in picture] + [line[299] for line in picture])
            self.assertEqual(edge, {BACKGROUND}, 'nothing is drawn on the border')

    def test_pages_replace_each_other_and_the_end_fades(self):
        self.assertEqual(self.count(self.frame(self.path, 11.9), WHITE, (6, 8)), 0)
        self.assertGreater(self.count(self.frame(self.path, 11.9), WHITE, (8, 10)), 50)
        last = {color for line in self.frame(self.path, 14.95) for color in line}
        self.assertEqual(last, {BACKGROUND})

    def test_sweeps_keep_their_time(self):
        """The first packet of each syllable leaves within a frame of its moment, also on a crowded page."""
        stream = packets.Stream()
        lines = [song.Line('Wide words stand here', [song.Syllable(3 + n, 4 + n, 0)]) for n in range(4)]
        lyrics.add_song(stream, song.Song(pages=[lines], length=9), title_until=0)
        wanted = {}
        for n, line in enumerate(lines):
            picture = page.TextLine(line.text, 2 + 4 * n)
            wanted[picture.sweep(picture.x_of(0), (picture.x_of(0) // 3 + 1) * 3)[0]] = line.syllables[0].start
        for position, one in enumerate(maker.split(stream.bytes)):
            if one in wanted:
                self.assertAlmostEqual(position / 300, wanted.pop(one), delta=1 / 15)
        self.assertFalse(wanted, 'a sweep is missing')


class Long(maker.FolderTest):
    def test_made_up_words_fill_the_time_as_a_disc_does(self):
        self.make('long', '--minutes', 5, '--seed', 3, '--out', self.folder / 'long.cdg')
        data = (self.folder / 'long.cdg').read_bytes()
        self.assertEqual(len(data), 5 * 60 * 300 * 24)
        some = maker.split(data)
        zero = some.count(packets.ZERO) / len(some)
        self.assertTrue(0.5 < zero < 0.95, zero)
        minutes = [sum(one[1] == 38 for one in some[n:n + 18000]) for n in range(0, len(some), 18000)]
        self.assertGreater(min(minutes), 300, 'each minute has sweeps')
        self.make('long', '--minutes', 5, '--seed', 3, '--out', self.folder / 'again.cdg')
        self.assertEqual(data, (self.folder / 'again.cdg').read_bytes())


if __name__ == '__main__':
    unittest.main()
