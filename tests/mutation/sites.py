# SPDX-License-Identifier: MIT
"""Finds the places of C++ sources that can be changed, and writes the changed sources."""

import hashlib
import itertools
import json
import pathlib
import re

import clang.cindex
from clang.cindex import CursorKind

OTHER_OPERATORS = {
    "+": "-", "-": "+", "*": "+", "/": "*", "%": "*", "<": "<=", "<=": "<", ">": ">=", ">=": ">",
    "==": "!=", "!=": "==", "&&": "||", "||": "&&", "&": "|", "|": "&", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=",
}
OPERATOR_CALLS = ("operator==", "operator!=")
# Values of these must be known when the code is compiled.
FIXED = (CursorKind.ENUM_DECL, CursorKind.CASE_STMT, CursorKind.TEMPLATE_REF,
         CursorKind.STATIC_ASSERT)
# Calls that change only how much time or memory something takes.
WITHOUT_RESULT = ("reserve", "prefetch")
CONDITIONS = (CursorKind.IF_STMT, CursorKind.WHILE_STMT, CursorKind.CONDITIONAL_OPERATOR)
SAME = "kraddon_mutation::isMutant"


def is_constant(variable):
    """Whether it has a value when the code is compiled, or is an array, whose size is such a value."""
    for token in variable.get_tokens():
        if token.spelling in ("=", "{", "("):
            return False
        if token.spelling in ("constexpr", "constinit", "["):
            return True
    return False


def is_decided_when_compiled(statement):
    """Whether it is an `if constexpr`."""
    return [token.spelling for token in itertools.islice(statement.get_tokens(), 2)] == ["if", "constexpr"]


class Site:
    """A place, what is done to it, and the text that does it when its number is chosen."""

    def __init__(self, file, line, start, end, kind, describe, text):
        self.file, self.line, self.start, self.end = file, line, start, end
        self.kind, self.describe, self.text = kind, describe, text

    def overlaps(self, other):
        return self.file == other.file and self.start < other.end and other.start < self.end


class SourceSites:
    """The sites of one file."""

    def __init__(self, root, file, arguments):
        self.file = file
        self.bytes = (root / file).read_bytes()
        self.sites = []
        index = clang.cindex.Index.create()
        self.unit = index.parse(str(root / file), args=[*arguments, "-w"])
        self.path = str(root / file)
        for child in self.unit.cursor.get_children():
            if child.location.file and child.location.file.name == self.path:
                self.visit(child, None)

    def text(self, start, end):
        return self.bytes[start:end].decode()

    def extent(self, cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def add(self, cursor, kind, describe, text):
        start, end = self.extent(cursor)
        if start < end:
            self.sites.append(Site(self.file, cursor.extent.start.line, start, end, kind, describe, text))

    def visit(self, cursor, parent):
        if cursor.kind in FIXED:
            return
        if cursor.kind == CursorKind.VAR_DECL and is_constant(cursor):
            return
        if cursor.kind == CursorKind.CALL_EXPR and cursor.spelling in WITHOUT_RESULT:
            return
        children = list(cursor.get_children())
        if cursor.kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.operator(cursor, children)
        elif cursor.kind == CursorKind.CALL_EXPR:
            self.call(cursor, children, parent)
        elif cursor.kind == CursorKind.INTEGER_LITERAL:
            self.constant(cursor)
        elif cursor.kind == CursorKind.CXX_BOOL_LITERAL_EXPR:
            value = self.text(*self.extent(cursor))
            if value in ("true", "false"):
                self.add(cursor, "constant", f"{value} negated", f"({SAME}(@) ? !{value} : {value})")
        elif cursor.kind == CursorKind.IF_STMT and is_decided_when_compiled(cursor):
            children = children[1:]
        elif cursor.kind in CONDITIONS and children:
            self.condition(children[0])
        for child in children:
            self.visit(child, cursor)

    def operator(self, cursor, children):
        if len(children) != 2:
            return
        start, end = self.extent(cursor)
        left, right = self.extent(children[0])[1], self.extent(children[1])[0]
        between = self.text(left, right) if left < right else ""
        operator = between.strip()
        if operator not in OTHER_OPERATORS:
            return
        other = OTHER_OPERATORS[operator]
        before, after = self.text(start, left), self.text(right, end)
        self.add(cursor, "operator", f"{operator} -> {other}",
                 f"({SAME}(@) ? ({before} {other} {after}) : ({before} {operator} {after}))")

    def call(self, cursor, children, parent):
        start, end = self.extent(cursor)
        if cursor.spelling in OPERATOR_CALLS:
            text = self.text(start, end)
            sign = cursor.spelling.removeprefix("operator")
            if f" {sign} " in text:
                self.add(cursor, "operator", f"{sign} negated", f"({SAME}(@) ? !({text}) : ({text}))")
        elif parent is not None and parent.kind == CursorKind.COMPOUND_STMT:
            if self.bytes[end:end + 1] == b";":
                text = self.text(start, end)
                self.add(cursor, "call", f"{cursor.spelling}() left out",
                         f"if (!{SAME}(@)) {text}")

    def constant(self, cursor):
        value = self.text(*self.extent(cursor))
        if re.fullmatch(r"[0-9A-Fa-fxXuUlL']+", value):
            self.add(cursor, "constant", f"{value} -> {value} + 1",
                     f"({SAME}(@) ? {value} + 1 : {value})")

    def condition(self, cursor):
        if not cursor.kind.is_expression():
            return
        text = self.text(*self.extent(cursor))
        self.add(cursor, "condition", "negated",
                 f"({SAME}(@) ? !static_cast<bool>({text}) : static_cast<bool>({text}))")


def find_sites(root, folders, build):
    """The sites of all sources and headers of those folders (and their detail/)."""
    commands = json.loads((build / "compile_commands.json").read_text())
    words = next(entry["command"].split() for entry in commands
                 if entry["file"].endswith("addon/packaging/AddonPackage.cpp"))
    arguments = [word for word in words if word.startswith(("-I", "-D", "-std"))]
    sites = []
    for folder in folders:
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in (".cpp", ".h"):
                language = ["-x", "c++"]
                sites += SourceSites(root, str(file.relative_to(root)), language + arguments).sites
    return sites


def choose(sites, count, random):
    """Some of them, of which none lies within another."""
    chosen = []
    by_file = {}
    for site in random.sample(sites, len(sites)):
        others = by_file.setdefault(site.file, [])
        if len(chosen) < count and not any(site.overlaps(other) for other in others):
            others.append(site)
            chosen.append(site)
    return chosen


def write(root, target, sites):
    """Writes the files of those sites below `target`; the number of a site is its place in `sites`."""
    by_file = {}
    for number, site in enumerate(sites):
        if site is not None:
            by_file.setdefault(site.file, []).append((number, site))
    for file, numbered in by_file.items():
        data = (pathlib.Path(root) / file).read_bytes()
        for number, site in sorted(numbered, key=lambda pair: -pair[1].start):
            text = site.text.replace("@", str(number)).encode()
            # On one line, so that an error of the compiler names the line of the site.
            lines = data[site.start:site.end].count(b"\n")
            text = b" ".join(text.split(b"\n")) if b"//" not in text else text
            data = data[:site.start] + text + b"\n" * (lines if b"//" not in text else 0) + data[site.end:]
        data = b'#include "tests/mutation/Mutant.h"\n#line 1\n' + data
        new = pathlib.Path(target) / file
        if not new.exists() or new.read_bytes() != data:
            new.write_bytes(data)


def fingerprint(root, sites):
    """Changes when the sources of these sites change, or what is done there."""
    seen = hashlib.sha256()
    for file in sorted({site.file for site in sites}):
        seen.update((pathlib.Path(root) / file).read_bytes())
    seen.update(repr([(site.file, site.start, site.text) for site in sites]).encode())
    return seen.hexdigest()
