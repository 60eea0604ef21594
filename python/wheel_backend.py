# SPDX-License-Identifier: MIT
"""Makes a wheel from the CMake build, for `python3 -m build` and pip (PEP 517), or by itself:

    python3 python/wheel_backend.py FOLDER    writes the wheel of build/release to that folder

The wheel runs where the module does: on Debian 12 with the libraries that the README names. Its tag
says so as far as tags can: Linux, not manylinux. KRADDON_BUILD names a build folder that has the
package already.
"""
import base64
import datetime
import gzip
import hashlib
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import tomllib
import zipfile

TOP = pathlib.Path(__file__).resolve().parents[1]
EARLIEST = 315532800  # the first second of 1980, the earliest time of an entry


def _version():
    text = (TOP / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(kraddon VERSION (\S+)", text)[1]


def _project():
    return tomllib.loads((TOP / "pyproject.toml").read_text(encoding="utf-8"))["project"]


def _metadata():
    project = _project()
    lines = ["Metadata-Version: 2.1", f"Name: {project['name']}", f"Version: {_version()}",
             f"Summary: {project['description']}", f"License: {project['license']['text']}",
             f"Requires-Python: {project['requires-python']}",
             *(f"Classifier: {one}" for one in project["classifiers"])]
    for extra, needed in project["optional-dependencies"].items():
        lines.append(f"Provides-Extra: {extra}")
        lines += [f"Requires-Dist: {one}; extra == '{extra}'" for one in needed]
    lines += ["Description-Content-Type: text/markdown", "",
              (TOP / project["readme"]).read_text(encoding="utf-8")]
    return "\n".join(lines).encode()


def _build():
    """Builds the package, and returns its folder."""
    built = os.environ.get("KRADDON_BUILD")
    if built:
        return pathlib.Path(built) / "python/kraddon"
    folder = TOP / "build/release"
    # The preset would switch off the tests of a folder that is configured.
    preset = [] if (folder / "build.ninja").exists() else ["--preset", "release"]
    for words in ([*preset, "-B", folder, "-DKRADDON_PYTHON=ON"],
                  ["--build", "--preset", "release", "--target", "kraddon_python_package"]):
        subprocess.run(["cmake", *words], cwd=TOP, check=True, stdout=sys.stderr)
    return folder / "python/kraddon"


def _tag(folder):
    """That of the interpreter that the module was built for, which is in the module's name."""
    name = next(folder.glob("_native.*.so")).name
    version, machine = re.fullmatch(r"_native\.cpython-(\d+)-(.+)-linux-gnu\.so", name).groups()
    return f"cp{version}-cp{version}-linux_{machine}"


def _content(path):
    """The bytes of a file, without the debug information of a library."""
    if path.suffix != ".so" or shutil.which("strip") is None:
        return path.read_bytes()
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder) / path.name
        subprocess.run(["strip", "--strip-unneeded", "-o", stripped, path], check=True)
        return stripped.read_bytes()


def _entry(name, time):
    moment = datetime.datetime.fromtimestamp(max(time, EARLIEST), datetime.timezone.utc)
    entry = zipfile.ZipInfo(name, moment.timetuple()[:6])
    entry.compress_type = zipfile.ZIP_DEFLATED
    entry.external_attr = (0o100755 if name.endswith(".so") else 0o100644) << 16
    return entry


def _record(name, content):
    digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(content)}"


def _files(package, tag):
    files = {f"kraddon/{path.relative_to(package)}": _content(path)
             for path in sorted(package.rglob("*"))
             if path.is_file() and "__pycache__" not in path.parts}
    info = f"kraddon-{_version()}.dist-info"
    files[f"{info}/METADATA"] = _metadata()
    files[f"{info}/LICENSE"] = (TOP / "LICENSE").read_bytes()
    files[f"{info}/WHEEL"] = (f"Wheel-Version: 1.0\nGenerator: kraddon\nRoot-Is-Purelib: false\n"
                              f"Tag: {tag}\n").encode()
    record = [_record(name, content) for name, content in files.items()]
    files[f"{info}/RECORD"] = ("\n".join([*record, f"{info}/RECORD,,"]) + "\n").encode()
    return files


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    package = _build()
    tag = _tag(package)
    name = f"kraddon-{_version()}-{tag}.whl"
    time = int(os.environ.get("SOURCE_DATE_EPOCH") or EARLIEST)
    with zipfile.ZipFile(pathlib.Path(wheel_directory) / name, "w") as wheel:
        for path, content in _files(package, tag).items():
            wheel.writestr(_entry(path, time), content)
    return name


def build_sdist(sdist_directory, config_settings=None):
    """All files that git tracks; without git, all files but those of builds."""
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=TOP, capture_output=True, check=False)
    names = [name for name in listed.stdout.decode().split("\0") if (TOP / name).is_file() and name]
    if listed.returncode != 0:
        names = sorted(str(path.relative_to(TOP)) for path in TOP.rglob("*")
                       if path.is_file() and path.relative_to(TOP).parts[0] != "build")
    stem = f"kraddon-{_version()}"
    packed = io.BytesIO()
    with tarfile.open(fileobj=packed, mode="w", format=tarfile.PAX_FORMAT) as archive:
        for name in names:
            archive.add(TOP / name, f"{stem}/{name}")
        metadata = tarfile.TarInfo(f"{stem}/PKG-INFO")
        metadata.size = len(_metadata())
        archive.addfile(metadata, io.BytesIO(_metadata()))
    path = pathlib.Path(sdist_directory) / f"{stem}.tar.gz"
    path.write_bytes(gzip.compress(packed.getvalue(), mtime=EARLIEST))
    return path.name


if __name__ == "__main__":
    if len(sys.argv) != 2:
        raise SystemExit("usage: wheel_backend.py FOLDER")
    os.makedirs(sys.argv[1], exist_ok=True)
    print(build_wheel(sys.argv[1]))
