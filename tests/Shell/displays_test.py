#!/usr/bin/python3
"""The desktop over displays that come and go, on an X server of its own: full screen on the display that was chosen, a window
on what is left when it is unplugged, and back when it returns, also over a new start. Usage: displays_test.py VOPLA"""
import os
import plistlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from xserver import x_server

SKIPPED = 77
RIGHT = ["xrandr", "--setmonitor", "right", "1024/270x768/203+1280+0", "none"]
WINDOW = (1400, 100, 500, 400)   # on the right display: left, top, width, height
FULL = (1280, 0, 1024, 768)


class Desktop:
    def __init__(self, vopla, root, env, *files):
        self.root, self.env = root, env
        self.process = subprocess.Popen([vopla, "--root", root, *files], env=env, stderr=subprocess.DEVNULL)

    def place(self):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", r"^Vopla Video( —| -|$)"], env=self.env,
                               capture_output=True, text=True).stdout.split()
        if not found:
            return None
        words = subprocess.run(["xwininfo", "-id", found[0]], env=self.env, capture_output=True, text=True).stdout
        keys = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        return tuple(int(re.search(key + r":\s+(-?\d+)", words)[1]) for key in keys)

    def expect(self, what, holds):
        """The window may take its time, but not for ever."""
        until = time.monotonic() + 120
        while time.monotonic() < until:
            place = self.place()
            if place is not None and holds(place):
                return
            time.sleep(0.05)
        sys.exit(f"{what}: the window stands at {self.place()}")

    def toggle(self):
        """A key in the main window shows the other, or hides it, with nothing else that would wake the program."""
        before = self.place() is not None
        browser = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", r"^Vopla( —| -|$)"], env=self.env,
                                 capture_output=True, text=True, check=True).stdout.split()[0]
        subprocess.run(["xdotool", "windowfocus", "--sync", browser, "key", "ctrl+1"], env=self.env, check=True)
        until = time.monotonic() + 120
        while (self.place() is not None) == before:
            if time.monotonic() > until:
                sys.exit("a key was not heard")
            time.sleep(0.05)

    def press(self, key):
        """In the video window itself."""
        window = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", r"^Vopla Video( —| -|$)"], env=self.env,
                                capture_output=True, text=True, check=True).stdout.split()[0]
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", key], env=self.env, check=True)

    def quit(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(120)


def on_the_left(place):
    return place[2:] == WINDOW[2:] and place[0] + place[2] <= 1280


def main():
    tools = ("Xvfb", "xrandr", "xdotool", "xwininfo")
    if not all(shutil.which(tool) for tool in tools):
        return SKIPPED
    with tempfile.TemporaryDirectory() as root:
        with x_server("2304x800x24", root) as env:
            xrandr = lambda *words: subprocess.run(words, env=env, check=True, capture_output=True)
            xrandr("xrandr", "--setmonitor", "left", "1280/338x800/211+0+0", "screen")
            xrandr(*RIGHT)
            left, top, width, height = WINDOW
            prefs = {"Full Screen": True, "Full Screen Display": "right", "Video Window Visible": True,
                     "Video Window Rectangle": dict(top=top, left=left, bottom=top + height, right=left + width)}
            file = os.path.join(root, "config", "Vopla", "Vopla X Preferences.plist")
            os.makedirs(os.path.dirname(file))
            with open(file, "wb") as out:
                plistlib.dump(prefs, out)

            desktop = Desktop(sys.argv[1], root, env)
            desktop.expect("at the start", lambda place: place == FULL)
            xrandr("xrandr", "--delmonitor", "right")
            desktop.expect("unplugged", on_the_left)
            xrandr(*RIGHT)
            desktop.expect("plugged in again", lambda place: place == FULL)
            xrandr("xrandr", "--delmonitor", "right")
            desktop.expect("unplugged again", on_the_left)
            desktop.quit()
            with open(file, "rb") as saved:
                kept = plistlib.load(saved)
            for key, value in prefs.items():
                if kept[key] != value:
                    sys.exit(f"{key} is kept as {kept[key]}")

            desktop = Desktop(sys.argv[1], root, env)
            desktop.expect("a start without it", on_the_left)
            xrandr(*RIGHT)
            desktop.expect("there at last", lambda place: place == FULL)
            for _ in range(10):
                desktop.toggle()
            desktop.press("Escape")
            desktop.expect("after Escape", lambda place: place[2:] == WINDOW[2:])
            desktop.press("f")
            desktop.expect("after F", lambda place: place == FULL)
            desktop.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
