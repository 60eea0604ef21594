# SPDX-License-Identifier: MIT
"""Work with signatures."""

import os
import shutil

from contest import Contest, Difference, Goal, Peer


class Signing:
    def __init__(self, inputs):
        self.inputs = inputs
        self.kraddon = inputs.kraddon

    def large(self):
        inputs = self.inputs
        package = inputs.package(inputs.blocks())
        inputs.remove("blocks")
        name = "sign, %d MB" % (50 if inputs.quick else 300)
        copy = os.path.join(inputs.disk, "copy.kraddon")
        yield self.contest(name + ", on a disk", package, copy)
        inputs.remove(copy)
        yield self.contest(name + ", in memory", package, inputs.path("copy.kraddon"))
        inputs.remove("copy.kraddon", os.path.basename(package))

    def contest(self, name, package, copy):
        return Contest(
            name, [self.kraddon, "sign", copy, *self.inputs.signer()],
            [Peer("kraddon set", [self.kraddon, "set", copy, "license", "type=MIT", "text=terms"],
                  Goal(1.3), own=True)],
            lambda: shutil.copyfile(package, copy))

    def small(self):
        inputs = self.inputs
        package, count = inputs.package(inputs.texts(20)), 50 if inputs.quick else 500
        signed, words = inputs.signed(package), [self.kraddon, "verify", "-q"]
        yield Difference(
            "verify, %d signed packages" % count,
            [*words, "--trust", inputs.path("signer.pem"), *[signed] * count],
            [Peer("the same unsigned", [*words, *[package] * count], Goal(5000), own=True)])
