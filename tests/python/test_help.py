# SPDX-License-Identifier: MIT
"""What help() shows."""
import pydoc

import pytest

import kraddon


@pytest.mark.parametrize("name, text", [
    ("properties", "What the add-on is. `type` and `korvan_release` never change."),
    ("license", "The license, or None. Assign a License to store it."),
    ("configuration", "The search paths, or None."),
    ("apps", "The apps; [] if there are none."),
    ("examples", "The example categories; [] if there are none."),
    ("revisions", "The revisions; [] if there are none."),
    ("requirements", "The requirements, or None.")])
def test_help_of_a_package_describes_each_document(name, text):
    shown = pydoc.plain(pydoc.render_doc(kraddon.Package))

    assert f" |  {name}\n |      {text}\n" in shown


def test_everything_public_of_a_package_has_a_description():
    for name in vars(kraddon.Package):
        assert name.startswith("_") or pydoc.getdoc(getattr(kraddon.Package, name)), name
