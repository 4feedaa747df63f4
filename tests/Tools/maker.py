"""What the tests of the makers share."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / 'tools'))

PACKET = 24


def split(stream):
    return [bytes(stream[n:n + PACKET]) for n in range(0, len(stream), PACKET)]


class FolderTest(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.folder = pathlib.Path(self._folder.name)

    def make(self, *arguments, fails=False):
        """Runs make_cdg; its --out is a file of the test's folder."""
        done = subprocess.run([ROOT / 'tools/make_cdg', *map(str, arguments)], capture_output=True, text=True)
        self.assertEqual(done.returncode != 0, fails, done.stderr)
        return done

    def frame(self, path, seconds):
        """The picture of a moment as ffmpeg sees it: 300 x 216 pixels, three bytes each.

        It makes no frame of a zero packet: the filters hold the last one, also after the end."""
        done = subprocess.run(['ffmpeg', '-nostdin', '-v', 'error', '-i', path, '-ss', str(seconds), '-frames:v', '1',
                               '-vf', 'fps=300,tpad=stop_mode=clone:stop_duration=2', '-f', 'rawvideo', '-pix_fmt', 'rgb24', '-'],
                              capture_output=True, check=True)
        self.assertEqual(len(done.stdout), 300 * 216 * 3, 'no picture at this time')
        pixels = list(zip(done.stdout[0::3], done.stdout[1::3], done.stdout[2::3]))
        return [pixels[y * 300:(y + 1) * 300] for y in range(216)]
