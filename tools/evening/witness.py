"""What must hold, asked from outside."""
import time

# A change that is older than this is on the disc, as far as the disc could be written; the second figure is the room for the work
# of a busy machine that lies between the change and its being known.
SAVED_AFTER = 10
ROOM = 5
WORDS_OF_FAULTS = ('Assert Fail', 'Segmentation', 'was forced to kill thread', 'terminate called')


class Witness:
    def __init__(self, program, shelf):
        self.program, self.shelf = program, shelf
        self.faults = []
        self.added = {}              # title -> when the program took it
        self.writable_since = time.monotonic()
        self.is_writable = True
        self.longest_quit = 0
        self.most_memory = 0

    def fault(self, words):
        self.faults.append(words)
        print('FAULT', words)

    def disc_filled(self):
        self.is_writable = False

    def disc_freed(self):
        self.is_writable, self.writable_since = True, time.monotonic()

    def took(self, files):
        for file in files:
            self.added.setdefault(file.stem, time.monotonic())

    def look(self):
        """After each act, while the program runs."""
        if self.program.process.poll() is not None:
            self.fault(f'it ended by itself: {self.program.process.returncode}')
            self.ended(killed=True)
            self.program.start()
            return
        self.most_memory = max(self.most_memory, self.program.memory())
        for difference in self.shelf.differences():
            self.fault(difference)
            self.shelf.known.pop(next(path for path in self.shelf.known if difference.endswith(str(path))))

    def ended(self, killed):
        """After its end, however it came: the log, the library, and what is older than ten seconds."""
        now = time.monotonic()
        log = self.program.log_text()
        for words in WORDS_OF_FAULTS:
            if words in log:
                self.fault(next(line for line in log.splitlines() if words in line))
        told, status, errors = self.program.ask('library', 'check', '--no-files')
        problems = [problem for row in told for problem in row.get('problems', [])]
        if status != 0 or problems:
            self.fault(f'library check: {status} {problems[:3]} {errors.strip()[-300:]}')
        names, status, errors = self.program.ask('library', 'list')
        if status != 0:
            self.fault(f'library list: {status} {errors.strip()[-300:]}')
            return
        there = {str(row.get('name', '')) for row in names}
        for title, since in self.added.items():
            name = title.split(' - ', 1)[1]
            saved_by = max(since, self.writable_since) + SAVED_AFTER + ROOM
            must_be = self.is_writable and (saved_by < now if killed else True)
            if must_be and name not in there:
                self.fault(f'lost: {title}, added {now - since:.0f} s before the end' + (' (killed)' if killed else ''))
        self.added = {title: since for title, since in self.added.items() if title.split(' - ', 1)[1] in there}
