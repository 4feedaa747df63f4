"""The songs of the evening: good ones of several kinds, what harms them, and what is known of every file."""
import os
import pathlib
import subprocess
import zipfile

MAKE_CDG = pathlib.Path(__file__).resolve().parent.parent / 'make_cdg'
SECONDS = (5, 6, 7)


def ffmpeg(*words):
    subprocess.run(['ffmpeg', '-v', 'error', '-nostdin', '-y', *map(str, words)], check=True)


class Shelf:
    """Good copies lie in `good`; what the program sees lies in the venue's folders, and `known` tells what must be there."""

    def __init__(self, place, any_of):
        self.place, self.any_of = place, any_of
        self.good = place.folder / 'good'
        self.good.mkdir()
        self.known = {}      # path -> the bytes that were put there last; None where nothing is
        self.made = 0
        for n, seconds in enumerate(SECONDS):
            noise = ('-f', 'lavfi', '-i', f'anoisesrc=c=pink:d={seconds}:a=0.2')
            ffmpeg(*noise, '-ac', 2, '-b:a', '128k', self.good / f'{n}.mp3')
            subprocess.run([MAKE_CDG, 'lyrics', '--minutes', str(seconds / 60), '--seed', str(n), '--out',
                            self.good / f'{n}.cdg'], check=True)
            with zipfile.ZipFile(self.good / f'{n}.zip', 'w', zipfile.ZIP_DEFLATED) as made:
                for kind in ('mp3', 'cdg'):
                    made.write(self.good / f'{n}.{kind}', f'{n}.{kind}')
            ffmpeg('-f', 'lavfi', '-i', f'testsrc=s=426x240:r=25:d={seconds}', *noise, '-map', 0, '-map', 1, '-c:v', 'libx264',
                   '-preset', 'ultrafast', '-c:a', 'aac', self.good / f'{n}.mp4')
        for folder in (place.songs, place.stick.folder):
            for _ in range(6):
                self.add(folder)

    def add(self, folder):
        """One more good song of any kind; its files."""
        self.made += 1
        n, title = self.any_of.randrange(len(SECONDS)), f'Anna - Song {self.made:03}'
        kinds = self.any_of.choice((('mp3', 'cdg'), ('zip',), ('mp4',), ('mp3',)))
        return [self._put(folder / f'{title}.{kind}', (self.good / f'{n}.{kind}').read_bytes()) for kind in kinds]

    def add_broken(self, folder):
        """A file that looks like a song and is none."""
        self.made += 1
        kind = self.any_of.choice(('mp3', 'zip', 'mp4', 'cdg'))
        data = self.any_of.choice((b'', self.any_of.randbytes(30000), (self.good / f'0.{kind}').read_bytes()[:2000]))
        return self._put(folder / f'Bert - Broken {self.made:03}.{kind}', data)

    def _put(self, path, data):
        """By another name first, as a file manager does it."""
        new = path.with_name('~new')
        new.write_bytes(data)
        os.replace(new, path)
        self.known[path] = data
        return path

    def files(self):
        return [path for path, data in self.known.items() if data is not None]

    def harm(self):
        """Something befalls a file; what, in a word."""
        path = self.any_of.choice([path for path in self.files() if path.exists()])
        how = self.any_of.choice(('deleted', 'garbage', 'cut', 'another'))
        if how == 'deleted':
            path.unlink()
            self.known[path] = None
        elif how == 'another':
            self._put(path, (self.good / f'{self.any_of.randrange(len(SECONDS))}{path.suffix}').read_bytes())
        else:    # where it lies: whoever reads it sees it change
            data = self.any_of.randbytes(20000) if how == 'garbage' else self.known[path][:len(self.known[path]) // 3]
            path.write_bytes(data)
            self.known[path] = data
        return f'{how}: {path.name}'

    def mend(self):
        """All songs are whole again, those of a stick that was out too."""
        for path in list(self.known):
            if path.parent.is_dir() and 'Broken' not in path.name:
                self._put(path, (self.good / f'{len(path.stem) % len(SECONDS)}{path.suffix}').read_bytes())

    def stick_went(self):
        for path in self.known:
            if path.parent == self.place.stick.folder:
                self.known[path] = None

    def differences(self):
        """Files that are gone or changed though nobody but the program could have done it."""
        found = []
        for path, data in self.known.items():
            if data is not None and not path.exists():
                found.append(f'gone: {path}')
            elif data is not None and path.read_bytes() != data:
                found.append(f'changed: {path}')
        return found
