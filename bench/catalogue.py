# SPDX-License-Identifier: MIT
"""Sites of many packages, beside programs that index the packages of distributions."""

import contextlib
import itertools
import json
import os
import random
import shutil
import sqlite3
import subprocess

from contest import Contest, Figure, Goal, Peer, run_once
from packages import Addons, Debs, Rpms, fill, make_packages

SIZE = 30000        # bytes of a package in the contests
SMALL = 5000        # of one of thousands
WORDS_IN_ALL = 20000
SEARCHES = 500


class PeakMemory:
    """The peak memory of our program with a tenth of the packages and with all of them."""

    def __init__(self, work, command, counts, goal):
        self.work, self.command, self.counts, self.goal = work, command, counts, goal

    def hold(self, _rounds, _seconds):
        peaks = [run_once(self.command(count)).memory / 2 ** 20 for count in self.counts]
        return [Figure(self.work, "-", peaks[1], None, Goal(), "MiB"),
                Figure("  by that of %s" % format(self.counts[0], ","), "-", peaks[1] / peaks[0],
                       None, self.goal)]


class Slowest:
    """The time that only one command of a hundred takes longer than, in milliseconds."""

    def __init__(self, work, commands, goal):
        self.work, self.commands, self.goal = work, commands, goal

    def hold(self, _rounds, _seconds):
        for command in self.commands[:20]:
            run_once(command)
        # Each twice: what other programs take from the one is not taken from the other.
        times = sorted(min(run_once(command).seconds for _ in range(2)) * 1000
                       for command in self.commands)
        figure = Figure(self.work, "-", times[len(times) * 99 // 100], None, self.goal, "ms")
        figure.details = {"seconds": round(times[len(times) // 2] / 1000, 5), "rounds": len(times)}
        return [figure]


class Catalogue:
    def __init__(self, inputs):
        self.inputs = inputs
        self.kraddon = inputs.kraddon
        self.scale = 10 if inputs.quick else 1

    def packages(self, kind, count, size):
        name = "%s%d-%d" % (kind.extension[1:], count, size)
        return self.inputs.once(name, lambda path: make_packages(kind, self.kraddon, path, count,
                                                                 size))

    def works(self):
        yield self.in_one_go()
        yield from self.large_sites()
        yield self.searches()

    def in_one_go(self):
        inputs, count = self.inputs, 1000 // self.scale
        addons, rpms, debs = (self.packages(kind, count, SIZE) for kind in (Addons, Rpms, Debs))
        site = inputs.path("site")
        goal = Goal(1)
        return Contest(
            "index, %s packages" % format(count, ","), [self.kraddon, "index", site, addons, "-q"],
            [Peer("createrepo_c", ["createrepo_c", "-q", rpms], goal),
             Peer("apt-ftparchive packages", ["apt-ftparchive", "packages", debs], goal)],
            inputs.remover("site", os.path.join(rpms, "repodata")))

    def large_sites(self):
        inputs = self.inputs
        few, many = 1000 // self.scale, 10000 // self.scale
        packages = {count: self.packages(Addons, count, SMALL)
                    for count in (few // 10, few, many)}

        def index(count):
            site = os.path.join(inputs.disk, "site%d" % count)
            return [self.kraddon, "index", site, packages[count], "-q"]

        yield PeakMemory("index, %s packages, peak memory" % format(many, ","), index, (few, many),
                         Goal(1.5))
        for count in (few // 10, many):
            if not os.path.exists(os.path.join(inputs.disk, "site%d" % count)):
                run_once(index(count))
        news = self.new_packages()
        for place, folder in (("in memory", inputs.folder), ("on a disk", inputs.disk)):
            sites = [os.path.join(folder, "site%d" % count) for count in (many, few // 10)]
            for site in sites:
                if not os.path.exists(site):
                    shutil.copytree(os.path.join(inputs.disk, os.path.basename(site)), site)
            add = [lambda site=site: [self.kraddon, "index", site, next(news), "-q"]
                   for site in sites]
            yield Contest("add one to %s, %s" % (format(many, ","), place), add[0],
                          [Peer("the same to %d" % (few // 10), add[1], Goal(2), own=True)])
            inputs.remove(*sites)

    def new_packages(self):
        """Paths of packages that no site has, one after the other."""
        source, work = self.inputs.path("new-source"), self.inputs.path("new-work")
        fill(source, SMALL)
        os.makedirs(work)
        maker = Addons(self.kraddon, work, source)
        path = self.inputs.path("new.kraddon")
        for number in itertools.count(500000):
            with open(path, "wb") as file:
                file.write(maker.make(number))
            yield path

    def searches(self):
        count = 100000 // self.scale
        site = self.inputs.once("records%d" % count, lambda path: self.make_up(path, count))
        source = random.Random(7)
        vocabulary = made_up_words()
        commands = [[self.kraddon, "search", site, *some_query(source, vocabulary)]
                    for _ in range(SEARCHES)]
        return Slowest("search, %s records, 99th percentile" % format(count, ","), commands,
                       Goal(20))

    def make_up(self, path, count):
        """A site with nothing but a database of so many records."""
        source, work = self.inputs.path("one-source"), self.inputs.path("one-work")
        fill(source, SMALL)
        os.makedirs(work)
        with open(os.path.join(work, "one.kraddon"), "wb") as file:
            file.write(Addons(self.kraddon, work, source).make(1))
        subprocess.run([self.kraddon, "index", path, os.path.join(work, "one.kraddon"), "-q"],
                       check=True)
        with contextlib.closing(sqlite3.connect(os.path.join(path, "catalogue.sqlite"))) as database:
            fill_database(database, count)


def made_up_words():
    source = random.Random(3)
    syllables = [first + vowel for first in "bdfgklmnprstvz" for vowel in "aeiou"]
    return ["".join(source.choices(syllables, k=source.randint(2, 4))) for _ in range(WORDS_IN_ALL)]


def some_words(source, vocabulary, count):
    """Some are in many texts, most in few."""
    return [vocabulary[int(len(vocabulary) * source.random() ** 3)] for _ in range(count)]


def some_query(source, vocabulary):
    """One to three words, or their beginnings; some of an author."""
    words = some_words(source, vocabulary, source.choice((1, 1, 2, 3)))
    words = [word[:source.randint(2, len(word))] for word in words]
    if source.random() < 0.2:
        words[0] = "author:" + words[0]
    return words


def fill_database(database, count):
    source, vocabulary = random.Random(5), made_up_words()
    columns = [row[1] for row in database.execute("PRAGMA table_info(versions)")]
    [first] = database.execute("SELECT * FROM versions").fetchall()

    def rows():
        for number in range(count):
            row = dict(zip(columns, first))
            row["addon"] = row["guid"] = "0c3a0d9e-5b7a-4a53-9c58-%012d" % number
            row["name"] = " ".join(some_words(source, vocabulary, 2)).title()
            row["author"] = " ".join(some_words(source, vocabulary, 2)).title()
            row["summary"] = " ".join(some_words(source, vocabulary, 8))
            row["description"] = " ".join(some_words(source, vocabulary, 60))
            row["requirements"] = json.dumps([])
            yield [row[column] for column in columns]

    for table in ("versions", "addons", "texts"):
        database.execute("DELETE FROM %s" % table)
    database.executemany("INSERT INTO versions VALUES(%s)" % ", ".join("?" * len(columns)), rows())
    database.execute("INSERT INTO addons SELECT rowid, addon, position, '' FROM versions")
    database.execute("INSERT INTO texts SELECT rowid, lower(name), lower(author), summary, "
                     "description, '' FROM versions")
    database.execute("INSERT INTO words(words) VALUES('rebuild')")
    database.execute("INSERT INTO words(words) VALUES('optimize')")
    database.commit()
