"""Installs a build into a folder of its own and starts what is there: install_test.py BUILD"""
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
PATIENCE = 120


def run(*words, **more):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, **more)
    assert done.returncode == 0, f"{words}: {done.returncode}\n{done.stdout}{done.stderr}"
    return done.stdout


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="install-")
        cls.root = pathlib.Path(cls.folder.name)
        cls.prefix = cls.root / "prefix"
        run("cmake", "--install", BUILD, "--prefix", cls.prefix)
        cls.home = cls.root / "home"
        (cls.home / "run").mkdir(parents=True, mode=0o700)
        cls.env = {**{k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "VOPLA_"))},
                   "HOME": str(cls.home), "XDG_RUNTIME_DIR": str(cls.home / "run"), "SDL_AUDIODRIVER": "dummy"}

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def share(self, name):
        return self.prefix / "share" / name

    def test_the_command_line(self):
        version = run(self.prefix / "bin/vopla-cli", "--version", env=self.env)
        self.assertRegex(version, r"^Vopla \S+\n$")
        self.assertEqual(run(self.prefix / "bin/vopla", "--version", env=self.env), version)

    def test_the_host_plays_the_demo(self):
        demo = next(self.share("vopla/demo").glob("*.cdg"))
        host = subprocess.Popen([self.prefix / "bin/vopla", "--headless", "--root", self.home / "root", demo], env=self.env,
                                stderr=subprocess.PIPE, text=True)
        try:
            until = time.monotonic() + PATIENCE
            log = self.home / "root/state/Vopla/Vopla Log file.txt"
            while not (log.exists() and "Play has started" in log.read_text(errors="replace")):
                self.assertIsNone(host.poll(), host.poll() is not None and host.stderr.read())
                self.assertLess(time.monotonic(), until, "the demo was not played")
                time.sleep(0.05)
            host.send_signal(signal.SIGTERM)
            self.assertEqual(host.wait(PATIENCE), 0)
        finally:
            host.kill()
            host.communicate()

    def test_the_desktop_finds_it(self):
        run("desktop-file-validate", self.share("applications/org.vopla.Vopla.desktop"))
        run("appstreamcli", "validate", "--no-net", self.share("metainfo/org.vopla.Vopla.metainfo.xml"))
        run("update-mime-database", self.share("mime"))
        self.assertIn("application/x-cdgraphics:*.cdg", self.share("mime/globs").read_text())
        for size in (16, 24, 32, 48, 64, 128, 256, 512):
            icon = self.share(f"icons/hicolor/{size}x{size}/apps/vopla.png").read_bytes()
            self.assertEqual(icon[16:24], size.to_bytes(4, "big") * 2)   # width and height of the PNG
        self.assertTrue(self.share("icons/hicolor/scalable/apps/vopla.svg").exists())

    def test_the_terminal_knows_it(self):
        for program, word in (("vopla", "headless"), ("vopla-cli", "audio autocue FILE")):
            page = run("gzip", "-dc", self.share(f"man/man1/{program}.1.gz"))
            self.assertIn(word, page)
            self.assertNotIn(str(BUILD), page)
        for line, wanted in (("lib", ["library"]), ("library re", ["rebuild", "restore"]), ("audio render x --te", ["--tempo"])):
            words = line.split()
            script = (f"source '{self.share('bash-completion/completions/vopla-cli')}'; "
                      f"COMP_WORDS=('{self.prefix}/bin/vopla-cli' {' '.join(words)}); COMP_CWORD={len(words)}; "
                      "_vopla_cli; printf '%s\\n' \"${COMPREPLY[@]}\"")
            self.assertEqual(run("bash", "-c", script, env=self.env).split(), wanted, line)

    def test_the_package(self):
        run("cpack", "-G", "DEB", "-B", self.root / "deb", "--config", BUILD / "CPackConfig.cmake")
        package = next((self.root / "deb").glob("*.deb"))
        depends = run("dpkg-deb", "-f", package, "Depends")
        for library in ("libc6", "libqt6widgets6", "libavformat", "libsdl2", "libicu"):
            self.assertIn(library, depends)
        run("dpkg-deb", "-x", package, self.root / "unpacked")
        self.assertRegex(run(self.root / "unpacked/usr/bin/vopla-cli", "--version", env=self.env), r"^Vopla ")


if __name__ == "__main__":
    unittest.main()
