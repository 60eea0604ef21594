# SPDX-License-Identifier: MIT
"""Whatever a power cut leaves of a site on the disk, it is the old one or the new one, whole."""

import json
import os
import shutil
import unittest

import crash_tree
import faulttest
from test_site import SiteTest
from tracing import can_trace, strace

ROOT = "site/root.json"
FOLLOWERS = ("index.html", "terms.js", "catalogue.sqlite", "records.ndjson")


@unittest.skipUnless(can_trace(), "needs strace, and permission to trace")
class States(SiteTest):

    def tree(self):
        """All below the folder: modes, and bytes of files."""
        return {name: ("folder", b"") if mode == "folder" else (mode, data)
                for name, (mode, data) in faulttest.snapshot(self.folder).items()}

    def record(self, is_there, words):
        """Runs the command; sets `recording`, and the trees before and after."""
        self.restore_site(is_there)
        self.old = self.tree()
        log = self.scratch / "trace"
        # Without a second thread, so that numbers of files are in the order of their use.
        one = ["taskset", "-c", str(min(os.sched_getaffinity(0)))]
        result = self.run_kraddon(*self.words(words),
                                  prefix=strace(log, crash_tree.CALLS) + one)
        self.assertEqual((result.code, result.errors), (0, ""))
        self.new = self.tree()
        self.recording = crash_tree.TreeRecording(self.folder, self.old).read(log.read_text())
        names = {name: bytes(self.recording.content[file])
                 for name, file in self.recording.names.items()}
        self.assertEqual(names, {name: data for name, (_, data) in self.new.items()},
                         "the recording differs from the run")

    def named(self, tree):
        """What a root names, with itself: {path: (mode, bytes)}; nothing if there is none."""
        if ROOT not in tree:
            return {}
        def parse(path):
            return json.loads(tree[path][1])
        index = "site/" + parse(ROOT)["index"]["path"]
        shards = ["site/" + shard["path"] for shard in parse(index)["shards"].values()]
        records = [record for path in shards for records in parse(path)["addons"].values()
                   for record in records]
        paths = [ROOT, index, *shards, *("site/" + record[key] for record in records for key in (
            "package", "page", "screenshot") if record[key])]
        return {path: tree[path] for path in paths}

    def violations(self):
        disk = crash_tree.TreeDisk(self.recording)
        sites = [self.named(self.old), self.named(self.new)]
        roots = [site.get(ROOT) for site in sites]
        found = []
        for number, event in enumerate(self.recording.events):
            disk.add(event)
            if event.kind not in ("name", "write", "size", "flush-folder"):
                continue
            states = disk.states(ROOT)
            if states - set(roots):
                found.append(f"{number}: neither the old nor the new root")
            for root, site, other in zip(roots, sites, reversed(sites)):
                # The page of a version that is replaced follows the root.
                torn = [path for path, state in site.items() if root in states and path != ROOT
                        and disk.states(path) - {state, other.get(path, state)}]
                found += [f"{number}: after '{event.kind}' not certainly {path}" for path in torn]
        for path in [ROOT, *(f"site/{name}" for name in FOLLOWERS)]:
            if disk.states(path) != {self.new[path]}:
                found.append(f"at the end not certainly {path}")
        return found

    def test_hold_the_old_site_or_the_new_one(self):
        self.learn_sites()
        for is_there, words in self.commands():
            with self.subTest(command=words):
                self.record(is_there, words)
                self.assertEqual(self.violations(), [])

    def test_of_many_packages_hold_the_old_site_or_the_new_one(self):
        self.learn_sites()
        many = [self.addon(f"many{i}.kraddon", f"Many {i}", "1.0", i) for i in range(10, 31)]

        self.record(True, many)

        self.assertIn(None, [event.folder for event in self.recording.events
                             if event.kind == "flush-folder"])  # the whole file system at once
        self.assertEqual(self.violations(), [])

    def test_do_not_disturb_the_next_command(self):
        self.learn_sites()
        for is_there, words in self.commands():
            _, new = self.expected(is_there, words)
            self.record(is_there, words)
            states = self.all_states()
            self.assertGreater(len(states), 10)
            for state in states[::1 if faulttest.FULL else 5]:
                shutil.rmtree(self.path("site"))
                for name, (mode, data) in sorted(state.items()):
                    if mode == "folder":
                        self.path(name).mkdir(exist_ok=True)
                    elif name.startswith("site/"):
                        self.write(name, data)
                self.path("site").mkdir(exist_ok=True)
                self.assert_goes_on(words, new, f"with {sorted(state)}")

    def all_states(self):
        """The worst that a crash may leave at any moment, each once."""
        disk = crash_tree.TreeDisk(self.recording)
        found = {}
        for event in self.recording.events:
            disk.add(event)
            if event.kind in ("name", "flush-folder"):
                for state in disk.extremes():
                    found[frozenset(state.items())] = state
        return list(found.values())

    def test_notice_what_is_not_flushed(self):
        self.learn_sites()
        for is_there, words in self.commands():
            self.record(is_there, words)
            events = self.recording.events
            for kind in ("flush", "flush-folder"):
                with self.subTest(command=words, missing=kind):
                    self.recording.events = [event for event in events if event.kind != kind]
                    self.assertTrue(self.violations())


if __name__ == "__main__":
    faulttest.main()
