# SPDX-License-Identifier: MIT
"""Files and folders without permission to read or write. As root, the program runs as nobody."""

import os
import unittest

import faulttest
from faulttest import FaultTest
from kraddontest import NOBODY

IS_ROOT = os.geteuid() == 0


class Unreadable(FaultTest):

    def setUp(self):
        super().setUp()
        self.make_inputs()
        if IS_ROOT:
            self.scratch.chmod(0o755)
            for place, folders, files in os.walk(self.folder):
                for name in (".", *folders, *files):
                    os.chown(os.path.join(place, name), NOBODY, NOBODY, follow_symlinks=False)

    def denied(self, *words, message):
        return self.fails(*words, message=message, **self.without_privilege())

    def assert_untouched(self):
        for name in self.before:  # the test may run as root, which reads everything
            if not self.path(name).is_symlink():
                self.path(name).chmod(0o755)
        now = faulttest.snapshot(self.folder)
        self.assertEqual({name: data for name, (_, data) in now.items()},
                         {name: data for name, (_, data) in self.before.items()})

    def test_file_in_the_folder_is_named(self):
        self.path("src/sub/b.m").chmod(0)
        self.denied("create", "new.kraddon", "src", "--name", "x",
                    message="cannot open 'src/sub/b.m': Permission denied")
        self.assert_untouched()

    def test_folder_in_the_folder_is_named(self):
        self.path("src/sub").chmod(0)
        self.denied("create", "new.kraddon", "src", "--name", "x",
                    message="cannot read the folder 'src/sub': Permission denied")
        self.assert_untouched()

    def test_package_is_named(self):
        self.path("p.kraddon").chmod(0)
        message = "cannot open package 'p.kraddon': Permission denied"
        for words in (("info", "p.kraddon"), ("list", "p.kraddon"), ("extract", "p.kraddon"),
                      ("get", "p.kraddon", "license"),
                      ("set", "p.kraddon", "license", "text=x")):
            self.denied(*words, message=message)
        self.assert_untouched()

    def test_read_only_package_is_kept(self):
        self.path("p.kraddon").chmod(0o440)
        self.denied("set", "p.kraddon", "license", "text=x",
                    message=f"cannot open package 'p.kraddon': cannot write to file "
                            f"'{self.path('p.kraddon')}': Permission denied")
        self.denied("create", "p.kraddon", "src", "--name", "x", "--force",
                    message="cannot replace 'p.kraddon': Permission denied")
        self.assert_untouched()

    def test_read_only_folder_is_named(self):
        self.folder.chmod(0o555)
        self.addCleanup(self.folder.chmod, 0o755)
        self.denied("set", "p.kraddon", "license", "text=x",
                    message=f"cannot open package 'p.kraddon': cannot write to folder "
                            f"'{self.folder}': Permission denied")
        self.denied("create", "new.kraddon", "src", "--name", "x",
                    message=f"cannot create package 'new.kraddon': cannot write to folder "
                            f"'{self.folder}': Permission denied")
        self.denied("extract", "p.kraddon", "-d", "out",
                    message="cannot make folder 'out': Permission denied")
        self.denied("get", "p.kraddon", "license", "-o", "new.json",
                    message="cannot write 'new.json': Permission denied")
        self.assert_untouched()

    def test_document_and_image_are_named(self):
        self.path("license.json").chmod(0)
        self.path("pixel.png").chmod(0)
        self.denied("set", "p.kraddon", "license", "license.json",
                    message="cannot read 'license.json': Permission denied")
        self.denied("screenshot", "p.kraddon", "pixel.png",
                    message="cannot read 'pixel.png': Permission denied")
        self.assert_untouched()


if __name__ == "__main__":
    faulttest.main()
