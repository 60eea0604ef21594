# SPDX-License-Identifier: MIT
"""kraddon index --collect when calls fail, and after runs that were killed."""

import faulttest
from cataloguetest import GUID, hashed_files
from faulttest import needs_shim
from test_site import SiteTest

NO_COPYING = "copy:1+:EOPNOTSUPP"


@needs_shim
class Collecting(SiteTest):

    def recent_site(self):
        """A site whose last root, which is recent, names more than the root."""
        self.learn_sites()
        self.index("p2.kraddon", "--remove", GUID.format(0), site="old")
        self.restore_site(True)
        self.index("--collect")
        return hashed_files(self.path("site"))

    def test_a_folder_or_file_that_cannot_be_read_costs_no_file_that_is_needed(self):
        needed = self.recent_site()
        for family in ("open", "listing", "status"):
            for how in ("EIO", "EMFILE", "EACCES"):
                at = 1
                while True:
                    self.restore_site(True)
                    self.run_failing(f"{family}:{at}:{how}", *self.words(["--collect"]))
                    if not self.hit:
                        break
                    lost = needed - hashed_files(self.path("site"))
                    self.assertEqual(lost, set(), f"{family}:{at}:{how}")
                    at += 1
                self.assertGreater(at, 5)

    def test_what_killed_runs_left_is_removed(self):
        self.learn_sites()
        left = 0
        for at in range(1, 100):
            self.restore_site(True)
            self.run_failing(f"write,copy,rename:{at}:SIGKILL",
                             *self.words(["p2.kraddon", "--link"]))
            if not self.hit:
                break
            left += len(self.temporary_files())

            self.ok(*self.words(["--collect"]))

            self.assertEqual(self.temporary_files(), [], at)
        self.assertGreater(left, 1)

    def temporary_files(self):
        return [path for path in self.path("site").rglob(".*.tmp")
                if not path.name.endswith(faulttest.LOCK_ENDS)]


@needs_shim
class Database(SiteTest):

    def test_writes_that_take_only_a_part_are_continued(self):
        self.learn_sites()
        words = ["p2.kraddon"]
        _, new = self.expected(True, words)
        for at in range(1, 200):
            self.restore_site(True)
            result = self.run_failing(f"{NO_COPYING};write:{at}:short", *self.words(words))
            self.assertEqual((result.code, result.errors), (0, ""), at)
            self.assertEqual(self.records(), new, at)
            if self.counts["write"] < at:
                break
        self.assertGreater(at, 5)


if __name__ == "__main__":
    faulttest.main()
