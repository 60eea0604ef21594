# SPDX-License-Identifier: MIT
"""Threads: long calls let others run, and packages do not get mixed up."""
import concurrent.futures
import os
import sys
import threading
import time

import pytest
from conftest import FILES, KIT, make, python

import kraddon


@pytest.fixture
def ticks():
    """Counts as long as another thread can run. Since the interpreter switches threads only when
    one lets go, it stands still during a call that does not."""
    counter = [0]
    ends = threading.Event()

    def tick():
        while not ends.is_set():
            counter[0] += 1
            time.sleep(0)

    old = sys.getswitchinterval()
    thread = threading.Thread(target=tick)
    thread.start()
    sys.setswitchinterval(1000)
    yield counter
    sys.setswitchinterval(old)
    ends.set()
    thread.join()


def long_calls(tmp_path):
    path = make(tmp_path / "p.kraddon", {**FILES, "big.bin": os.urandom(1 << 18)})
    project = tmp_path / "project"
    project.mkdir()
    (project / "a.m").write_text("a")
    (project / "kraddon.toml").write_text('[package]\nname = "x"\nversion = "1"\n')
    package = kraddon.open(path)

    def change():
        opened = kraddon.open(path.with_name("c.kraddon"), "w")
        opened.add_bytes(b"x", "x")
        opened.close()

    return {
        "open": lambda: kraddon.open(path).discard(),
        "read": lambda: package.read("big.bin"),
        "readinto": lambda: package.readinto("big.bin", bytearray(1 << 18)),
        "stream": lambda: (package.files / "big.bin").open("rb").read(),
        "digest": package.digest,
        "close": change,
        "verify": lambda: kraddon.verify(path),
        "build": lambda: kraddon.build(project, output=tmp_path / "b.kraddon"),
        "create": lambda: kraddon.create(tmp_path / "n.kraddon", KIT, name="x", force=True),
        "extract": lambda: package.extract_all(tmp_path / "out", overwrite=True),
        "diff": lambda: kraddon.diff(path, path),
        "preview": lambda: kraddon.preview(path),
    }


@pytest.mark.parametrize("name", ["open", "read", "readinto", "stream", "digest", "close", "verify",
                                  "build", "create", "extract", "diff", "preview"])
def test_another_thread_makes_progress_during_a_long_call(tmp_path, ticks, name):
    call = long_calls(tmp_path)[name]
    # How soon the other thread wakes up is for the system to say.
    while True:
        before = ticks[0]
        call()
        if ticks[0] != before:
            break


def test_threads_may_share_a_package(package):
    with kraddon.open(package) as opened:
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            names = [name for name in FILES for _ in range(200)]
            for name, content in zip(names, pool.map(opened.read, names)):
                assert content == FILES[name]


def test_threads_may_use_packages_of_their_own(tmp_path):
    def work(number):
        path = make(tmp_path / f"{number}.kraddon", {"a.m": b"%d" % number})
        with kraddon.open(path, "a") as opened:
            opened.license = kraddon.License(type="MIT", text=str(number))
        with kraddon.open(path) as opened:
            return opened.license.text, opened.read("a.m"), len(kraddon.verify(path))

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        for number, found in enumerate(pool.map(work, range(60))):
            assert found[:2] == (str(number), b"%d" % number)


def test_a_package_may_be_closed_by_another_thread(package):
    opened = kraddon.open(package)
    results = []

    def read():
        try:
            while True:
                results.append(opened.read("lib/b.m") == FILES["lib/b.m"])
        except ValueError:
            pass

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    while len(results) < 100:
        time.sleep(0)
    opened.close()
    for thread in threads:
        thread.join()
    assert all(results)


def in_threads(count, work):
    """Runs work(number) in threads that begin together, and returns their results."""
    start = threading.Barrier(count)

    def run(number):
        start.wait()
        return work(number)

    with concurrent.futures.ThreadPoolExecutor(count) as pool:
        return list(pool.map(run, range(count)))


def test_of_threads_that_move_the_same_file_one_succeeds_and_the_package_can_be_closed(package):
    opened = kraddon.open(package, "a")

    def move(source, number):
        try:
            opened.move(source, f"{source}.{number}")
        except FileNotFoundError:
            return None
        return f"{source}.{number}"

    name = "a.m"
    for _ in range(100):
        moved = in_threads(4, lambda number: move(name, number))
        name, = filter(None, moved)
    opened.close()
    with kraddon.open(package) as opened:
        assert opened.read(name) == FILES["a.m"]


def test_of_threads_that_move_files_to_the_same_path_one_succeeds(package):
    opened = kraddon.open(package, "a")

    def move(number):
        opened.add_bytes(b"x", f"from{number}")
        try:
            opened.move(f"from{number}", "to")
        except FileExistsError as error:
            opened.remove(f"from{number}")
            assert error.part == "to"
            return 0
        return 1

    for _ in range(100):
        assert sum(in_threads(4, move)) == 1
        opened.remove("to")
    opened.close()


def test_a_package_may_be_closed_while_other_threads_open_streams(package):
    def read(number):
        if number == 0:
            opened.close()
            return
        try:
            while True:
                assert opened._native.open("lib/b.m").readinto(bytearray(4000)) == 4000
        except ValueError:
            pass

    for _ in range(100):
        opened = kraddon.open(package)
        in_threads(4, read)


def test_a_stream_may_end_during_a_call(package, tmp_path):
    script = ("import sys, kraddon\n"
              "with kraddon.open(sys.argv[1]) as package:\n"
              "    streams = [(package.files / 'a.m').open('rb')]\n"
              "    package.extract_all(sys.argv[2], progress=lambda done, total: streams.clear())\n"
              "    assert not streams and package.read('a.m')\n")
    done = python(script, package, tmp_path / "out", timeout=60)
    assert done.returncode == 0, done.stderr


def test_a_thread_needs_no_large_stack(package, tmp_path):
    old = threading.stack_size(256 << 10)
    try:
        with concurrent.futures.ThreadPoolExecutor(1) as pool:
            assert pool.submit(kraddon.verify, package).result() == kraddon.verify(package)
            assert pool.submit(kraddon.preview, package).result() == kraddon.preview(package)
            pool.submit(kraddon.create, tmp_path / "n.kraddon", KIT, name="x").result()
    finally:
        threading.stack_size(old)


def test_an_interrupt_ends_a_long_call(tmp_path):
    import subprocess
    script = ("import sys, os, signal, kraddon\n"
              "def progress(done, total): os.kill(os.getpid(), signal.SIGINT)\n"
              "try:\n    kraddon.create(sys.argv[1], sys.argv[2], name='x', progress=progress)\n"
              "except KeyboardInterrupt:\n    sys.exit(7)\n")
    done = subprocess.run([sys.executable, "-B", "-c", script, tmp_path / "p.kraddon", KIT],
                          check=False)
    assert done.returncode == 7 and not os.listdir(tmp_path)
