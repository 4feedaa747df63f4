"""An X server of a test's own."""
import contextlib
import os
import subprocess


@contextlib.contextmanager
def x_server(screen, root):
    """Gives the environment of programs that are to be seen on it; it ends with the block. Their runtime folder is `root`."""
    shown, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-noreset", "-screen", "0", screen], pass_fds=[write],
                              stderr=subprocess.DEVNULL)
    try:
        os.close(write)
        display = ":" + os.read(shown, 16).decode().strip()
        yield dict(os.environ, DISPLAY=display, QT_QPA_PLATFORM="xcb", XDG_RUNTIME_DIR=root, SDL_AUDIODRIVER="dummy")
    finally:
        os.close(shown)
        server.terminate()
        server.wait(120)
