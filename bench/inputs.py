# SPDX-License-Identifier: MIT
"""The folders, packages and archives of the benchmarks, made once for a whole run."""

import json
import os
import random
import shutil
import subprocess
import traceback

WORDS = ("function", "end", "return", "signal", "window", "spectrum", "filter", "length", "zeros",
         "for", "if", "else", "sum", "mean", "value", "index", "count", "plot", "figure", "while")


def random_texts(count):
    """At most so many that a million files do not take minutes."""
    source = random.Random(count)
    return [" ".join(source.choices(WORDS, k=source.randint(20, 300)))
            for _ in range(min(count, 100000))]


class Inputs:
    def __init__(self, folder, disk, kraddon, quick):
        """`folder` may be in memory; `disk` is a folder on a disk, for what depends on it."""
        self.folder = folder
        self.disk = disk
        self.kraddon = kraddon
        self.host_calls = os.path.join(os.path.dirname(kraddon), "host_calls")
        self.python_package = os.path.join(os.path.dirname(os.path.dirname(kraddon)), "python")
        self.quick = quick

    def module_calls(self, module):
        """The beginning of a command line that reads a package in Python."""
        return ["env", "PYTHONPATH=" + self.python_package, "/usr/bin/python3", "-B",
                os.path.join(os.path.dirname(os.path.abspath(__file__)), "module_calls.py"), module]

    def path(self, name):
        return os.path.join(self.folder, name)

    def shell(self, command):
        """A command line for this folder."""
        return ["bash", "-c", "cd '%s' && %s" % (self.folder, command)]

    def remove(self, *names):
        """Removes these files and folders if they exist."""
        for name in names:
            target = self.path(name)
            if os.path.isdir(target):
                shutil.rmtree(target)
            elif os.path.lexists(target):
                os.remove(target)

    def remover(self, *names):
        return lambda: self.remove(*names)

    def once(self, name, make):
        """The path of `name`, which `make(path)` makes unless it exists. It does so in a process of
        its own: the peak memory of a program begins with that of the process that starts it."""
        path = self.path(name)
        if os.path.exists(path):
            return path
        child = os.fork()
        if child == 0:
            try:
                make(path)
            except BaseException:
                traceback.print_exc()
                os._exit(1)
            os._exit(0)
        if os.waitpid(child, 0)[1] != 0:
            raise RuntimeError("cannot make '%s'" % path)
        return path

    def stripped(self):
        """The program without its symbols, as it is installed."""
        return self.once("stripped", lambda path: subprocess.run(
            ["strip", "-o", path, self.kraddon], check=True))

    def headers(self):
        """A copy of the system's headers, with links resolved."""
        source = "/usr/include" + ("/c++" if self.quick else "")

        def make(path):
            subprocess.run(["cp", "-rL", source, path], check=False, stderr=subprocess.DEVNULL)
        return self.once("headers", make)  # links that lead nowhere are left out

    def project(self, tree):
        """A project with the files of a tree."""
        def make(path):
            subprocess.run(["cp", "-al", tree, path], check=True)
            with open(os.path.join(path, "kraddon.toml"), "w", encoding="ascii") as file:
                file.write('[package]\nname = "bench"\nversion = "1.0"\n')
        return self.once("project", make)

    def copies(self, package, count):
        """Paths of copies of a package."""
        def make(path):
            os.makedirs(path)
            for number in range(count):
                shutil.copyfile(package, os.path.join(path, "%03d.kraddon" % number))
        folder = self.once("copies", make)
        return [os.path.join(folder, name) for name in sorted(os.listdir(folder))]

    def texts(self, count):
        """A tree with that many small files, like those of a toolbox."""
        def make(path):
            texts = random_texts(count)
            for number in range(count):
                folder = "%s/group%02d/set%02d" % (path, number // 5000, number // 50 % 100)
                if number % 50 == 0:
                    os.makedirs(folder, exist_ok=True)
                with open("%s/step%06d.m" % (folder, number), "w", encoding="ascii") as file:
                    file.write("%% step %d\n%s\n" % (number, texts[number % len(texts)]))
        return self.once("texts%d" % count, make)

    def large_file(self):
        """A folder with one file of 1 GiB (quick: 64 MiB), every second block of it text."""
        blocks = 32 if self.quick else 512

        def make(path):
            os.makedirs(path)
            source = random.Random(1)
            with open(os.path.join(path, "large.bin"), "wb") as file:
                for _ in range(blocks):
                    file.write(os.urandom(1 << 20))
                    text = " ".join(source.choices(WORDS, k=190000)).encode("ascii")
                    file.write(text[:1 << 20].ljust(1 << 20))
        return self.once("large", make)

    def blocks(self):
        """A folder with 300 MB that cannot be compressed."""
        def make(path):
            os.makedirs(path)
            for number in range(5 if self.quick else 30):
                with open(os.path.join(path, "%d.bin" % number), "wb") as file:
                    file.write(os.urandom(10 << 20))
        return self.once("blocks", make)

    def small_file(self):
        def make(path):
            with open(path, "w", encoding="ascii") as file:
                file.write("x = 1;\n")
        return self.once("one.m", make)

    def package(self, tree):
        """Our package of a folder made by one of the above."""
        name = os.path.basename(tree) + ".kraddon"
        return self.once(name, lambda path: subprocess.run(
            [self.kraddon, "create", path, tree, "--name", "bench"], check=True))

    def licensed(self, package):
        """The same package with a license, as it is after 'set'."""
        name = "licensed-" + os.path.basename(package)

        def make(path):
            shutil.copy(package, path)
            subprocess.run([self.kraddon, "set", path, "license", "type=MIT", "text=As it is."],
                           check=True)
        return self.once(name, make)

    def signer(self):
        """The options that name a key and its certificate."""
        key, certificate = self.path("signer.key"), self.path("signer.pem")
        self.once("signer.pem", lambda path: subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "rsa:3072", "-nodes", "-keyout", key, "-out", path,
             "-days", "30", "-subj", "/CN=bench"], check=True, stderr=subprocess.DEVNULL))
        return ["--key", key, "--certificate", certificate]

    def signed(self, package):
        """The same package, signed."""
        def make(path):
            shutil.copy(package, path)
            subprocess.run([self.kraddon, "sign", path, *self.signer()], check=True)
        return self.once("signed-" + os.path.basename(package), make)

    def archive(self, tree):
        """A ZIP file of the same folder, made by zip."""
        name = os.path.basename(tree) + ".zip"
        return self.once(name, lambda path: subprocess.run(
            ["zip", "-q", "-r", "-6", path, os.path.basename(tree)], cwd=self.folder, check=True))

    def records(self, count):
        """Paths of JSON files with that many records, by document."""
        documents = {
            "revisions": [{"date": "2026-01-01", "version": "1.%d" % i, "description": "Change %d"
                           % i} for i in range(count)],
            "examples": [{"name": "All", "examples": [
                {"name": "Example %d" % i, "type": "script", "source": "e/%d.m" % i, "main": "",
                 "thumbnail": "", "images": ["e/%d.png" % i]} for i in range(count)]}],
            "requirements": {"productDependency": [
                {"name": "Product %d" % i, "version": "1", "identifier": "P%d" % i}
                for i in range(count)]}}
        paths = {}
        for name, value in documents.items():
            paths[name] = self.path("%s%d.json" % (name, count))
            with open(paths[name], "w", encoding="utf-8") as file:
                json.dump(value, file)
        return paths

    def empty_package(self, count):
        return self.once("empty%d.kraddon" % count, lambda path: subprocess.run(
            [self.kraddon, "create", path, "--name", "bench"], check=True))
