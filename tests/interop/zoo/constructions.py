# SPDX-License-Identifier: MIT
"""The register of constructions that make ZIP readers disagree, and what several of them share.
Each is a function that changes a faultless package; its name says what it does. verify must report
an error for each, or all readers must agree about it."""

FILE, OTHER = b"files/a.m", b"files/lib/b.m"
HIDDEN = b"function hidden\n"
WHERE = ("local", "central", "both")

CONSTRUCTIONS = {}


def construction(*cases):
    """Registers a function, once or for each of the cases, which are its further arguments."""
    def register(function):
        name = function.__name__.replace("_", " ")
        if not cases:
            CONSTRUCTIONS[name] = function
        for case in cases:
            words = case if isinstance(case, tuple) else (case,)
            CONSTRUCTIONS["%s: %s" % (name, ", ".join(map(_text, words)))] = (
                lambda archive, words=words: function(archive, *words))
        return function
    return register


def _text(word):
    return ascii(word[:60]) if isinstance(word, bytes) else str(word)


def headers(archive, where, name=FILE):
    """The headers of an item that "local", "central" or "both" stands for."""
    local, central = archive.named(name)
    return {"local": (local,), "central": (central,), "both": (local, central)}[where]
