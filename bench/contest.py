# SPDX-License-Identifier: MIT
"""Work that kraddon and other programs do, one after the other."""

import os
import statistics
import subprocess
import time


class Run:
    """The time and memory of one run of a program."""

    def __init__(self, seconds, memory):
        self.seconds = seconds
        self.memory = memory  # peak, in bytes


ALL = os.sched_getaffinity(0)
ONE = {min(ALL)}


def run_once(command, code=0):
    """Runs `command`: words, or a function that returns them. A failure ends the benchmark."""
    command = command() if callable(command) else command
    started = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - started
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != code:
        raise subprocess.CalledProcessError(process.returncode, command)
    return Run(seconds, usage.ru_maxrss * 1024)


class Goal:
    """The goal for a figure, and a stricter one; both are upper limits. `one` is the goal on one
    processor, where it is another."""

    def __init__(self, most=None, stretch=None, one=None):
        self.most = most
        self.stretch = stretch
        self.one = most if one is None else one

    def __str__(self):
        if self.most is None:
            return "-"
        return "%g" % self.most if self.one == self.most else "%g / %g" % (self.most, self.one)

    def verdict(self, value, one):
        if self.most is None:
            return "-"
        if (value is not None and value > self.most) or (one is not None and one > self.one):
            return "NO"
        if self.stretch is not None and value is not None and value <= self.stretch:
            return "stretch"
        return "yes"


class Peer:
    """A program that does the same work. With `result`, a path, sizes are compared too. `own` is
    another command of our program, which is confined to one processor as well."""

    def __init__(self, name, command, goal=Goal(), result=None, size_goal=None, own=False):
        self.name = name
        self.own = own
        self.command = command
        self.goal = goal
        self.result = result
        self.size_goal = size_goal


class Figure:
    """A line of the table: the figure with all processors, and on one; either may be None."""

    def __init__(self, work, peer, value, one, goal, unit=""):
        self.work = work
        self.peer = peer
        self.value = value
        self.one = one
        self.goal = goal
        self.unit = unit
        self.details = {}

    def verdict(self):
        return self.goal.verdict(self.value, self.one)

    @classmethod
    def from_json(cls, stored):
        unit = "" if stored["unit"] == "ratio" else stored["unit"]
        goal = Goal(stored["atMost"], stored["stretch"], stored["atMostOnOne"])
        figure = cls(stored["work"], stored["peer"], stored["value"], stored["oneProcessor"], goal,
                     unit)
        figure.details = {name: stored[name] for name in ("seconds", "rounds", "peerSeconds")
                          if name in stored}
        return figure

    def as_json(self):
        def rounded(value):
            return None if value is None else round(value, 4)
        return {"work": self.work, "peer": self.peer, "value": rounded(self.value),
                "oneProcessor": rounded(self.one), "unit": self.unit or "ratio",
                "atMost": self.goal.most, "stretch": self.goal.stretch,
                "atMostOnOne": self.goal.one, "verdict": self.verdict(), **self.details}


class Side:
    """A program that takes part, and its runs."""

    def __init__(self, command, processors, result=None, code=0):
        self.command, self.processors = command, processors
        self.result, self.code = result, code
        self.runs = []
        self.size = None

    def middle(self):
        return statistics.median(run.seconds for run in self.runs)


class Contest:
    """One kind of work. `prepare` runs before each program and is not timed."""

    def __init__(self, work, ours, peers, prepare=None, result=None, memory_goal=None, code=0):
        self.work = work
        self.ours = ours
        self.peers = peers
        self.prepare = prepare or (lambda: None)
        self.result = result  # the path of our result, if its size is compared
        self.memory_goal = memory_goal
        self.code = code      # with which our program ends

    def run(self, side):
        os.sched_setaffinity(0, side.processors)
        try:
            return run_once(side.command, side.code)
        finally:
            os.sched_setaffinity(0, ALL)

    def our_sides(self):
        """With all processors, and with one: None where that is the same."""
        one = Side(self.ours, ONE, self.result, self.code)
        return (Side(self.ours, ALL, self.result, self.code) if len(ALL) > 1 else None), one

    def their_sides(self, peer):
        """Those with which our two are compared."""
        both = Side(peer.command, ALL, peer.result)
        return both, (Side(peer.command, ONE, peer.result) if peer.own else both)

    def hold(self, rounds, seconds):
        """The figures of `rounds` rounds, after one to warm up, or of as many as `seconds` allow,
        but at least one."""
        started = time.perf_counter()
        both, one = self.our_sides()
        theirs = [self.their_sides(peer) for peer in self.peers]
        sides = [both, one, *(side for pair in theirs for side in pair)]
        sides = list(dict.fromkeys(side for side in sides if side))
        for number in range(rounds + 1):
            # The order changes, so that no program always runs after the same one.
            turn = number % len(sides)
            for side in sides[turn:] + sides[:turn]:
                self.prepare()
                run = self.run(side)
                if number:
                    side.runs.append(run)
                if side.result:
                    side.size = os.path.getsize(side.result)
            if number and time.perf_counter() - started > seconds:
                break
        return list(self.figures(both, one, theirs))

    def compared(self, side, peer):
        return side and side.middle() / peer.middle()

    def figures(self, both, one, theirs):
        ours = both or one
        for peer, (side, side_of_one) in zip(self.peers, theirs):
            figure = Figure(self.work, peer.name, self.compared(both, side),
                            self.compared(one, side_of_one), peer.goal, self.unit)
            figure.details = {"seconds": round(ours.middle(), 4), "rounds": len(ours.runs),
                              "peerSeconds": round(side.middle(), 4)}
            yield figure
            if peer.size_goal:
                yield Figure("  its size", peer.name, ours.size / side.size, None, peer.size_goal)
        if self.memory_goal:
            peaks = [side and max(run.memory for run in side.runs) / 2 ** 20
                     for side in (both, one)]
            yield Figure("  its peak memory", "-", *peaks, self.memory_goal, "MiB")

    unit = ""


class Loop(Contest):
    """Programs that do the work many times in one process, and print the seconds of CPU it took."""

    def run(self, side):
        done = subprocess.run(side.command, check=True, stdout=subprocess.PIPE)
        return Run(float(done.stdout.split()[0]), 0)

    def our_sides(self):
        return Side(self.ours, ALL), None


class Growth(Contest):
    """By how much a process grew in which our program did the work many times; one round."""

    def hold(self, rounds, seconds):
        done = subprocess.run(self.ours, check=True, stdout=subprocess.PIPE)
        _, memory, files = done.stdout.split()
        return [Figure(self.work, "-", int(memory) / 1024, None, Goal(1), "MiB"),
                Figure("  its open files", "-", int(files), None, Goal(0), "more")]


class Difference(Contest):
    """How many milliseconds longer our program takes than the other one."""

    unit = "ms more"

    def compared(self, side, peer):
        return side and (side.middle() - peer.middle()) * 1000


class Size:
    """The size of a file, beside a goal in MB."""

    def __init__(self, work, path, goal):
        self.work, self.path, self.goal = work, path, goal

    def hold(self, _rounds, _seconds):
        return [Figure(self.work, "-", os.path.getsize(self.path) / 1e6, None, self.goal, "MB")]
