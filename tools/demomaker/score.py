"""Amazing Grace: words by John Newton (1779), tune "New Britain" (1829, joined with the words in 1835). Both are in the public
domain. Pitches are MIDI numbers, lengths are beats; three beats a bar, in G."""
TITLE = 'Amazing Grace'
CREDITS = ('Words by John Newton, 1779', 'Tune "New Britain", 1829', 'Both in the public domain')
BEATS_A_MINUTE = 104
BEAT = 60 / BEATS_A_MINUTE
BAR = 3

# The tune, one row a syllable: its notes.
D4, E4, G4, A4, B4, D5 = 62, 64, 67, 69, 71, 74
TUNE = [
    [(D4, 1)], [(G4, 2)], [(B4, .5), (G4, .5)], [(B4, 2)], [(A4, 1)], [(G4, 2)], [(E4, 1)], [(D4, 2)],
    [(D4, 1)], [(G4, 2)], [(B4, .5), (G4, .5)], [(B4, 2)], [(A4, 1)], [(D5, 5)],
    [(B4, .5), (D5, .5)], [(D5, 2)], [(B4, .5), (G4, .5)], [(B4, 2)], [(A4, 1)], [(G4, 2)], [(E4, 1)], [(D4, 2)],
    [(D4, 1)], [(G4, 2)], [(B4, .5), (G4, .5)], [(B4, 2)], [(A4, 1)], [(G4, 5)]]
VERSE_CHORDS = 'G G7 C G G Em D D7 G G7 C G Em D7 G G'.split()
LONGEST_SWEEP = 3       # beats: the words of a long note are lit before the note ends, and the next page can come

# A hyphen parts two syllables of a word and is not shown; a blank row ends a page.
VERSES = ("""A-ma-zing grace!
How sweet the sound
That saved a wretch
like me!

I once was lost,
but now am found,
Was blind, but now
I see.""", """'Twas grace that taught
my heart to fear,
And grace my fears
re-lieved;

How pre-cious did
that grace ap-pear
The hour I first
be-lieved!""")

INTRO_CHORDS = 'G C Em D7 G D7'.split()
INTRO_TUNE = [(2, G4, 2), (2, B4, .5), (2, G4, .5), (3, B4, 2), (3, A4, 1), (4, G4, 3)]     # (bar, pitch, beats)
OUTRO_CHORDS = 'C G'.split()
TAIL = 2.6              # seconds for the last chord to ring

CHORDS = {'G': (43, (55, 59, 62, 67)), 'G7': (43, (55, 59, 62, 65)), 'C': (48, (55, 60, 64, 67)),
          'Em': (40, (55, 59, 64, 67)), 'D': (38, (57, 62, 66, 69)), 'D7': (38, (57, 60, 66, 69))}   # bass, four strings

ALL_CHORDS = INTRO_CHORDS + VERSE_CHORDS * len(VERSES) + OUTRO_CHORDS
SECONDS = len(ALL_CHORDS) * BAR * BEAT + TAIL
VERSE_BEATS = len(VERSE_CHORDS) * BAR


def verse_start(number):
    """The beat of a verse's first note, the one before its first bar."""
    return len(INTRO_CHORDS) * BAR - 1 + number * VERSE_BEATS


def melody():
    """(beat, pitch, beats) of every note of the guide."""
    notes, beat = [], 0.0
    for bar, pitch, beats in INTRO_TUNE:
        beat = max(beat, bar * BAR)
        notes.append((beat, pitch, beats))
        beat += beats
    for number in range(len(VERSES)):
        beat = verse_start(number)
        for row in TUNE:
            for pitch, beats in row:
                notes.append((beat, pitch, beats))
                beat += beats
    return notes


def song_text():
    """The words with their times, in the text form that make_cdg reads."""
    rows = [f'title: {TITLE}', *(f'credit: {one}' for one in CREDITS), 'ornament: \u266a   \u266b   \u266a',
            'colors: 014 fff fc3', f'length: {SECONDS:.3f}', '']
    for number, verse in enumerate(VERSES):
        beat, slots = verse_start(number), iter(TUNE)
        for line in verse.splitlines():
            timed = ''
            for word in line.split():
                for part in word.split('-'):
                    beats = sum(length for _, length in next(slots))
                    end = beat + min(beats, LONGEST_SWEEP)
                    timed += f'[{beat * BEAT:.3f}]{part}'
                    beat += beats
                timed += ' '
            rows.append(f'{timed.rstrip()}[{end * BEAT:.3f}]' if line else '')
        rows.append('')
        if next(slots, None) is not None:
            raise ValueError('a verse has fewer syllables than the tune')
    return '\n'.join(rows)
