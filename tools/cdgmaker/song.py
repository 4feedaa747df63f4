"""The text format of a song, and songs of made-up words.

    title: Amazing Grace
    credit: Words by John Newton, 1779        (any number of lines)
    ornament: * * *                           (a line between title and credits)
    colors: 003 fff fd4                       (background, words, sung words; as red, green, blue digits)
    second: 8df 4f8                           (the second voice, of lines that begin with "2:")
    length: 68.5                              (seconds; else two after the last word)

    [6.00]A[6.58]ma[7.15]zing [8.31]grace![9.46]

A number in brackets is the time in seconds of what follows, and the end of what stands before. A blank line ends a page, at
most four lines each. Lines without times, after "pace: 9", are sung at so many letters a second."""
import random
import re
from dataclasses import dataclass, field


class SongError(Exception):
    """The text can't be used; the message names the line."""


@dataclass
class Syllable:
    start: float
    end: float
    letters: int        # where it begins in the line's text


@dataclass
class Line:
    text: str
    syllables: list
    second: bool = False


@dataclass
class Song:
    title: str = ''
    credits: list = field(default_factory=list)
    ornament: str = ''
    colors: tuple = ((0, 0, 4), (15, 15, 15), (15, 13, 2))
    second: tuple = ((8, 13, 15), (3, 15, 8))
    length: float = 0.0
    pages: list = field(default_factory=list)       # lists of Line


LINES_A_PAGE = 4
_TIME = re.compile(r'\[(\d+(?:\.\d+)?)\]')


def _color(text, number):
    if not re.fullmatch('[0-9a-fA-F]{3}', text):
        raise SongError(f'line {number}: a colour is three hex digits')
    return tuple(int(digit, 16) for digit in text)


def _timed(text, number):
    parts = _TIME.split(text)
    if parts[0]:
        raise SongError(f'line {number}: words before the first time')
    times = [float(one) for one in parts[1::2]]
    if times != sorted(times):
        raise SongError(f'line {number}: the times do not rise')
    if parts[-1].strip():
        raise SongError(f'line {number}: no time at the end')
    syllables, whole = [], ''
    for n, words in enumerate(parts[2:-1:2]):
        if words.strip():
            syllables.append(Syllable(times[n], times[n + 1], len(whole)))
        whole += words
    return whole.rstrip(), syllables


def _paced(text, start, pace):
    syllables = []
    for word in re.finditer(r'\S+\s*', text):
        end = start + len(word[0]) / pace
        syllables.append(Syllable(start, end, word.start()))
        start = end
    return text, syllables


def read_song(text):
    song, page, pace, now = Song(), [], 0.0, 0.0
    for number, raw in enumerate(text.splitlines(), 1):
        line = raw.strip()
        if line.startswith('#'):
            continue
        key, colon, value = line.partition(': ')
        value = value.strip()
        if not line:
            if page:
                song.pages.append(page)
            page = []
        elif colon and key in ('title', 'ornament'):
            setattr(song, key, value)
        elif colon and key == 'credit':
            song.credits.append(value)
        elif colon and key in ('colors', 'second'):
            colors = tuple(_color(one, number) for one in value.split())
            if len(colors) != (3 if key == 'colors' else 2):
                raise SongError(f'line {number}: wrong number of colours')
            setattr(song, key, colors)
        elif colon and key in ('length', 'pace', 'start'):
            try:
                seconds = float(value)
            except ValueError:
                raise SongError(f'line {number}: no number') from None
            if not 0 < seconds <= 36000:
                raise SongError(f'line {number}: out of range')
            if key == 'length':
                song.length = seconds
            elif key == 'pace':
                pace = seconds
            else:
                now = seconds
        else:
            second = line.startswith('2:')
            line = line[2:].strip() if second else line
            if line.startswith('['):
                words, syllables = _timed(line, number)
            elif pace:
                words, syllables = _paced(line, now + 0.3, pace)
            else:
                raise SongError(f'line {number}: neither a time nor a pace')
            if not syllables:
                raise SongError(f'line {number}: no words')
            if len(page) == LINES_A_PAGE:
                raise SongError(f'line {number}: more than {LINES_A_PAGE} lines on a page')
            if syllables[0].start < now - 0.001 and not second:
                raise SongError(f'line {number}: begins before the line above ends')
            now = syllables[-1].end
            page.append(Line(words, syllables, second))
    if page:
        song.pages.append(page)
    if not song.pages:
        raise SongError('no words at all')
    song.length = max(song.length, now + 2)
    return song


_STARTS = 'b br c d dr f fl g gr h j k l m n p pl r s sh st t th tr v w'.split()
_VOWELS = 'a e i o u ai ea ee oo ou'.split()
_ENDS = ['', '', 'n', 'r', 's', 't', 'l', 'm', 'nd', 'st', 'ck']
_COLORS = [((0, 0, 4), (15, 15, 15), (15, 13, 2)), ((0, 3, 2), (15, 15, 12), (4, 15, 6)),
           ((4, 0, 2), (14, 14, 15), (15, 8, 3)), ((0, 0, 0), (11, 13, 15), (15, 4, 8)),
           ((2, 1, 5), (15, 15, 15), (6, 13, 15))]


def _word(rng):
    return [rng.choice(_STARTS) + rng.choice(_VOWELS) + rng.choice(_ENDS) for _ in range(rng.choice((1, 1, 1, 2, 2, 3)))]


def made_up_song(rng, start, length, number, pace):
    """A song of made-up words between `start` and `start + length` seconds, `pace` syllables a second."""
    song = Song(title=' '.join(''.join(_word(rng)).capitalize() for _ in range(rng.choice((2, 3)))),
                credits=['Words and music: nobody', f'Test song {number}'], colors=rng.choice(_COLORS),
                length=start + length)
    now, verse = start + 12, 0
    while now < start + length - 16:
        page = []
        for n in range(LINES_A_PAGE):
            text, syllables, second = '', [], rng.random() < 0.1
            while len(text) < rng.choice((12, 16, 20)):
                parts = _word(rng)
                if not text:
                    parts[0] = parts[0].capitalize()
                for part in parts:
                    end = now + rng.choice((0.5, 1, 1, 1.5)) / pace
                    syllables.append(Syllable(now, end, len(text)))
                    text, now = text + part, end
                text += ' '
            page.append(Line(text.rstrip(), syllables, second))
            now += rng.choice((0.1, 0.4, 0.8))
        song.pages.append(page)
        verse += 1
        now += 14 if verse % 8 == 0 else rng.choice((1.5, 2, 3))
    return song


def made_up_songs(seconds, seed, pace=4.0):
    """Songs of 2 to 4 minutes that fill the time."""
    rng, songs, start = random.Random(seed), [], 0.0
    while seconds - start > 0.01:
        length = min(rng.uniform(120, 240), seconds - start)
        if seconds - start - length < 60:
            length = seconds - start
        songs.append(made_up_song(rng, start, length, len(songs) + 1, pace))
        start += length
    return songs
