#!/usr/bin/python3
"""The video window drawn by OpenGL (in this test by a renderer without a card) shows what it shows without; and where there is no
OpenGL it shows the same. On an X server of its own. Usage: card_test.py VOPLA"""
import os
import plistlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from PIL import Image, ImageChops, ImageStat

from xserver import x_server

SKIPPED = 77
DRAWING = "Video Drawing (0=automatic, 1=processor, 2=OpenGL)"
CASES = (   # the choice, what the environment adds, what the log must say
    (1, {}, "drawn by the processor (chosen)"),
    (2, {}, "drawn by OpenGL ("),
    (2, {"QT_XCB_GL_INTEGRATION": "none"}, "drawn by the processor (there is no OpenGL)"),
)


def wait_for(what, ask):
    until = time.monotonic() + 120
    while time.monotonic() < until:
        found = ask()
        if found:
            return found
        time.sleep(0.1)
    sys.exit(f"never came: {what}")


def photograph(vopla, root, picture, choice, env, logged):
    """What the window shows once it stays the same, and is not empty."""
    home = os.path.join(root, f"home{choice}{len(env)}")
    os.makedirs(os.path.join(home, "config", "Vopla"))
    with open(os.path.join(home, "config", "Vopla", "Vopla X Preferences.plist"), "wb") as out:
        plistlib.dump({DRAWING: choice, "Break Picture": picture, "Video Window Visible": True,   # beside the main window
                       "Video Window Rectangle": dict(top=40, left=1500, bottom=540, right=2203)}, out)
    process = subprocess.Popen([vopla, "--root", home], env=env, stderr=subprocess.DEVNULL)
    file = os.path.join(root, "seen.png")

    def window():
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", r"^Vopla Video( —| -|$)"], env=env,
                              capture_output=True, text=True).stdout.split()

    def picture_there():
        subprocess.run(["import", "-window", found[0], file], env=env, check=True)
        seen = Image.open(file).convert("RGB")
        return seen if max(ImageStat.Stat(seen).stddev) > 20 else None

    found = wait_for("the video window", window)
    seen = wait_for("a picture", picture_there)
    process.send_signal(signal.SIGTERM)
    if process.wait(120) != 0:
        sys.exit("it did not quit well")
    with open(os.path.join(home, "state", "Vopla", "Vopla Log file.txt"), errors="replace") as log:
        if logged not in log.read():
            sys.exit(f"the log does not say: {logged}")
    return seen


def main():
    if not all(shutil.which(tool) for tool in ("Xvfb", "xdotool", "import")):
        return SKIPPED
    with tempfile.TemporaryDirectory() as root:
        picture = os.path.join(root, "break.png")
        colours = random.Random(7)
        cells = Image.new("RGB", (16, 9))
        cells.putdata([tuple(colours.randrange(256) for _ in range(3)) for _ in range(16 * 9)])
        cells.resize((320, 180), Image.Resampling.NEAREST).save(picture)
        with x_server("2400x900x24", root) as env:
            seen = [photograph(sys.argv[1], root, picture, choice, {**env, **more}, logged)
                    for choice, more, logged in CASES]
    for other in seen[1:]:
        if other.size != seen[0].size:
            sys.exit(f"{other.size} instead of {seen[0].size}")
        # The edges of cells are mixed a little differently.
        furthest = max(ImageStat.Stat(ImageChops.difference(seen[0], other)).mean)
        if furthest > 2:
            sys.exit(f"the pictures differ by {furthest} of 255 in the mean")
    return 0


if __name__ == "__main__":
    sys.exit(main())
