# SPDX-License-Identifier: MIT
"""kraddon extract when the folder of -d does not exist, or cannot be created."""

import kraddontest


class Destination(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "one", "lib/b.m": "two"})

    def assert_refused(self, folder, message):
        """Every way to extract says that, and none writes anything."""
        before = self.names()
        for option in ([], ["--force"], ["--skip-existing"]):
            for dry in ([], ["--dry-run"]):
                with self.subTest(folder=folder, options=option + dry):
                    self.fails("extract", "p.kraddon", "-d", folder, *option, *dry,
                               message=message)
                    self.assertEqual(self.names(), before)

    def test_a_file_is_no_folder(self):
        self.write("file", "mine")
        for folder in ("file", "file/"):
            self.assert_refused(folder, f"cannot open folder '{folder}': Not a directory")

    def test_no_folder_is_made_below_a_file(self):
        self.write("sub/file", "mine")
        for folder in ("sub/file/x", "sub/file/x/y"):
            self.assert_refused(folder, "cannot make folder 'sub/file/x': Not a directory")

    def test_no_folder_is_made_behind_a_link_to_nothing(self):
        self.path("link").symlink_to("nowhere")
        why = "No such file or directory"
        for folder in ("link", "link/"):
            self.assert_refused(folder, f"cannot open folder '{folder}': {why}")
        for folder in ("link/x", "link/x/y"):
            self.assert_refused(folder, f"cannot make folder 'link/x': {why}")

    def test_an_empty_path_is_not_this_folder(self):
        self.assert_refused("", "cannot make folder '': the path is empty")

    def test_folders_that_are_missing_are_made(self):
        self.path("there").mkdir()
        self.path("link").symlink_to("there")
        for folder in ("new", "one/two/three/", "there/new", "link/other", self.path("top/new")):
            with self.subTest(folder=folder):
                dry = self.ok("extract", "p.kraddon", "-d", folder, "--dry-run")
                self.assertEqual(dry.text, "a.m\nlib/b.m\n")
                self.assertFalse(self.path(folder).exists())
                self.ok("extract", "p.kraddon", "-d", folder)
                self.assertEqual(self.path(folder).joinpath("a.m").read_text(), "one")


if __name__ == "__main__":
    kraddontest.main()
