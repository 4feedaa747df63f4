"""What happens in an evening: a table of acts, drawn by lot."""
import collections
import time


class Evening:
    """Acts on the program, the songs and the house; the witness is asked after each."""

    SONG_WITHIN = 45     # seconds in which the next song begins, when nobody stopped the show

    def __init__(self, program, shelf, place, seen, any_of):
        self.program, self.shelf, self.place, self.seen, self.any_of = program, shelf, place, seen, any_of
        self.counts = collections.Counter()
        self.stick_is_out = self.device_is_out = self.disc_is_full = False
        self.acts = (
            (6, 'plays a row', self.plays), (4, 'next', self.next), (4, 'seeks', self.seeks), (3, 'pauses for a moment', self.pauses),
            (2, 'pitch and tempo', self.turns), (6, 'harms a file', self.harms), (4, 'adds a song', self.adds),
            (3, 'adds what is no song', self.adds_broken), (3, 'leaves a dialog open', self.leaves_open),
            (2, 'closes what is open', self.closes), (2, 'stick', self.stick), (2, 'device', self.device),
            (2, 'full disc', self.fills), (2, 'waits', self.waits), (1, 'quits', self.quits), (1, 'kills', self.kills),
        )

    def act(self):
        _, name, deed = self.any_of.choices(self.acts, [weight for weight, _, _ in self.acts])[0]
        self.counts[name] += 1
        print(f'{time.strftime("%H:%M:%S")} {name}', deed() or '', flush=True)
        self.seen.look()
        time.sleep(self.any_of.uniform(0.1, 4))
        if self.counts.total() % 12 == 0:
            self.goes_on()

    # ---- The operator ----
    def plays(self):
        self.program.main_keys('Escape', 'Escape')
        self.program.main_keys('Home', *['Down'] * self.any_of.randrange(8), 'Return')

    def next(self):
        self.program.keys('ctrl+Right')

    def seeks(self):
        self.program.main_keys(self.any_of.choice(('Right', 'Left', 'shift+Right')))

    def pauses(self):
        self.program.main_keys('space')
        time.sleep(self.any_of.uniform(0, 1))
        self.program.main_keys('space')

    def turns(self):
        self.program.main_keys(*self.any_of.choices(('ctrl+plus', 'ctrl+minus', 'ctrl+0', 'ctrl+Up', 'ctrl+Down'), k=3))

    def adds(self):
        folder = self.place.songs if self.stick_is_out else self.any_of.choice((self.place.songs, self.place.stick.folder))
        files = self.shelf.add(folder)
        if self.program.hand_over(files):
            self.seen.took(files)
        return files[0].name

    def adds_broken(self):
        file = self.shelf.add_broken(self.place.songs)
        self.program.hand_over([file])
        return file.name

    def leaves_open(self):
        keys = self.any_of.choice(('ctrl+o', 'ctrl+comma', 'question', 'alt+f', 'ctrl+Delete', 'ctrl+3'))
        self.program.main_keys(keys)
        return keys

    def closes(self):
        self.program.keys('Escape', 'Escape', 'Escape')

    def waits(self):
        time.sleep(15)

    # ---- The house ----
    def harms(self):
        return self.shelf.harm()

    def stick(self):
        self.stick_is_out = not self.stick_is_out
        if self.stick_is_out:
            self.place.stick.pull_out()
            self.shelf.stick_went()
        else:
            self.place.stick.plug_in()
            self.shelf.mend()
        return 'out' if self.stick_is_out else 'in'

    def device(self):
        if not self.place.devices.server:
            return 'none to pull out'
        self.device_is_out = not self.device_is_out
        (self.place.devices.pull_out if self.device_is_out else self.place.devices.plug_in)()
        return 'out' if self.device_is_out else 'in'

    def fills(self):
        if self.disc_is_full:
            self.frees()
            return 'free again'
        if self.place.library.fill():
            self.disc_is_full = True
            self.seen.disc_filled()
            return 'full'
        return 'no disc of its own'

    def frees(self):
        self.place.library.free()
        self.disc_is_full = False
        self.seen.disc_freed()

    # ---- Ends ----
    def quits(self):
        full = self.disc_is_full
        status, took = self.program.quit()
        self.seen.longest_quit = max(self.seen.longest_quit, took)
        if status != 0 or took > 10 or self.program.ENDS not in self.program.log_text() and not full:
            self.seen.fault(f'quit: status {status} after {took:.1f} s')
        self.again(killed=False)
        return f'{took * 1000:.0f} ms'

    def kills(self):
        self.program.kill()
        self.again(killed=True)

    def again(self, killed):
        if self.disc_is_full:     # what a full disc could not take is judged by what it holds once it can be written
            self.seen.ended(killed)
            self.frees()
        else:
            self.seen.ended(killed)
        self.program.start()

    def goes_on(self):
        """All is well in the house: a song begins, and after it, by itself, the next."""
        if self.stick_is_out:
            self.stick()
        if self.device_is_out:
            self.device()
        if self.disc_is_full:
            self.frees()
        self.shelf.mend()
        self.program.main_keys('Escape', 'Escape', 'Escape')
        self.program.main_keys('Home', 'Return')
        before = self.program.log_text().count(self.program.PLAYS)
        until = time.monotonic() + 2 * self.SONG_WITHIN
        while self.program.log_text().count(self.program.PLAYS) < before + 2:
            if time.monotonic() > until or self.program.process.poll() is not None:
                self.seen.fault('the list does not go on:\n' + self.program.log_text()[-1500:])
                return
            time.sleep(0.1)
        self.counts['the list went on'] += 1

    def close(self):
        self.goes_on()
        self.quits()
        self.program.quit()

    def told(self):
        for name, count in sorted(self.counts.items()):
            print(f'  {count:4} x {name}')
        print(f'  {self.program.runs} runs, {len(self.shelf.known)} files, longest quit {self.seen.longest_quit * 1000:.0f} ms, '
              f'most memory {self.seen.most_memory / 1024:.0f} MB')
