# SPDX-License-Identifier: MIT
"""create, build, verify, diff and preview do what the commands do."""
import dataclasses
import itertools
import json
import pickle
import shutil
import subprocess

import pytest
from conftest import FILES, KIT, command, make

import kraddon

MANIFEST = """[package]
name = "Wave Tools"
version = "1.2"
author = "Ada Lind"
"""


@pytest.fixture
def project(tmp_path):
    folder = tmp_path / "project"
    shutil.copytree(KIT, folder)
    (folder / "kraddon.toml").write_text(MANIFEST)
    return folder


def test_create_makes_the_bytes_of_the_command(tmp_path):
    words = ("--name", "Kit", "--summary", "s", "--exclude", "*.csv", "--timestamp", "0")
    assert command("create", tmp_path / "a.kraddon", KIT, *words).returncode == 0
    result = kraddon.create(tmp_path / "b.kraddon", KIT, name="Kit", summary="s",
                            exclude=["*.csv"], timestamp=0)
    assert (tmp_path / "a.kraddon").read_bytes() == (tmp_path / "b.kraddon").read_bytes()
    assert result.written and result.file == str(tmp_path / "b.kraddon")
    assert result.size == (tmp_path / "b.kraddon").stat().st_size
    with kraddon.open(tmp_path / "b.kraddon") as opened:
        assert result.digest == opened.digest()
        assert [entry.path for entry in result.entries] == opened.namelist()
    with pytest.raises(FileExistsError):
        kraddon.create(tmp_path / "b.kraddon", KIT, name="Kit")
    kraddon.create(tmp_path / "b.kraddon", name="Empty", force=True)
    with pytest.raises(ValueError):
        kraddon.create(tmp_path / "c.kraddon", name="")
    with pytest.raises(TypeError):
        kraddon.create(tmp_path / "c.kraddon", name="x", exclude="*.m")


def test_build_makes_the_bytes_and_the_report_of_the_command(project, tmp_path):
    made = command("build", project, "-o", tmp_path / "a.kraddon", "--json", "--timestamp", "0")
    printed = json.loads(made.stdout)
    result = kraddon.build(project, output=tmp_path / "b.kraddon", timestamp=0)
    assert (tmp_path / "a.kraddon").read_bytes() == (tmp_path / "b.kraddon").read_bytes()
    values = dataclasses.asdict(result)
    del printed["schema"], printed["file"], values["file"]
    known = {field.name for field in dataclasses.fields(kraddon.Finding)}
    for finding in printed["findings"]:
        assert set(finding) <= known
    assert values == {**printed, "findings": [
        {name: finding.get(name) for name in known} for finding in printed["findings"]]}


def test_a_rehearsed_build_writes_nothing(project, tmp_path):
    result = kraddon.build(project, output=tmp_path / "b.kraddon", dry_run=True)
    assert not result.written and result.size is None and result.files > 20
    assert not (tmp_path / "b.kraddon").exists()


def test_a_build_fails_as_the_command_does(project, tmp_path):
    strict = command("build", project, "-o", tmp_path / "a.kraddon", "--strict")
    with pytest.raises(kraddon.Error) as caught:
        kraddon.build(project, output=tmp_path / "a.kraddon", strict=True)
    assert f"kraddon: build: {caught.value}\n" in strict.stderr
    (project / "kraddon.toml").write_text("[package]\nversion = '1'\nname = 3\n")
    with pytest.raises(kraddon.Error, match="kraddon.toml:3:8"):
        kraddon.build(project)
    (project / "kraddon.toml").unlink()
    with pytest.raises(FileNotFoundError):
        kraddon.build(project)
    with pytest.raises(ValueError):
        kraddon.build(project, strict=True, no_verify=True)


def test_verify_returns_the_findings_of_the_command(package):
    printed = json.loads(command("verify", "--json", package).stdout)["packages"][0]["findings"]
    findings = kraddon.verify(package)
    assert [(one.id, one.severity, one.part, one.line, one.message, one.hint) for one in findings] \
        == [tuple(one[name] for name in ("id", "severity", "part", "line", "message", "hint"))
            for one in printed]
    assert pickle.loads(pickle.dumps(findings)) == findings
    ids = {one.id for one in findings}
    assert "KR503" in ids
    assert {one.id for one in kraddon.verify(package, ignore=["KR503"])} == ids - {"KR503"}
    assert all(one.severity == "error" for one in kraddon.verify(package, strict=True))
    assert kraddon.verify(package, opc=True) == []
    assert any(one.severity == "error" for one in kraddon.verify(package, error=["KR503"]))
    for bad in ("KR999", "KR503:", "word"):
        with pytest.raises(ValueError):
            kraddon.verify(package, ignore=[bad])
    with pytest.raises(FileNotFoundError):
        kraddon.verify(package.parent / "none.kraddon")
    with pytest.raises(FileNotFoundError):
        kraddon.verify("")


def test_verify_applies_manifests_and_policies(package, project, tmp_path):
    (project / "kraddon.toml").write_text(MANIFEST + '[verify]\nignore = ["KR503"]\n')
    (tmp_path / "policy.toml").write_text('[verify]\nerror = ["KR502"]\n')
    assert not any(one.id == "KR503" for one in kraddon.verify(package, manifest=project))
    assert any(one.severity == "error"
               for one in kraddon.verify(package, policy=tmp_path / "policy.toml"))
    (tmp_path / "policy.toml").write_text("[other]\n")
    with pytest.raises(kraddon.Error, match="bad policy"):
        kraddon.verify(package, policy=tmp_path / "policy.toml")


def test_verify_finds_damage(package):
    content = bytearray(package.read_bytes())
    content[content.index(FILES["a.m"])] ^= 0xFF
    package.write_bytes(content)
    assert any(one.severity == "error" for one in kraddon.verify(package))


def test_diff_is_that_of_the_command(package, project, tmp_path):
    other = make(tmp_path / "other.kraddon", {"a.m": b"disp(3)\n", "new.m": b""}, version="2")
    printed = json.loads(command("diff", "--json", package, other).stdout)
    found = kraddon.diff(package, other)
    assert not found.same
    assert (found.properties, found.documents, found.files) == (
        printed["properties"], printed["documents"], printed["files"])
    assert kraddon.diff(package, package).same
    assert [one["path"] for one in kraddon.diff(package, other, "a.m").files] == ["a.m"]
    assert [one["path"] for one in kraddon.diff(package, other, "n*.m", glob=True).files] == [
        "new.m"]
    built = kraddon.build(project, output=tmp_path / "built.kraddon")
    assert kraddon.diff(project, built.file).same
    assert pickle.loads(pickle.dumps(found)) == found
    with pytest.raises(kraddon.Error, match="cannot find"):
        kraddon.diff(package, other, "nothing")


def test_preview_is_the_page_of_the_command(package, tmp_path):
    assert command("preview", package, "-o", tmp_path / "a.html").returncode == 0
    page = kraddon.preview(package, output=tmp_path / "b.html")
    assert page == (tmp_path / "a.html").read_text() == (tmp_path / "b.html").read_text()
    assert kraddon.preview(package) == page
    with pytest.raises(kraddon.Error, match="the package itself"):
        kraddon.preview(package, output=package)
    with pytest.raises(FileNotFoundError):
        kraddon.preview(package, output=tmp_path / "no/page.html")
    assert not [name for name in tmp_path.iterdir() if name.name.startswith(".")]


def calls_with_progress(package, project, tmp_path):
    def extract(progress):
        with kraddon.open(package) as opened:
            opened.extract_all(tmp_path / f"out{next(numbers)}", progress=progress)
    numbers = itertools.count()
    return {
        "create": lambda progress: kraddon.create(tmp_path / "c.kraddon", KIT, name="Kit",
                                                  progress=progress),
        "build": lambda progress: kraddon.build(project, output=tmp_path / "b.kraddon",
                                                progress=progress),
        "verify": lambda progress: kraddon.verify(package, progress=progress),
        "extract": extract,
    }


@pytest.mark.parametrize("name", ["create", "build", "verify", "extract"])
def test_progress_counts_bytes_and_stops_what_it_interrupts(package, project, tmp_path, name):
    call = calls_with_progress(package, project, tmp_path)[name]

    def stop(done, total):
        raise ZeroDivisionError

    with pytest.raises(ZeroDivisionError):
        call(stop)
    assert not [path for path in tmp_path.rglob("*") if path.suffix == ".tmp"]
    assert not (tmp_path / "c.kraddon").exists() and not (tmp_path / "b.kraddon").exists()
    seen = []
    call(lambda done, total: seen.append((done, total)))
    assert seen and all(0 <= done <= total for done, total in seen)
    with pytest.raises(TypeError):
        call("no function")


def test_a_package_refuses_calls_from_its_own_progress(package, tmp_path):
    with kraddon.open(package) as opened:
        with pytest.raises(RuntimeError):
            opened.extract_all(tmp_path / "out", progress=lambda done, total: opened.namelist())
        with pytest.raises(RuntimeError):
            opened.extract_all(tmp_path / "out2", progress=lambda done, total: opened.close())
        assert opened.namelist()


def test_verify_checks_signatures(package, tmp_path):
    key, certificate = tmp_path / "key.pem", tmp_path / "certificate.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                    "-subj", "/CN=Ada", "-keyout", key, "-out", certificate],
                   capture_output=True, check=True)
    assert any(one.severity == "error"
               for one in kraddon.verify(package, require_signature=True))
    done = command("sign", package, "--key", key, "--certificate", certificate)
    assert done.returncode == 0, done.stderr

    def errors(**options):
        return [one for one in kraddon.verify(package, **options) if one.severity == "error"]
    assert errors(require_signature=True, trust=[certificate]) == []
    with pytest.raises(kraddon.Error):
        kraddon.verify(package, trust=[key])
    with pytest.raises(FileNotFoundError):
        kraddon.verify(package, trust=[tmp_path / "none.pem"])
    with pytest.raises(TypeError):
        kraddon.verify(package, trust=certificate)
