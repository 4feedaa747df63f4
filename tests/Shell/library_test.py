#!/usr/bin/env python3
"""library_test.py VOPLA: the program without a window on a library of its own, started and ended as a machine that boots
and shuts down does it. What the library holds afterwards is told by another program, library_witness.py.
"""
import hashlib
import os
import signal
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
WITNESS = os.path.join(HERE, "../Storage/library_witness.py")
MAKE_LIBRARY = os.path.join(HERE, "../../tools/make_library")
SONGS = 500


class Host:
    """The program on a root; its log is what can be seen of it."""

    def __init__(self, vopla, root):
        self.command = [vopla, "--headless", "--root", root]
        self.library = os.path.join(root, "Music/Vopla")
        self.log = os.path.join(root, "state/Vopla/Vopla Log file.txt")

    def log_text(self):
        try:
            with open(self.log, encoding="utf-8", errors="replace") as text:
                return text.read()
        except FileNotFoundError:
            return ""

    def run(self, *files, until="Ready!", seconds=None):
        """Starts it, and ends it once the log has `until`, or after some seconds; how it ended."""
        if os.path.exists(self.log):
            os.remove(self.log)
        process = subprocess.Popen(self.command + list(files), stderr=subprocess.DEVNULL)
        began = time.monotonic()
        while until not in self.log_text() if seconds is None else time.monotonic() - began < seconds:
            assert process.poll() is None, f"ended by itself: {process.returncode}\n{self.log_text()[-2000:]}"
            assert time.monotonic() - began < 120, f"no {until!r} in the log\n{self.log_text()[-2000:]}"
            time.sleep(0.02)
        process.send_signal(signal.SIGTERM)
        return process.wait(120)

    def songs(self):
        """Id and name of all, as the other program reads them."""
        told = subprocess.run([sys.executable, WITNESS, "library", self.library], check=True, capture_output=True)
        lines = told.stdout.decode("utf-8", "surrogateescape").splitlines()
        return {line.split(" ")[1]: line.split(" ", 2)[2] for line in lines if line.startswith("song ")}

    def bytes_of_all(self):
        sums = {}
        for folder, _, names in os.walk(self.library):
            for name in names:
                if not name.startswith("~"):
                    with open(os.path.join(folder, name), "rb") as file:
                        sums[os.path.join(folder, name)] = hashlib.sha256(file.read()).hexdigest()
        return sums


def sound(folder, title):
    file = os.path.join(folder, f"Anna - {title}.mp3")
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=440:duration=1", file], check=True)
    return file


def main(vopla):
    with tempfile.TemporaryDirectory() as root:
        host = Host(vopla, root)
        assert host.run(sound(root, "First")) == 0
        assert list(host.songs().values()) == ["First"], "a library that begins with a file of the command line"
        assert "Quit Successful" in host.log_text()

    with tempfile.TemporaryDirectory() as root:
        host = Host(vopla, root)
        subprocess.run([sys.executable, MAKE_LIBRARY, str(SONGS), host.library], check=True)
        made, files = host.songs(), host.bytes_of_all()
        assert len(made) == SONGS
        assert host.run() == 0
        assert host.bytes_of_all() == files, "nothing was changed, and something was written"

        assert host.run(sound(root, "Kept")) == 0
        assert {**made, **host.songs()} == host.songs() and "Kept" in host.songs().values()

        for seconds in (0.0, 0.1, 0.3):   # whatever it is at; before it hears the signal, that ends it
            ended = host.run(sound(root, f"After {seconds}"), seconds=seconds)
            assert ended in (0, -signal.SIGTERM), ended
            assert {**made, **host.songs()} == host.songs(), f"songs are missing after an end at {seconds} s"


if __name__ == "__main__":
    main(sys.argv[1])
