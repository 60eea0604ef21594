# SPDX-License-Identifier: MIT
"""Documents and their records."""
import dataclasses
import json
import pickle

import pytest
from conftest import KIT, command

import kraddon

DOCUMENTS = {
    "license": kraddon.License(type="MIT", text="first line\nsecond ü 𝄞"),
    "configuration": kraddon.Configuration(korvan_paths=["lib", "."], java_class_paths=["a.jar"]),
    "apps": [kraddon.App(name="A", guid="1-2", relative_path="a.m", install_by_default=False),
             kraddon.App(name="B", relative_path="lib/b.m")],
    "examples": [kraddon.ExampleCategory(name="Basics", examples=[
        kraddon.Example(name="One", type="script", source="a.m", main="a.m", thumbnail="t.png",
                        images=["i.png", "j.png"]), kraddon.Example(name="Two")]),
        kraddon.ExampleCategory(name="Empty")],
    "revisions": [kraddon.Revision(date="2026-01-02", version="1.0", description="first")],
    "requirements": kraddon.Requirements(
        product_dependency=[kraddon.Dependency(name="Core", version="2", identifier="C")],
        support_package_dependency=[kraddon.Dependency(name="Extra")]),
}
RECORDS = [kraddon.Properties(name="x"), kraddon.Example(images=["y"]),
           *[one[0] if isinstance(one, list) else one for one in DOCUMENTS.values()]]


def json_of(document, value):
    """The record as the command prints it."""
    if isinstance(value, list):
        return [json_of(document, one) for one in value]
    if dataclasses.is_dataclass(value):
        return {field.name: json_of(document, getattr(value, field.name))
                for field in dataclasses.fields(value)}
    return {True: "true", False: "false"}.get(value, value) if isinstance(value, bool) else value


def plain(value):
    """The command's JSON with the names and empty lists of Python."""
    if isinstance(value, list):
        return [plain(one) for one in value]
    if isinstance(value, dict):
        names = {name: "".join("_" + c.lower() if c.isupper() and not name.isupper() else c.lower()
                               for c in name).lstrip("_") for name in value}
        return {names[name]: [] if one is None else plain(one) for name, one in value.items()}
    return value


@pytest.mark.parametrize("name", DOCUMENTS)
def test_a_document_comes_back_and_is_what_the_command_prints(package, name):
    with kraddon.open(package, "a") as opened:
        setattr(opened, name, DOCUMENTS[name])
        assert getattr(opened, name) == DOCUMENTS[name]
    with kraddon.open(package) as opened:
        assert getattr(opened, name) == DOCUMENTS[name]
    printed = json.loads(command("get", package, name).stdout)
    assert plain(printed) == json_of(name, DOCUMENTS[name])


@pytest.mark.parametrize("name", DOCUMENTS)
def test_what_is_missing_is_none_or_an_empty_list(package, name):
    empty = [] if isinstance(DOCUMENTS[name], list) else None
    with kraddon.open(package, "a") as opened:
        assert getattr(opened, name) == empty
        for remove in (lambda: setattr(opened, name, None), lambda: delattr(opened, name)):
            setattr(opened, name, DOCUMENTS[name])
            remove()
            assert getattr(opened, name) == empty


def test_properties_keep_what_never_changes(package):
    with kraddon.open(package, "a") as opened:
        old = opened.properties
        assert old.type == "Korvan Toolbox" and old.korvan_release
        changed = dataclasses.replace(old, name="Other", author_contact="a@example.org")
        opened.properties = changed
        assert opened.properties == changed
        opened.properties = kraddon.Properties(name="Third", version="2", guid=old.guid)
        assert opened.properties.korvan_release == old.korvan_release
        with pytest.raises(ValueError, match="cannot change"):
            opened.properties = dataclasses.replace(changed, korvan_release="R1")
        with pytest.raises(TypeError):
            opened.properties = None


def test_a_new_package_gets_its_guid_from_the_name(tmp_path):
    guids = []
    for path in (tmp_path / "a.kraddon", tmp_path / "b.kraddon"):
        with kraddon.open(path, "x") as opened:
            opened.properties = kraddon.Properties(name="Wave", version="1")
        with kraddon.open(path) as opened:
            guids.append(opened.properties.guid)
    assert guids[0] == guids[1] and len(guids[0]) == 36


@pytest.mark.parametrize("record", RECORDS, ids=lambda record: type(record).__name__)
def test_records_behave_as_dataclasses(record):
    kind = type(record)
    assert record == pickle.loads(pickle.dumps(record)) == eval(repr(record), vars(kraddon))
    assert record != kind() and record == kind(**{
        field.name: getattr(record, field.name) for field in dataclasses.fields(record)})
    assert set(kraddon.asdict(record)) == {field.name for field in dataclasses.fields(record)}
    with pytest.raises(TypeError):
        kind(nothing=1)


def test_the_defaults_are_those_of_the_manifest():
    assert kraddon.Properties().type == "Korvan Toolbox"
    assert kraddon.App().install_by_default is True
    assert kraddon.Example().images == [] and kraddon.Example().images is not \
        kraddon.Example().images


@pytest.mark.parametrize("name, value, error, text", [
    ("license", "MIT", TypeError, "expected License, not str"),
    ("license", kraddon.License(type=3), TypeError, r"license\.type: expected str, not int"),
    ("license", kraddon.License(text="a\0b"), ValueError, r"license\.text"),
    ("license", kraddon.License(text="a\ud800b"), ValueError, r"license\.text"),
    ("license", kraddon.License(text="\x0c"), ValueError, r"license\.text"),
    ("apps", kraddon.App(), TypeError, "expected a list of App"),
    ("apps", "text", TypeError, "expected a list of App"),
    ("apps", [kraddon.License()], TypeError, "expected App, not License"),
    ("apps", [kraddon.App(install_by_default="true")], TypeError,
     r"apps\[0\]\.install_by_default: expected bool"),
    ("configuration", kraddon.Configuration(korvan_paths="lib"), TypeError, "expected a list"),
    ("configuration", kraddon.Configuration(korvan_paths=["a", 1]), TypeError,
     r"korvan_paths\[1\]: expected str"),
    ("requirements", kraddon.Requirements(product_dependency=[3]), TypeError,
     "expected Dependency"),
])
def test_a_bad_value_is_refused_and_changes_nothing(package, name, value, error, text):
    before = package.read_bytes()
    with kraddon.open(package, "a") as opened:
        with pytest.raises(error, match=text):
            setattr(opened, name, value)
    assert package.read_bytes() == before


def test_the_screenshot_is_stored_and_removed(package, tmp_path):
    image = KIT / "images/screenshot.png"
    with kraddon.open(package, "a") as opened:
        assert opened.screenshot is None
        opened.set_screenshot(image)
        assert opened.screenshot == image.read_bytes()
    with kraddon.open(package, "a") as opened:
        assert opened.screenshot == image.read_bytes()
        (tmp_path / "text.png").write_text("no image")
        with pytest.raises(kraddon.Error, match="cannot use the image"):
            opened.set_screenshot(tmp_path / "text.png")
        with pytest.raises(FileNotFoundError):
            opened.set_screenshot(tmp_path / "none.png")
        del opened.screenshot
        assert opened.screenshot is None
        with pytest.raises(TypeError):
            opened.screenshot = b"image"
    with kraddon.open(package) as opened:
        assert opened.screenshot is None
