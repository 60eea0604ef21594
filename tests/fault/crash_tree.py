# SPDX-License-Identifier: MIT
"""The model of a crash for a folder with folders in it: a name is only there if those of the folders
above it are. Names are paths below the folder; folders are files without content."""

import os

import crash_model

CALLS = crash_model.CALLS + ",mkdir,mkdirat"


class TreeRecording(crash_model.Recording):

    def _below(self, full):
        """The path below the folder, "" for the folder itself; else nothing."""
        if full == self.folder:
            return ""
        return full[len(self.folder) + 1:] if full.startswith(self.folder + "/") else None

    def _path(self, at, name):
        base = self.folder if at == crash_model.AT_FDCWD else self.open.get(at, [None, "/", 0])[1]
        return self._below(os.path.normpath(os.path.join(base, os.fsdecode(name)))) or None

    def _holds(self, full):
        return self._below(full) is not None

    def _fsync(self, _, descriptor):
        _, path, _ = self.open.get(descriptor, [None, "", 0])
        file = self._file(descriptor)
        if file is not None and self.modes[file] != "folder":
            self._add("flush", file)
        elif self._holds(path):
            self._add("flush-folder", folder=self._below(path))

    _fdatasync = _fsync

    def _mkdirat(self, _, at, path, *__):
        name = self._path(at, path)
        if name is not None:
            file = self._new("folder")
            self._add("create", file)
            self._set_name(name, file)

    def _mkdir(self, result, path, *__):
        self._mkdirat(result, crash_model.AT_FDCWD, path)

    def _syncfs(self, *_):
        for file in range(len(self.content)):
            self._add("flush", file)
        self._add("flush-folder", folder=None)


class TreeDisk(crash_model.Disk):

    def add(self, event):
        if event.kind != "flush-folder":
            super().add(event)
            return
        def is_flushed(name):
            return event.folder is None or os.path.dirname(name) == event.folder
        self.names.update((name, file) for name, file in self.pending if is_flushed(name))
        self.pending = [(name, file) for name, file in self.pending if not is_flushed(name)]

    def states(self, name):
        found = super().states(name)
        while name := os.path.dirname(name):
            if None in self.choices(name):
                found.add(None)
        return found

    def extremes(self):
        """Two trees that may be there: one that lost all that it may lose, and one that has every
        name, and the sizes of files without what was written."""
        least = {name: self.files[file] for name, file in self.names.items() if file is not None}
        most = dict(self.names)
        most.update(self.pending)
        most = {name: self.files[file] for name, file in most.items() if file is not None}
        yield {name: (file.modes[0], file.data) for name, file in least.items() if all(
            folder in least for folder in parents(name))}
        yield {name: (file.modes[-1], file.without_pending_data()) for name, file in most.items()}


def parents(name):
    found = []
    while name := os.path.dirname(name):
        found.append(name)
    return found
