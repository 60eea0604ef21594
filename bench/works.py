# SPDX-License-Identifier: MIT
"""The work that is timed, the programs for comparison, and the goals."""

import os

from catalogue import Catalogue
from contest import Difference, Goal, Growth, Loop, Peer, Size
from reading import Reading
from signing import Signing
from writing import Writing

PYTHON_CALLS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "host_peer.py")


class Works:
    """All contests. Groups remove what they made and others do not need."""

    def __init__(self, inputs):
        self.inputs = inputs
        self.many = 10000 if inputs.quick else 100000
        self.writing = Writing(inputs, self.many)
        self.reading = Reading(inputs, self.many)
        self.signing = Signing(inputs)
        self.catalogue = Catalogue(inputs)

    def groups(self):
        """Functions that yield contests, by name. Inputs of a group that others do not need are
        removed at its end."""
        return {"real": self.real, "many files": self.many_files,
                "large file": self.writing.large_file, "changes": self.writing.changes,
                "signing": self.signing.large, "catalogue": self.catalogue.works, "small": self.small, "calls": self.calls,
                "program": self.program}

    def real(self):
        yield from self.writing.real()
        yield from self.reading.real()
        self.inputs.remove("headers", "headers.kraddon", "headers.zip")

    def many_files(self):
        yield from self.writing.many_files()
        yield from self.reading.many_files()

    def small(self):
        yield from self.reading.small()
        yield from self.signing.small()

    def program(self):
        yield Difference("--version", [self.inputs.kraddon, "--version"],
                         [Peer("/bin/true", ["/bin/true"], Goal(1))])
        yield Size("size of the program", self.inputs.stripped(), Goal(6))

    def calls(self):
        """What a host calls, against Python's own modules that read the same."""
        inputs = self.inputs
        small = inputs.licensed(inputs.package(inputs.texts(2)))
        large = inputs.licensed(inputs.package(inputs.texts(self.many // 5)))
        for call, part, package, count, goal in (
                ("addonGetLicense, 2 files", "license", small, 2000, Goal(0.6, 0.35)),
                ("addonGetProperties, 2 files", "coreProperties", small, 2000, Goal(0.9, 0.5)),
                ("addonGetLicense, no such file", "license", inputs.path("none"), 2000,
                 Goal(20, 10)),
                ("addonGetLicense, %s files" % format(self.many // 5, ","), "license", large, 20,
                 Goal(0.03))):
            yield Loop(
                call, [inputs.host_calls, call.split(",")[0], package, str(count)],
                [Peer("python3 zipfile, ElementTree",
                      ["/usr/bin/python3", PYTHON_CALLS, "metadata/%s.xml" % part, package,
                       str(count)], goal)])
        count = 20000 if inputs.quick else 1000000
        yield Growth("addonGetLicense, %s calls" % format(count, ","),
                     [inputs.host_calls, "addonGetLicense", small, str(count)], [])
