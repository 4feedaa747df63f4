"""From a song to packets: title page, pages of words, sweeps in time with the syllables, countdown dots, fades.

The stream has one packet every 1/300 s, so drawing takes time. Sweeps have a moment of their own and go first; drawing fills
what is left, and the rest is zero packets."""
from collections import deque

from . import packets
from .packets import PACKETS_A_SECOND
from .page import SECOND_VOICE, TextLine, dots, palette

LEAD = 3.0              # seconds a page is there before its first word, if the page before leaves so much
DOTS_FROM = 4.0         # the first page, and one after a pause of so many seconds, is counted down
FIRST_ROW, ROWS_A_LINE = 2, 4


class Scheduler:
    """Puts drawing (in order, as soon as it may) and sweeps (in order, each at its moment) into one stream."""

    def __init__(self, stream):
        self.stream = stream
        self.drawing = deque()      # (earliest position, packet)
        self.sweeping = deque()     # (position, drawn packets that must be out before, packet)
        self.asked = self.drawn = 0

    def draw(self, earliest, *some):
        for one in some:
            self.drawing.append((earliest, one))
        self.asked += len(some)

    def sweep(self, position, after, some):
        for one in some:
            self.sweeping.append((position, after, one))

    def run(self):
        """Empties both queues. A page is asked for only when the sweeps of the page before are out."""
        stream = self.stream
        self.sweeping = deque(sorted(self.sweeping, key=lambda one: one[0]))    # two voices may overlap
        while self.drawing or self.sweeping:
            now = stream.position
            if self.sweeping and self.sweeping[0][0] <= now and self.sweeping[0][1] <= self.drawn:
                stream.add(self.sweeping.popleft()[2])
            elif self.drawing and self.drawing[0][0] <= now:
                stream.add(self.drawing.popleft()[1])
                self.drawn += 1
            else:
                stream.rest_until(min(queue[0][0] for queue in (self.drawing, self.sweeping) if queue and queue[0][0] > now))


def _at(seconds):
    return int(seconds * PACKETS_A_SECOND + 0.5)


def _sweep_line(scheduler, picture, line, step, after):
    """Each syllable runs evenly over its letters, in steps of `step` pixels that never cross a tile's edge."""
    starts = [picture.x_of(one.letters) for one in line.syllables] + [picture.x_of(len(line.text))]
    for syllable, left, right in zip(line.syllables, starts, starts[1:]):
        x = left
        while x < right:
            until = min((x // step + 1) * step, right)
            when = syllable.start + (syllable.end - syllable.start) * (x - left) / max(right - left, 1)
            scheduler.sweep(_at(when), after, picture.sweep(x, until))
            x = until


def _title_page(stream, song, until, levels):
    """Drawn unseen in the background's colour, then faded in, and out again before the words."""
    background, plain, sung = song.colors
    dark = [background] * 16
    colors = palette(background, sung, plain, (plain, plain))
    stream.add(*packets.load_colors(dark), packets.border_preset(0), *packets.memory_preset(0))
    words = song.title.split()
    big = [song.title]
    if len(song.title) > 14 and len(words) > 1:
        middle = min(range(1, len(words)), key=lambda n: abs(len(' '.join(words[:n])) * 2 - len(song.title)))
        big = [' '.join(words[:middle]), ' '.join(words[middle:])]
    row = 3
    for text in big:
        stream.add(*TextLine(text, row, 28, levels, 3).draw())
        row += 3
    if song.ornament:
        stream.add(*TextLine(song.ornament, row, 16, levels).draw(SECOND_VOICE))
    row = max(row + 1, 15 - 2 * len(song.credits))
    for text in song.credits[:4]:
        stream.add(*TextLine(text, row, 13, levels, 2).draw(SECOND_VOICE))
        row += 2
    stream.fade(dark, colors, 15)
    stream.rest_until(_at(until) - 15 * 6)
    if stream.position <= _at(until):
        stream.fade(colors, dark, 15)


def add_song(stream, song, step=3, levels=4, title_until=None):
    """Appends a song whose times count from the stream's start."""
    first = song.pages[0][0].syllables[0].start if song.pages else song.length
    if title_until is None:
        title_until = max(first - LEAD - 1, stream.seconds)
    if title_until - stream.seconds > 1.5:
        _title_page(stream, song, title_until, levels)
    colors = palette(*song.colors, song.second)
    scheduler = Scheduler(stream)
    scheduler.draw(stream.position, *packets.memory_preset(0), *packets.load_colors(colors), packets.border_preset(0))
    scheduler.run()
    end = stream.seconds
    for number, page in enumerate(song.pages):
        start = min(line.syllables[0].start for line in page)
        pause = start - end
        # The words just sung stay a moment, at most half of what is left until the next page must be read.
        change = _at(max(end + min(0.5, pause * 0.15), start - LEAD - 1))
        if number:
            scheduler.draw(change, *packets.memory_preset(0))
        if pause >= DOTS_FROM or not number:
            picture, spans = dots(3, 1, levels)
            scheduler.draw(change, *picture.draw())
            for n, (left, right) in enumerate(spans):
                scheduler.sweep(_at(start - (3 - n) * 0.7), scheduler.asked, picture.sweep(left, right))
            scheduler.sweep(_at(start + 0.3), scheduler.asked, picture.erase())
        for n, line in enumerate(page):
            row = FIRST_ROW + ROWS_A_LINE * n + (4 - len(page)) * ROWS_A_LINE // 2
            picture = TextLine(line.text, row, 20, levels)
            scheduler.draw(change, *picture.draw(SECOND_VOICE if line.second else 0))
            _sweep_line(scheduler, picture, line, step, scheduler.asked)
        scheduler.run()
        end = max(line.syllables[-1].end for line in page)
    fade = 15 * 6
    stream.rest_until(_at(song.length) - fade - 20)
    if _at(song.length) - stream.position >= fade:
        stream.fade(colors, [song.colors[0]] * 16, 15)
    stream.rest_until(_at(song.length))
