# SPDX-License-Identifier: MIT
"""Many packages in many processes, and in one for a long time."""
import concurrent.futures
import gc
import multiprocessing
import os
import pickle
import shutil
import signal
import threading

import pytest
from conftest import FILES

import kraddon

CYCLES = int(os.environ.get("KRADDON_PYTHON_CYCLES", "3000"))


def memory():
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def count(folder):
    return len(os.listdir(f"/proc/self/{folder}"))


def cycle(path):
    with kraddon.open(path) as package:
        package.namelist()
        package.read("a.m")
        assert package.license
    try:
        kraddon.open(str(path) + "x")
    except FileNotFoundError:
        pass


def test_opening_and_closing_leaves_nothing_behind(package):
    with kraddon.open(package, "a") as opened:
        opened.license = kraddon.License(type="MIT")
    for _ in range(500):
        cycle(package)
    gc.collect()
    before, descriptors, threads = memory(), count("fd"), count("task")
    for _ in range(CYCLES):
        cycle(package)
    gc.collect()
    assert count("fd") == descriptors and count("task") == threads
    # A leak of 200 bytes a cycle would be more, in the long run of scripts/test-long at least.
    assert memory() - before < max(1 << 20, 200 * CYCLES // 10)


def test_packages_that_are_not_closed_leave_nothing_behind(package):
    before = count("fd")
    for _ in range(300):
        opened = kraddon.open(package, "a")
        opened.add_bytes(b"x", "x")
        stream = (opened.files / "a.m").open("rb")
        stream.read(1)
    del opened, stream
    gc.collect()
    assert count("fd") == before


def test_no_thread_is_left_after_a_call(package, tmp_path):
    before = count("task")
    kraddon.create(tmp_path / "n.kraddon", tmp_path.parent, name="x", exclude=["*.kraddon"])
    kraddon.verify(package)
    with kraddon.open(package) as opened:
        opened.extract_all(tmp_path / "out")
    assert count("task") == before


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_a_pool_of_processes_verifies_packages(package, tmp_path, method):
    paths = [shutil.copy(package, tmp_path / f"{number}.kraddon") for number in range(20)]
    paths.append(tmp_path / "missing.kraddon")
    kraddon.verify(package)  # everything is in use before the fork
    context = multiprocessing.get_context(method)
    with concurrent.futures.ProcessPoolExecutor(2, mp_context=context) as pool:
        jobs = [pool.submit(kraddon.verify, path) for path in paths]
        for job in jobs[:-1]:
            assert job.result() == kraddon.verify(package)
        assert isinstance(jobs[-1].exception(), FileNotFoundError)
        assert isinstance(jobs[-1].exception(), kraddon.Error)


def test_a_fork_may_go_on_reading(package):
    with kraddon.open(package) as opened:
        stream = (opened.files / "lib/b.m").open("rb")
        stream.read(10)
        child = os.fork()
        if child == 0:
            good = opened.read("a.m") == FILES["a.m"] and stream.read() == FILES["lib/b.m"][10:]
            os._exit(0 if good else 1)
        assert os.waitpid(child, 0)[1] == 0
        assert stream.read() == FILES["lib/b.m"][10:]


# The sanitizers' allocator keeps a lock of another thread through a fork.
@pytest.mark.skipif("LD_PRELOAD" in os.environ, reason="needs an allocator that may be forked")
def test_a_fork_during_calls_of_other_threads_leaves_a_module_that_works(package):
    expected = kraddon.verify(package)
    ends = threading.Event()

    def work():
        while not ends.is_set():
            kraddon.verify(package)

    threads = [threading.Thread(target=work) for _ in range(3)]
    for thread in threads:
        thread.start()
    try:
        for _ in range(30):
            child = os.fork()
            if child == 0:
                signal.alarm(60)
                os._exit(0 if kraddon.verify(package) == expected and count("task") <= 2 else 1)
            assert os.waitpid(child, 0)[1] == 0
    finally:
        ends.set()
        for thread in threads:
            thread.join()


def test_paths_in_a_package_that_is_only_read_can_be_pickled(package, monkeypatch):
    monkeypatch.chdir(package.parent)
    with kraddon.open(package.name) as opened:
        content = pickle.dumps(list((opened.files / "lib").iterdir()))
        monkeypatch.chdir("/")
        copies = pickle.loads(content)
        assert [str(one) for one in copies] == ["lib/b.m", "lib/deep"]
    assert copies[0].read_bytes() == FILES["lib/b.m"]
    with kraddon.open(package, "a") as opened, pytest.raises(TypeError):
        pickle.dumps(opened.files)
    package.unlink()
    with pytest.raises(FileNotFoundError):
        pickle.loads(content)


def test_a_fork_does_not_commit_what_its_parent_changes(package):
    before = package.read_bytes()
    opened = kraddon.open(package, "a")
    opened.add_bytes(b"x", "x")
    child = os.fork()
    if child == 0:
        del opened
        os._exit(0)
    os.waitpid(child, 0)
    assert package.read_bytes() == before
    opened.close()
    assert package.read_bytes() != before
