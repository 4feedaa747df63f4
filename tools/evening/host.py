"""The program as an operator has it: its keys, its log, its end."""
import json
import signal
import subprocess
import time


class Host:
    STARTED, PLAYS, ENDS = 'Ready!', 'Play started for', 'Quit Successful'

    def __init__(self, vopla, cli, place):
        self.vopla, self.cli, self.place = vopla, cli, place
        self.root = place.library.folder
        self.log = self.root / 'state/Vopla/Vopla Log file.txt'
        self.errors = place.folder / 'errors.txt'
        self.process = self.window = None
        self.log_from = 0     # where the log of this run begins
        self.runs = 0

    def log_text(self):
        """What this run has told so far."""
        try:
            data = self.log.read_bytes()
        except FileNotFoundError:
            return ''
        return data[self.log_from if self.log_from <= len(data) else 0:].decode(errors='replace')

    def wait_for(self, words, seconds=60):
        """True once the log has the words; a slow machine gets its time."""
        until = time.monotonic() + seconds
        while words not in self.log_text():
            if self.process.poll() is not None or time.monotonic() > until:
                return False
            time.sleep(0.02)
        return True

    def start(self, files=()):
        self.log_from = self.log.stat().st_size if self.log.exists() else 0
        self.runs += 1
        with open(self.errors, 'ab') as errors:
            self.process = subprocess.Popen([self.vopla, '--root', self.root, *files], env=self.place.environment, stderr=errors)
        found = self.wait_for(self.STARTED) and self._find_window()
        if not found:
            raise RuntimeError(f'the program did not start ({self.process.poll()}):\n{self.log_text()[-3000:]}')

    def _find_window(self):
        until = time.monotonic() + 60
        while time.monotonic() < until:
            told = self._x('search', '--onlyvisible', '--name', r'^Vopla( —| -|$)').split()
            if told:
                self.window = told[0]
                return True
            time.sleep(0.05)
        return False

    def _x(self, *words):
        return subprocess.run(['xdotool', *words], env=self.place.environment, capture_output=True, text=True).stdout

    def keys(self, *names):
        """Into whatever window has the focus, as an operator's hand does; the main window gets it when none has."""
        if not self._x('getwindowfocus').strip().isdigit() or self._x('getwindowfocus').strip() == '1':
            self._x('windowfocus', '--sync', self.window)
        self._x('key', '--delay', '30', *names)

    def main_keys(self, *names):
        self._x('windowfocus', '--sync', self.window)
        self._x('key', '--delay', '30', *names)

    def type_text(self, text):
        self._x('type', '--delay', '20', text)

    def hand_over(self, files):
        """A second start with files: they go to the program that runs. True when they were taken."""
        with open(self.errors, 'ab') as errors:
            return subprocess.run([self.vopla, '--root', self.root, *files], env=self.place.environment, stderr=errors,
                                  timeout=60).returncode == 0

    def quit(self, seconds=30):
        """By a signal; the status and how long it took."""
        began = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        try:
            status = self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.kill()
            status = 'none'
        return status, time.monotonic() - began

    def kill(self):
        self.process.kill()
        self.process.wait()

    def end(self):
        if self.process and self.process.poll() is None:
            self.kill()

    def ask(self, *words):
        """vopla-cli on the library: its lines of JSON, and how it ended."""
        told = subprocess.run([self.cli, '--root', self.root, '--json', *words], env=self.place.environment, capture_output=True,
                              text=True)
        rows = []
        for line in told.stdout.splitlines():
            try:
                rows.append(json.loads(line))
            except ValueError:
                rows.append({'unreadable': line})
        return rows, told.returncode, told.stderr

    def memory(self):
        with open(f'/proc/{self.process.pid}/status', encoding='ascii') as status:
            return next(int(line.split()[1]) for line in status if line.startswith('VmRSS'))
