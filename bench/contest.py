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


def run_once(command):
    """Runs `command`: words, or a function that returns them. A failure ends the benchmark."""
    command = command() if callable(command) else command
    started = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - started
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode:
        raise subprocess.CalledProcessError(process.returncode, command)
    return Run(seconds, usage.ru_maxrss * 1024)


class Goal:
    """The goal for a figure, and a stricter one; both are upper limits."""

    def __init__(self, most=None, stretch=None):
        self.most = most
        self.stretch = stretch

    def verdict(self, value):
        if self.most is None:
            return "-"
        if value > self.most:
            return "NO"
        if self.stretch is not None and value <= self.stretch:
            return "stretch"
        return "yes"


class Peer:
    """A program that does the same work. With `result`, a path, sizes are compared too."""

    def __init__(self, name, command, goal=Goal(), result=None, size_goal=None):
        self.name = name
        self.command = command
        self.goal = goal
        self.result = result
        self.size_goal = size_goal


class Figure:
    """A line of the table."""

    def __init__(self, work, peer, value, goal, unit=""):
        self.work = work
        self.peer = peer
        self.value = value
        self.goal = goal
        self.unit = unit
        self.details = {}

    def as_json(self):
        return {"work": self.work, "peer": self.peer, "value": round(self.value, 4),
                "unit": self.unit or "ratio", "atMost": self.goal.most,
                "stretch": self.goal.stretch, "verdict": self.goal.verdict(self.value),
                **self.details}


class Contest:
    """One kind of work. `prepare` runs before each program and is not timed."""

    def __init__(self, work, ours, peers, prepare=None, result=None, memory_goal=None):
        self.work = work
        self.ours = ours
        self.peers = peers
        self.prepare = prepare or (lambda: None)
        self.result = result  # the path of our result, if its size is compared
        self.memory_goal = memory_goal
        self.sizes = {}

    def run(self, command):
        return run_once(command)

    def hold(self, rounds):
        """The figures of `rounds` rounds, after one to warm up."""
        sides = [("kraddon", self.ours, self.result)]
        sides += [(peer.name, peer.command, peer.result) for peer in self.peers]
        runs = {name: [] for name, _, _ in sides}
        for number in range(rounds + 1):
            # The order changes, so that no program always runs after the same one.
            turn = number % len(sides)
            for name, command, result in sides[turn:] + sides[:turn]:
                self.prepare()
                run = self.run(command)
                if number:
                    runs[name].append(run)
                if result:
                    self.sizes[name] = os.path.getsize(result)
        return list(self.figures(runs))

    def figures(self, runs):
        middle = {name: statistics.median(run.seconds for run in taken)
                  for name, taken in runs.items()}
        for peer in self.peers:
            figure = Figure(self.work, peer.name, middle["kraddon"] / middle[peer.name], peer.goal)
            figure.details = {"seconds": round(middle["kraddon"], 4),
                              "peerSeconds": round(middle[peer.name], 4)}
            yield figure
            if peer.size_goal:
                yield Figure("  its size", peer.name,
                             self.sizes["kraddon"] / self.sizes[peer.name], peer.size_goal)
        if self.memory_goal:
            peak = max(run.memory for run in runs["kraddon"])
            yield Figure("  its peak memory", "-", peak / 2 ** 20, self.memory_goal, "MiB")


class Loop(Contest):
    """Programs that do the work many times in one process, and print the seconds of CPU it took."""

    def run(self, command):
        done = subprocess.run(command, check=True, stdout=subprocess.PIPE)
        return Run(float(done.stdout), 0)


class Startup(Contest):
    """How much longer 'kraddon --version' takes than a program that does nothing."""

    def figures(self, runs):
        best = {name: statistics.median(run.seconds for run in taken)
                for name, taken in runs.items()}
        peer = self.peers[0]
        yield Figure(self.work, peer.name, (best["kraddon"] - best[peer.name]) * 1000, peer.goal,
                     "ms more")
