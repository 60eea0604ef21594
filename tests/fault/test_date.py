# SPDX-License-Identifier: MIT
"""A system that does not know the date: no package without one."""

import faulttest
from faulttest import FaultTest, needs_shim, snapshot

WHY = "could not convert calendar time to UTC time"


@needs_shim
class NoDate(FaultTest):

    def assert_said(self, *words):
        result = self.run_failing("date:1:EINVAL", *words)
        self.assertTrue(self.hit, words)
        self.assertEqual(result.code, 1, result.errors)
        self.assertIn(WHY, result.errors)
        self.assert_old(snapshot(self.folder), words[0])

    def test_that_is_unknown_is_reported_and_makes_no_package(self):
        self.make_inputs()
        self.assert_said("create", "new.kraddon", "src", "--name", "x")
        self.assert_said("call", "addonCreatePackage", "new.kraddon",
                         '{"type": "Korvan Toolbox", "name": "x", "version": "1", '
                         '"KorvanRelease": "", "summary": "", "authorName": "", '
                         '"authorContact": "", "authorOrganization": "", "GUID": "", '
                         '"description": ""}')


if __name__ == "__main__":
    faulttest.main()
