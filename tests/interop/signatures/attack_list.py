# SPDX-License-Identifier: MIT
"""The list of manipulations of a signed package. Each gives a package that must not pass as signed
by Ada."""

from lab import change_signature

ATTACKS = {}
EVIL = b"delete everything\n"


def attack(function):
    """A manipulation of Ada's package in place, or one that returns another package or bytes."""
    ATTACKS[function.__name__] = function
    return function


def on_signature(function):
    """A change of the XML of Ada's signature."""
    def change(lab, package):
        change_signature(package, lambda root: function(lab, root))
    change.__name__ = function.__name__
    return attack(change)


def with_evil_file(function):
    """The same, with a file added that the change is to cover."""
    def change(lab, package):
        package["/files/evil.m"] = EVIL
        change_signature(package, lambda root: function(lab, root))
    change.__name__ = function.__name__
    return attack(change)


def made(lab, name):
    package = lab.package()
    result = ATTACKS[name](lab, package)
    result = package if result is None else result
    return result if isinstance(result, bytes) else result.bytes()
