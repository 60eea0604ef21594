# SPDX-License-Identifier: MIT
"""The progress bar, on a terminal."""

import fcntl
import os
import re
import select
import signal
import struct
import subprocess
import termios
import time

import kraddontest
from kraddontest import KRADDON

LINE = re.compile(rb"\r\d+ of \d+ files, [\d.]+ k?M?G?B of [\d.]+ [kMG]B, [\d.]+ k?M?G?B/s, "
                  rb"[\d:]+ (s|min) left\x1b\[K")
WIPED = b"\r\x1b[K"
SIZE = 1 << 28  # of a file without blocks: long work without much to read


class Run:
    """The program with a terminal for its standard error."""

    def __init__(self, test, words, columns=0, env=None):
        self.master, slave = test.open_terminal()
        test.addCleanup(os.close, self.master)
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("4H", 24, columns, 0, 0))
        self.shown = b""
        self.process = subprocess.Popen([KRADDON, *words], cwd=test.folder, stderr=slave,
                                        stdout=subprocess.DEVNULL, env=test.environment(env))
        os.close(slave)
        test.addCleanup(self.process.wait)

    def is_running(self):
        return self.process.poll() is None

    def pause_when(self, is_time):
        """Stops it in the midst of its work, for longer than the bar waits: however fast the
        machine is, the work then takes long."""
        deadline = time.monotonic() + 60
        while not is_time() and self.is_running() and time.monotonic() < deadline:
            time.sleep(0.001)
        self.process.send_signal(signal.SIGSTOP)
        time.sleep(0.7)
        self.process.send_signal(signal.SIGCONT)

    def read(self, until=None):
        """What is shown, up to the end or up to a pattern."""
        while until is None or not until.search(self.shown):
            ready, _, _ = select.select([self.master], [], [], 100)
            try:
                chunk = os.read(self.master, 4096) if ready else b""
            except OSError:  # the other side is closed
                chunk = b""
            if not chunk:
                break
            self.shown += chunk
        return self.shown


class Progress(kraddontest.CliTest):
    def setUp(self):
        super().setUp()
        self.path("src").mkdir()
        with open(self.path("src/big.bin"), "wb") as file:
            file.truncate(SIZE)

    def big_package(self):
        self.ok("create", "p.kraddon", "src", "--name", "x", "--level", "1")

    def has_open(self, run, name):
        folder = f"/proc/{run.process.pid}/fd"
        try:
            return any(os.readlink(f"{folder}/{fd}").endswith(name) for fd in os.listdir(folder))
        except OSError:  # it has ended, or closed one meanwhile
            return False

    def has_worked(self, run):
        """Whether it has been busy for a while: reading what it needs first takes less."""
        with open(f"/proc/{run.process.pid}/stat") as file:
            times = file.read().rpartition(")")[2].split()[11:13]
        return sum(map(int, times)) * 1000 / os.sysconf("SC_CLK_TCK") >= 60

    def run_slowly(self, *words, at):
        run = Run(self, words)
        run.pause_when(lambda: at(run))
        return run

    def create(self, *words):
        return self.run_slowly("create", "p.kraddon", "src", "--name", "x", *words,
                               at=lambda run: self.is_writing(run.process))

    def assert_shown(self, run, after=b"", counts_files=True):
        shown = run.read()
        if counts_files:
            self.assertEqual(set(re.findall(rb"of (\d+) files", shown)), {b"1"})
        self.assertEqual(run.process.wait(), 0, shown)
        self.assertRegex(shown, LINE)
        self.assertEqual(LINE.sub(b"", shown), WIPED + after)

    def test_create_shows_it_and_wipes_it(self):
        self.assert_shown(self.create())

    def test_extract_shows_it_and_wipes_it(self):
        self.big_package()
        self.assert_shown(self.run_slowly(
            "extract", "p.kraddon", "-d", "out", at=lambda run: self.path("out").exists()))

    @kraddontest.needs_proc
    def test_verify_shows_it_and_wipes_it(self):
        self.big_package()
        run = self.run_slowly("verify", "--opc", "p.kraddon",
                              at=lambda run: self.has_open(run, "p.kraddon"))
        self.assert_shown(run, b"p.kraddon: 0 errors, 1 warning\r\n",  # of a file that packs so well
                          counts_files=False)

    @kraddontest.needs_proc
    def test_verify_of_an_add_on_counts_its_files(self):
        self.big_package()
        run = self.run_slowly("verify", "p.kraddon",
                              at=lambda run: self.has_open(run, "p.kraddon"))
        shown = run.read()
        self.assertEqual(run.process.wait(), 0, shown)
        self.assertEqual(set(re.findall(rb"of (\d+) files", shown)), {b"1"})

    def test_add_shows_it_and_wipes_it(self):
        self.ok("create", "p.kraddon", "--name", "x")
        self.assert_shown(self.run_slowly(
            "add", "p.kraddon", "src", "--color", "never", at=lambda run: self.is_writing(run.process)),
            after=b"p.kraddon: warning KR510: src/big.bin: the file has %d bytes, more than 10 "
                  b"MiB\r\n" % self.path("src/big.bin").stat().st_size)

    @kraddontest.needs_proc
    def test_info_shows_it_and_wipes_it(self):
        self.big_package()
        self.assert_shown(self.run_slowly(
            "info", "p.kraddon", "--digest", at=self.has_worked))

    @kraddontest.needs_proc
    def test_list_shows_it_while_it_hashes(self):
        self.big_package()
        self.assert_shown(self.run_slowly("list", "p.kraddon", "--hash", at=self.has_worked))

    def test_build_shows_it_and_wipes_it(self):
        self.write("src/kraddon.toml", '[package]\nname = "x"\nversion = "1"\n')
        run = self.run_slowly("build", "src", "-o", "p.kraddon",
                              at=lambda run: self.is_writing(run.process))
        shown = run.read()
        self.assertEqual(run.process.wait(), 0, shown)
        self.assertRegex(shown, LINE)
        self.assertEqual(len(LINE.findall(shown.rpartition(WIPED)[2])), 0)

    def test_it_is_cut_to_the_width_of_the_terminal(self):
        run = Run(self, ["create", "p.kraddon", "src", "--name", "x"], columns=20)
        run.pause_when(lambda: self.is_writing(run.process))

        bars = [bar for bar in run.read().split(b"\r") if bar not in (b"", b"\x1b[K")]

        self.assertEqual(run.process.wait(), 0)
        self.assertTrue(bars)
        for bar in bars:
            self.assertRegex(bar, rb"\A[01] of 1 files, .{5}\x1b\[K\Z")

    def test_a_dumb_terminal_shows_none(self):
        run = Run(self, ["create", "p.kraddon", "src", "--name", "x"], env={"TERM": "dumb"})
        run.pause_when(lambda: self.is_writing(run.process))
        self.assertEqual(run.read(), b"")
        self.assertEqual(run.process.wait(), 0)

    def test_quiet_shows_none(self):
        run = self.create("-q")
        self.assertEqual(run.read(), b"")
        self.assertEqual(run.process.wait(), 0)

    def test_without_a_terminal_there_is_none(self):
        self.big_package()
        result = self.run_kraddon("verify", "--opc", "p.kraddon")
        self.assertEqual(result.errors, "p.kraddon: 0 errors, 1 warning\n")
        self.ok("extract", "p.kraddon")

    def test_short_work_shows_none(self):
        self.path("src/big.bin").unlink()
        run = Run(self, ["create", "p.kraddon", "src", "--name", "x"])
        self.assertEqual(run.read(), b"")

    def assert_interrupted(self, run, number):
        run.read(until=LINE)
        run.process.send_signal(number)
        shown = run.read()
        self.assertEqual(run.process.wait(), -number, shown)
        self.assertTrue(shown.endswith(WIPED), shown[-200:])

    def test_an_interrupt_wipes_it_and_cleans_up(self):
        self.assert_interrupted(self.create(), signal.SIGINT)
        self.assertEqual(self.names(), ["src"])

    @kraddontest.needs_proc
    def test_an_interrupt_wipes_it_where_nothing_is_written(self):
        self.big_package()
        run = self.run_slowly("verify", "--opc", "p.kraddon",
                              at=lambda run: self.has_open(run, "p.kraddon"))
        self.assert_interrupted(run, signal.SIGTERM)

    def test_an_interrupt_of_extract_wipes_it_and_cleans_up(self):
        self.big_package()
        run = self.run_slowly("extract", "p.kraddon", "-d", "out",
                              at=lambda run: self.path("out").exists())
        self.assert_interrupted(run, signal.SIGINT)
        self.assertFalse(self.path("out").exists())


if __name__ == "__main__":
    kraddontest.main()
