# SPDX-License-Identifier: MIT
"""How the time and memory of kraddon grow with the input."""

import math
import os
import shutil
import statistics
import time

from contest import run_once

GOAL = 1.05  # the steepest slope


class Curve:
    """Median seconds and peak memory of one work by input size."""

    def __init__(self, work):
        self.work = work
        self.sizes = []
        self.seconds = []
        self.memory = []

    def add(self, size, runs):
        self.sizes.append(size)
        self.seconds.append(statistics.median(run.seconds for run in runs))
        self.memory.append(max(run.memory for run in runs))

    def slope(self, values):
        """The slope of log value over log size, between the last size and a tenth of it."""
        first = self.sizes.index(self.sizes[-1] // 10)
        return (math.log(values[-1] / values[first]) /
                math.log(self.sizes[-1] / self.sizes[first]))

    def memory_each(self):
        """How many bytes of memory one more file, or record, takes."""
        first = self.sizes.index(self.sizes[-1] // 10)
        return (self.memory[-1] - self.memory[first]) / (self.sizes[-1] - self.sizes[first])

    @classmethod
    def from_json(cls, stored):
        curve = cls(stored["work"])
        curve.sizes, curve.seconds, curve.memory = (
            stored["sizes"], stored["seconds"], stored["memory"])
        return curve

    def as_json(self):
        return {"work": self.work, "sizes": self.sizes,
                "seconds": [round(value, 5) for value in self.seconds], "memory": self.memory,
                "slope": round(self.slope(self.seconds), 3),
                "memoryEach": round(self.memory_each()),
                "memorySlope": round(self.slope(self.memory), 3)}


def repeated(command, prepare, rounds):
    """The runs of a command. The first one does not count: it may be the first to touch the memory
    of a virtual machine, which takes longer than the work. No further one begins after a minute."""
    runs = []
    begin = time.monotonic()
    while len(runs) <= rounds and (len(runs) < 2 or time.monotonic() - begin < 60):
        prepare()
        runs.append(run_once(command))
    return runs[1:]


class FileGrowth:
    """Commands on packages with more and more small files."""

    # A million files in a tree, in a package, and extracted.
    NEEDED = 12 << 30

    def __init__(self, inputs):
        self.inputs = inputs
        self.sizes = [100, 300, 1000, 3000, 10000] if inputs.quick else [1000, 10000, 100000]
        if not inputs.quick and self.has_room():
            self.sizes.append(1000000)

    def has_room(self):
        pages = os.sysconf("SC_AVPHYS_PAGES") * os.sysconf("SC_PAGE_SIZE")
        return min(pages, shutil.disk_usage(self.inputs.folder).free) >= self.NEEDED

    def works(self, size):
        """Name, command, and what is done before it."""
        inputs, program = self.inputs, self.inputs.kraddon
        tree = inputs.texts(size)
        package = inputs.package(tree)
        copy = inputs.path("copy.kraddon")
        nothing = inputs.remover()
        yield ("create", [program, "create", inputs.path("new.kraddon"), tree, "--name", "b"],
               inputs.remover("new.kraddon"))
        inputs.remove("new.kraddon")
        yield ("extract", [program, "extract", package, "-d", inputs.path("out")],
               inputs.remover("out"))
        inputs.remove("out")
        yield "list", [program, "list", package], nothing
        yield "verify", [program, "verify", "--opc", package], nothing
        yield ("add", [program, "add", copy, inputs.small_file()],
               lambda: shutil.copyfile(package, copy))
        yield "set", [program, "set", copy, "license", "text=As it is."], nothing
        yield "get", [program, "get", copy, "license"], nothing
        inputs.remove("copy.kraddon")

    def measure(self, rounds):
        curves = {}
        for size in self.sizes:
            for work, command, prepare in self.works(size):
                curves.setdefault(work, Curve(work)).add(size, repeated(command, prepare, rounds))
            if size > 100000:
                self.inputs.remove("texts%d" % size, "texts%d.kraddon" % size)
        return list(curves.values())


class RecordGrowth:
    """Documents with more and more records."""

    def __init__(self, inputs):
        self.inputs = inputs
        self.sizes = [1000, 10000] if inputs.quick else [10000, 100000]

    def measure(self, rounds):
        curves = {}
        for size in self.sizes:
            package = self.inputs.empty_package(size)
            for document, path in self.inputs.records(size).items():
                self.measure_document(curves, size, [package, document], path, rounds)
                os.remove(path)
        return list(curves.values())

    def measure_document(self, curves, size, words, path, rounds):
        for verb, last in (("set", [path, "--no-verify"]), ("get", [])):
            command = [self.inputs.kraddon, verb, *words, *last]
            work = "%s %s" % (verb, words[1])
            runs = [run_once(command) for _ in range(rounds + 1)]
            curves.setdefault(work, Curve(work)).add(size, runs[1:])
