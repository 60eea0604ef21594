# SPDX-License-Identifier: MIT
"""Hostile packages, names and arguments raise errors, and never end the interpreter."""
import os
import random

from conftest import FILES, KIT, make

import kraddon

SEED = int(os.environ.get("KRADDON_FUZZ_SEED", "20260201"))
ROUNDS = int(os.environ.get("KRADDON_FUZZ_ROUNDS", "800"))
EXPECTED = (kraddon.Error, ValueError)


def damaged(content, chance):
    """The bytes with some of them changed, cut out, doubled or cut off."""
    data = bytearray(content)
    for _ in range(chance.choice((1, 1, 2, 5, 30))):
        if not data:
            break
        place = chance.randrange(len(data))
        # The directory at the end is the most worthwhile.
        if chance.random() < 0.6:
            place = len(data) - 1 - chance.randrange(min(len(data), 2500))
        kind = chance.randrange(5)
        if kind == 0:
            data[place] ^= 1 << chance.randrange(8)
        elif kind == 1:
            data[place:place + 4] = chance.choice((b"\xff" * 4, bytes(4), b"PK\x01\x02",
                                                   b"PK\x05\x06", chance.randbytes(4)))
        elif kind == 2:
            del data[place:place + chance.randrange(1, 40)]
        elif kind == 3:
            data[place:place] = data[place:place + chance.randrange(1, 60)]
        elif len(data) > 100 and chance.random() < 0.1:
            del data[place:]
    return bytes(data)


def attempt(call):
    try:
        return call()
    except EXPECTED:
        return None


def use(path, folder):
    """Everything that the module does with a package."""
    attempt(lambda: kraddon.verify(path))
    package = attempt(lambda: kraddon.open(path))
    if package is None:
        return 0
    with package:
        names = attempt(package.namelist) or []
        for name in names[:50]:
            attempt(lambda: package.read(name))
            attempt(lambda: (package.files / name).open("rb").read(7))
            attempt(lambda: (package.files / name).modified)
        for document in ("properties", "license", "configuration", "apps", "examples", "revisions",
                         "requirements", "screenshot"):
            attempt(lambda: getattr(package, document))
        attempt(package.info)
        attempt(package.digest)
        attempt(lambda: list(package.files.iterdir()))
    return 1


def test_damaged_packages(tmp_path):
    chance = random.Random(SEED)
    whole = make(tmp_path / "whole.kraddon", {**FILES, "data/empty": None, "ODD.": b"x",
                                              "odd.": b"y"})
    with kraddon.open(whole, "a") as package:
        package.license = kraddon.License(type="MIT", text="t" * 300)
        package.apps = [kraddon.App(name="A", relative_path="a.m")]
        package.set_screenshot(KIT / "images/screenshot.png")
    content = whole.read_bytes()
    path = tmp_path / "damaged.kraddon"
    opened = 0
    for number in range(ROUNDS):
        path.write_bytes(damaged(content, chance))
        opened += use(path, tmp_path)
        if number % 10 == 0:
            attempt(lambda: kraddon.preview(path))
            attempt(lambda: kraddon.diff(path, whole))

            def change():
                with kraddon.open(path, "a") as package:
                    package.add_bytes(b"x", "x")
                    package.license = None
                    package.move("lib", "code")
            attempt(change)
    assert 0 < opened < ROUNDS


def odd_value(chance):
    return chance.choice((
        None, True, 0, -1, 2 ** 64, 1.5, float("nan"), "", "a", "a\0", "\udcff", "é" * 1000,
        "..", "../x", "/", "//", "a/b/c", "a" * 70000, b"", b"a", b"\xff\0", [], ["a"], [None],
        {}, object,
        kraddon.License(), kraddon.License(text=3), [kraddon.App()], ("x",), bytearray(b"x"),
        memoryview(b"abc"), lambda *words: None, Ellipsis, 10 ** 400))


def test_odd_arguments(package):
    chance = random.Random(SEED)
    methods = ("read", "readinto", "add", "add_bytes", "add_folder", "mkdir", "remove", "move",
               "__contains__", "set_screenshot", "extract")
    os.chdir(package.parent)
    for _ in range(300):
        mode = chance.choice("ra")
        with kraddon.open(package, mode) as opened:
            for _ in range(10):
                name = chance.choice(methods)
                words = [odd_value(chance) for _ in range(chance.randrange(1, 4))]
                if name == "extract":
                    words[1:] = [package.parent / "out"]
                if name == "add_folder" and words[0] in ("/", "..", "//", "", "../x"):
                    continue
                try:
                    getattr(opened, name)(*words)
                except (*EXPECTED, TypeError, AttributeError, BufferError):
                    pass
                attribute = chance.choice(("license", "apps", "properties", "examples",
                                           "requirements", "configuration", "screenshot"))
                try:
                    setattr(opened, attribute, odd_value(chance))
                except (*EXPECTED, TypeError, AttributeError):
                    pass
            opened.discard()
    for call in (kraddon.open, kraddon.verify, kraddon.preview, kraddon.diff):
        for _ in range(300):
            words = [odd_value(chance) for _ in range(chance.randrange(1, 4))]
            try:
                call(*words)
            except (*EXPECTED, TypeError, RecursionError):
                pass


def test_the_native_module_takes_no_unchecked_arguments(package):
    from kraddon import _native
    chance = random.Random(SEED)
    native = _native.Package(os.fsencode(package), "r", None, 6)
    for name in [name for name in dir(native) if not name.startswith("_")]:
        method = getattr(native, name)
        if not callable(method) or name in ("close", "discard"):
            continue
        for _ in range(100):
            try:
                method(*(odd_value(chance) for _ in range(chance.randrange(0, 4))))
            except (*EXPECTED, TypeError, KeyError, OverflowError, BufferError):
                pass
    native.discard()
