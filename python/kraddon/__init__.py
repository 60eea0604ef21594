# SPDX-License-Identifier: MIT
"""Add-on packages for the Korvan numerical environment: reading, changing, building, checking.

See docs/python.md.
"""
from dataclasses import asdict

from ._commands import (BuildEntry, BuildResult, Difference, Finding, build, create, diff, preview,
                        verify)
from ._errors import Error, InvalidPackage
from ._native import version as __version__
from ._package import Package, open
from ._records import (App, Configuration, Dependency, Example, ExampleCategory, License,
                       Properties, Requirements, Revision)
from ._tree import PackagePath

__all__ = [
    "App", "BuildEntry", "BuildResult", "Configuration", "Dependency", "Difference", "Error",
    "Example", "ExampleCategory", "Finding", "InvalidPackage", "License", "Package", "PackagePath",
    "Properties", "Requirements", "Revision", "__version__", "asdict", "build", "create", "diff",
    "open", "preview", "verify",
]
