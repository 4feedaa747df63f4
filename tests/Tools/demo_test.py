"""The demo song as it lies in resources/: words on the notes, sound and graphics of one length, small, not too loud."""
import re
import subprocess
import unittest

import maker
from cdgmaker import lyrics, packets, song
from demomaker import score, synth

FOLDER = maker.ROOT / 'resources/demo'
GRAPHICS, SOUND = (FOLDER / f'Vopla Demo - {score.TITLE}.{end}' for end in ('cdg', 'mp3'))


class Demo(unittest.TestCase):
    def test_each_syllable_begins_on_a_note_of_the_tune(self):
        read = song.read_song(score.song_text())
        notes = [beat * score.BEAT for beat, _, _ in score.melody()]
        starts = [one.start for page in read.pages for line in page for one in line.syllables]
        self.assertEqual(len(starts), len(score.TUNE) * len(score.VERSES))
        for start in starts:
            self.assertLess(min(abs(start - note) for note in notes), 0.002)

    def test_the_graphics_are_what_the_maker_makes(self):
        stream = packets.Stream()
        lyrics.add_song(stream, song.read_song(score.song_text()), step=2)
        self.assertEqual(GRAPHICS.read_bytes(), bytes(stream.bytes))

    def test_sound_and_graphics_fit_each_other(self):
        self.assertLess(GRAPHICS.stat().st_size + SOUND.stat().st_size, 2_000_000)
        done = subprocess.run(['ffmpeg', '-hide_banner', '-nostdin', '-i', SOUND, '-af', 'volumedetect', '-f', 'null', '-'],
                              capture_output=True, text=True, check=True).stderr
        self.assertLess(float(re.search(r'max_volume: (\S+) dB', done)[1]), -1)
        hours, minutes, seconds = re.search(r'Duration: (\d+):(\d+):(\S+),', done).groups()
        self.assertAlmostEqual(int(hours) * 3600 + int(minutes) * 60 + float(seconds),
                               GRAPHICS.stat().st_size / 24 / 300, delta=0.1)

    def test_instruments_are_in_tune_and_end_at_zero(self):
        for play in (synth.pluck, synth.bass, synth.lead):
            for pitch in (43, 62, 74):
                samples = play(pitch, 0.8)
                self.assertLess(max(abs(samples[0]), abs(samples[-1])), 0.01)
                # Shifted by whole periods the tone is most like itself.
                period = synth.RATE / synth.frequency(pitch)
                part = samples[4000:12000]

                def likeness(length, turns=8):
                    shift = round(length * turns)
                    return sum(a * b for a, b in zip(part, part[shift:shift + 4000]))
                best = max(range(-60, 61, 10), key=lambda cents: likeness(period * 2 ** (cents / 1200)))
                self.assertLessEqual(abs(best), 10, (play.__name__, pitch))


if __name__ == '__main__':
    unittest.main()
