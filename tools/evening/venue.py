"""The house: its discs, its sound devices, its display. What the machine cannot give is told and left out."""
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import time

IN_NAMESPACE = 'VOPLA_EVENING_NAMESPACE'


def enter_namespace():
    """Runs the program again where it may mount what nobody else sees."""
    if os.environ.get(IN_NAMESPACE):
        return
    unshare = ['unshare', '-m'] if os.geteuid() == 0 else ['unshare', '-rm']
    if shutil.which('unshare') and subprocess.run([*unshare, 'true'], stderr=subprocess.DEVNULL).returncode == 0:
        os.environ[IN_NAMESPACE] = '1'
        os.execvp('unshare', [*unshare, sys.executable, *sys.argv])


def run(*words, **more):
    return subprocess.run([str(word) for word in words], capture_output=True, text=True, **more)


class Disc:
    """A folder that can go away, come back and be full."""

    def __init__(self, folder, megabytes):
        self.folder, self.megabytes = folder, megabytes
        folder.mkdir()
        self.is_mount = bool(os.environ.get(IN_NAMESPACE)) and self._mount()

    def _mount(self):
        return run('mount', '-t', 'tmpfs', '-o', f'size={self.megabytes}m', 'tmpfs', self.folder).returncode == 0

    def pull_out(self):
        """As a stick that is pulled out: who has a file open keeps it, nobody finds it."""
        if self.is_mount:
            run('umount', '-l', self.folder)
        else:
            shutil.rmtree(self.folder)
            self.folder.mkdir()

    def plug_in(self):
        if self.is_mount:
            self._mount()

    def fill(self):
        """No byte is left; only a disc of its own may be filled."""
        if not self.is_mount:
            return False
        with contextlib.suppress(OSError), open(self.folder / 'filler', 'wb', buffering=0) as out:
            while out.write(bytes(1 << 16)):
                pass
        return True

    def free(self):
        (self.folder / 'filler').unlink(missing_ok=True)

    def close(self):
        if self.is_mount:
            run('umount', '-l', self.folder)


class Devices:
    """Two sound outputs of a PulseAudio of its own, of which one comes and goes."""

    def __init__(self, folder, environment):
        self.environment = dict(environment, PULSE_RUNTIME_PATH=str(folder), HOME=str(folder))
        self.server = self.module = None
        if not (shutil.which('pulseaudio') and shutil.which('pactl')):
            return
        self.server = subprocess.Popen(
            ['pulseaudio', '-n', '--exit-idle-time=-1', '--disallow-exit', '--use-pid-file=no', '-L',
             f'module-native-protocol-unix auth-anonymous=1 socket={folder}/native', '-L', 'module-null-sink sink_name=desk',
             '-L', 'module-always-sink'],
            env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.environment.update(PULSE_SERVER=f'unix:{folder}/native', SDL_AUDIODRIVER='pulseaudio')
        until = time.monotonic() + 10
        while run('pactl', 'info', env=self.environment).returncode != 0:
            if time.monotonic() > until or self.server.poll() is not None:
                self.close()
                return
            time.sleep(0.05)
        self.plug_in()

    def plug_in(self):
        told = run('pactl', 'load-module', 'module-null-sink', 'sink_name=room', env=self.environment)
        self.module = told.stdout.strip() or None
        run('pactl', 'set-default-sink', 'room', env=self.environment)

    def pull_out(self):
        if self.module:
            run('pactl', 'unload-module', self.module, env=self.environment)
            self.module = None

    def close(self):
        if self.server:
            self.server.kill()
            self.server.wait()
        self.server = None


class Venue:
    """All of it, for a block. `environment` is what the program gets."""

    def __init__(self, folder):
        self.folder = folder

    def __enter__(self):
        self.library = Disc(self.folder / 'root', 96)
        self.stick = Disc(self.folder / 'stick', 64)
        self.songs = self.folder / 'songs'
        self.songs.mkdir()
        runtime = self.folder / 'run'
        runtime.mkdir(mode=0o700)
        self.shown, write = os.pipe()     # open until the end: the server may write to it once more
        self.server = subprocess.Popen(['Xvfb', '-displayfd', str(write), '-noreset', '-screen', '0', '1366x768x24'],
                                       pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        display = ':' + os.read(self.shown, 16).decode().strip()
        self.environment = dict(os.environ, DISPLAY=display, QT_QPA_PLATFORM='xcb', XDG_RUNTIME_DIR=str(runtime),
                                SDL_AUDIODRIVER='dummy')
        self.devices = Devices(runtime, self.environment)
        if self.devices.server:
            self.environment = self.devices.environment
        self.discs_told = 'mounts' if self.stick.is_mount else 'folders (nothing can be mounted here)'
        self.sound_told = 'PulseAudio' if self.devices.server else 'none that can go (no PulseAudio here)'
        return self

    def __exit__(self, *_):
        self.devices.close()
        self.server.terminate()
        self.server.wait(10)
        os.close(self.shown)
        for disc in (self.library, self.stick):
            disc.close()
        return False
