#!/usr/bin/python3
"""The show goes on whatever is open: the real program on an X server of its own, its sound in a file. Usage: show_test.py VOPLA"""
import os
import shutil
import subprocess
import sys
import tempfile
import time

from displays_test import SKIPPED, Desktop
from xserver import x_server

DEMO = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../resources/demo/Vopla Demo - Amazing Grace.cdg")
TAIL = 44100   # bytes: a quarter of a second


class Show(Desktop):
    def __init__(self, vopla, root, env):
        self.sound = os.path.join(root, "sound.raw")
        super().__init__(vopla, root, dict(env, SDL_AUDIODRIVER="disk", SDL_DISKAUDIOFILE=self.sound), DEMO)

    def wait(self, what, holds):
        until = time.monotonic() + 60
        while not holds():
            if time.monotonic() > until or self.process.poll() is not None:
                sys.exit(f"{what}: it did not come")
            time.sleep(0.05)

    def is_heard(self, ahead=TAIL):
        """What is written behind the next `ahead` bytes has sound in it."""
        began = os.path.getsize(self.sound) if os.path.exists(self.sound) else 0
        self.wait("sound", lambda: os.path.exists(self.sound) and os.path.getsize(self.sound) >= began + ahead)
        with open(self.sound, "rb") as file:
            file.seek(-TAIL // 4 * 4, os.SEEK_END)
            return any(file.read())

    def find(self, name):
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", name], env=self.env, capture_output=True,
                              text=True).stdout.split()

    def keys(self, window, *keys):
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", *keys], env=self.env, check=True)


def main():
    if not all(shutil.which(tool) for tool in ("Xvfb", "xdotool")):
        return SKIPPED
    with tempfile.TemporaryDirectory() as root, x_server("1366x768x24", root) as env:
        show = Show(sys.argv[1], root, env)
        show.wait("the window", lambda: show.find("Amazing Grace"))   # it has the song's name: it plays
        browser = show.find("Amazing Grace")[0]
        show.wait("the start", show.is_heard)
        # A name that is typed in the table is looked for: no letter of it mutes, detunes or stops the song.
        show.keys(browser, *"amazing", "space", "0", "v")
        if not show.is_heard(8 * TAIL):   # blocks that were queued before have been heard by then
            sys.exit("typing in the table has stopped the song")
        show.keys(browser, "Escape")
        for key, dialog in (("question", "^Keyboard Shortcuts"), ("ctrl+comma", "^Preferences"), ("ctrl+o", "^Add Files")):
            show.keys(browser, key)
            show.wait(dialog, lambda: show.find(dialog))
            window = show.find(dialog)[0]
            for pause in ("space", "ctrl+m"):
                if dialog == "^Add Files" and pause == "space":   # a file's name is typed there
                    continue
                show.keys(window, pause)
                show.wait(f"silence by {pause} under {dialog}", lambda: not show.is_heard())
                show.keys(window, pause)
                show.wait(f"sound by {pause} under {dialog}", show.is_heard)
            show.keys(window, "Escape")
            show.wait(f"the end of {dialog}", lambda: not show.find(dialog))
        show.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
