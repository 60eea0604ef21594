# SPDX-License-Identifier: MIT
"""What a crash may leave of the files in a folder, derived from the system calls of a program.

The file system of the model keeps no promise but those that the program asked for: what was not
flushed may be lost or kept in any order, a write also in part, a size without its data, and of a
rename one name without the other.
"""

import os
import re

from tracing import whole_lines

CALLS = ("openat,open,creat,close,write,pwrite64,copy_file_range,sendfile,ftruncate,fallocate,"
         "fsync,fdatasync,syncfs,rename,renameat,renameat2,link,linkat,unlink,unlinkat,fchmod,"
         "flock,stat,lstat,newfstatat")
LINE = re.compile(r"^\d+ +(\w+)\((.*)\) += (-?\d+)")
ARGUMENT = re.compile(r'"((?:\\x[0-9a-f]{2})*)"(\.\.\.)?|\[(-?\d+)[^\]]*\]|\{[^}]*\}?|[^,\s]+')
AT_FDCWD = -100
LOCK_UN = 8
MOST_SUBSETS = 8


class Event:
    """Something that happened: `kind` says what, to the file of the number `file`.

    create, write (offset, data), size (size), mode (mode), flush; name (name: it now names the
    file, or nothing); flush-folder; look (name); lock and unlock (name)."""

    def __init__(self, kind, file=None, **details):
        self.kind, self.file = kind, file
        self.details = details

    def __getattr__(self, key):
        return self.details[key]

    def with_file(self, file):
        return Event(self.kind, file, **self.details)


def arguments(text):
    """The arguments of a call: bytes for strings, numbers where they are numbers."""
    found = []
    for match in ARGUMENT.finditer(text):
        word = match[0]
        if word.startswith('"'):
            if match[2]:
                raise ValueError("strace cut a string")
            found.append(bytes.fromhex(match[1].replace("\\x", "")))
        elif match[3] is not None:
            found.append(int(match[3]))
        else:
            try:
                found.append(int(word, 8 if re.fullmatch("0[0-7]+", word) else 0))
            except ValueError:
                found.append(word)
    return found


class Recording:
    """The events in one folder, from the log of strace."""

    def __init__(self, folder, files):
        """`files` are the contents and modes at the beginning: {name: (mode, bytes)}."""
        self.folder = str(folder)
        self.umask = os.umask(0)
        os.umask(self.umask)
        self.names = {}    # path: file
        self.content = []  # of each file: bytearray
        self.modes = []
        for name, (mode, data) in files.items():
            self.names[name] = self._new(mode, data)
        self.first = dict(self.names)
        self.initial = [(mode, bytes(data)) for mode, data in zip(self.modes, self.content)]
        self.open = {}     # descriptor: [file or None, path, position]
        self.events = []

    def _new(self, mode, data=b""):
        self.content.append(bytearray(data))
        self.modes.append(mode)
        return len(self.content) - 1

    def read(self, log):
        for line in whole_lines(log):
            match = LINE.match(line)
            if not match or int(match[3]) < 0:
                continue
            handle = getattr(self, "_" + match[1], None)
            if handle:
                handle(int(match[3]), *arguments(match[2]))
        return self

    def _path(self, at, name):
        """Of a file directly in the folder its name there, else nothing."""
        base = self.folder
        if at != AT_FDCWD:
            base = self.open.get(at, [None, "/", 0])[1]
        path = os.path.normpath(os.path.join(base, os.fsdecode(name)))
        return os.path.basename(path) if os.path.dirname(path) == self.folder else None

    def _holds(self, full):
        """Whether files of a folder are recorded."""
        return full == self.folder

    def _add(self, kind, file=None, **details):
        self.events.append(Event(kind, file, **details))

    # ---- calls --------------------------------------------------------------------------------

    def _openat(self, result, at, path, flags, mode=0):
        base = self.folder if at == AT_FDCWD else self.open.get(at, [None, "/", 0])[1]
        full = os.path.normpath(os.path.join(base, os.fsdecode(path)))
        name = self._path(at, path)
        if flags & os.O_TMPFILE == os.O_TMPFILE:
            file = self._new(mode & ~self.umask) if self._holds(full) else None
            if file is not None:
                self._add("create", file)
        elif name is None:
            file = None
        else:
            file = self._open_named(name, flags, mode)
        self.open[result] = [file, full, 0]

    def _open_named(self, name, flags, mode):
        file = self.names.get(name)
        if file is None and flags & os.O_CREAT:
            file = self._new(mode & ~self.umask)
            self.names[name] = file
            self._add("create", file)
            self._add("name", file, name=name)
        elif file is not None and flags & os.O_TRUNC:
            self._size(file, 0)
        return file

    def _open(self, result, path, flags, mode=0):
        self._openat(result, AT_FDCWD, path, flags, mode)

    def _close(self, _, descriptor):
        file, path, _ = self.open.pop(descriptor, [None, "", 0])
        if file is not None:
            self._add("unlock", file, name=os.path.basename(path))

    def _store(self, file, offset, data):
        content = self.content[file]
        content.extend(bytes(max(0, offset + len(data) - len(content))))
        content[offset:offset + len(data)] = data
        self._add("write", file, offset=offset, data=bytes(data))

    def _file(self, descriptor):
        return self.open.get(descriptor, [None])[0]

    def _write(self, result, descriptor, data, _):
        if self._file(descriptor) is not None:
            self._store(self._file(descriptor), self.open[descriptor][2], data[:result])
            self.open[descriptor][2] += result

    def _pwrite64(self, result, descriptor, data, _, offset):
        if self._file(descriptor) is not None:
            self._store(self._file(descriptor), offset, data[:result])

    def _copy_file_range(self, result, source, start, target, place, *_):
        if self._file(target) is None:
            return
        # Without an offset it is that of the descriptor, which moves.
        if not isinstance(start, int):
            start = self._advance(source, result)
        if not isinstance(place, int):
            place = self._advance(target, result)
        data = self.content[self._file(source)][start:start + result]
        self._store(self._file(target), place, data)

    def _advance(self, descriptor, size):
        self.open[descriptor][2] += size
        return self.open[descriptor][2] - size

    def _sendfile(self, result, target, source, start, *_):
        if self._file(target) is not None:
            data = self.content[self._file(source)][start:start + result]
            self._store(self._file(target), self.open[target][2], data)
            self.open[target][2] += result

    def _size(self, file, size):
        content = self.content[file]
        del content[size:]
        content.extend(bytes(size - len(content)))
        self._add("size", file, size=size)

    def _ftruncate(self, _, descriptor, size):
        if self._file(descriptor) is not None:
            self._size(self._file(descriptor), size)

    def _fsync(self, _, descriptor):
        file, path, _ = self.open.get(descriptor, [None, "", 0])
        if file is not None:
            self._add("flush", file)
        elif path == self.folder:
            self._add("flush-folder")

    _fdatasync = _fsync

    def _syncfs(self, *_):
        for file in range(len(self.content)):
            self._add("flush", file)
        self._add("flush-folder")

    def _fchmod(self, _, descriptor, mode):
        if self._file(descriptor) is not None:
            self._add("mode", self._file(descriptor), mode=mode)

    def _set_name(self, name, file):
        if name is None:
            return
        if file is None:
            self.names.pop(name, None)
        else:
            self.names[name] = file
        self._add("name", file, name=name)

    def _linkat(self, _, at, path, to, name, *__):
        nameless = re.fullmatch(rb"/proc/self/fd/(\d+)", path)
        file = self._file(int(nameless[1])) if nameless else self.names.get(self._path(at, path))
        if file is not None:
            self._set_name(self._path(to, name), file)

    def _renameat2(self, _, at, path, to, name, *__):
        old = self._path(at, path)
        file = self.names.get(old)
        if file is not None:
            self._set_name(self._path(to, name), file)
            self._set_name(old, None)

    _renameat = _renameat2

    def _rename(self, result, path, name):
        self._renameat2(result, AT_FDCWD, path, AT_FDCWD, name)

    def _unlinkat(self, _, at, path, *__):
        name = self._path(at, path)
        if name in self.names:
            self._add("unlock", self.names[name], name=name)
            self._set_name(name, None)

    def _unlink(self, result, path):
        self._unlinkat(result, AT_FDCWD, path)

    def _flock(self, _, descriptor, how):
        file, path, _ = self.open.get(descriptor, [None, "", 0])
        if file is not None:
            kind = "unlock" if how & LOCK_UN else "lock"
            self._add(kind, file, name=os.path.basename(path))

    def _newfstatat(self, _, at, path, *__):
        if self._path(at, path) is not None and path:
            self._add("look", name=self._path(at, path))

    def _stat(self, _, path, *__):
        self._newfstatat(0, AT_FDCWD, path)

    _lstat = _stat


class File:
    """What a crash may leave of one file."""

    def __init__(self, mode, data):
        self.data = data   # that is on the disk for certain
        self.modes = [mode]
        self.pending = []  # writes and sizes

    def add(self, event):
        if event.kind == "mode":
            self.modes.append(event.mode)
        elif event.kind == "flush":
            self.data = self._after(self.pending)
            self.pending, self.modes = [], self.modes[-1:]
        else:
            self.pending.append(event)

    def _after(self, events, cut=None):
        """The content after these events, of the last of which only `cut` bytes arrived."""
        content = bytearray(self.data)
        for number, event in enumerate(events):
            if event.kind == "size":
                del content[event.size:]
                content.extend(bytes(event.size - len(content)))
                continue
            data = event.data[:cut] if number == len(events) - 1 else event.data
            content.extend(bytes(max(0, event.offset + len(data) - len(content))))
            content[event.offset:event.offset + len(data)] = data
        return bytes(content)

    def _subsets(self):
        count = len(self.pending)
        if count <= MOST_SUBSETS:
            for bits in range(1 << count):
                yield [event for i, event in enumerate(self.pending) if bits >> i & 1]
            return
        for i in range(count + 1):
            yield self.pending[:i]
        for i in range(count):
            yield self.pending[:i] + self.pending[i + 1:]
            yield [self.pending[i]]

    def without_pending_data(self):
        """The content if all sizes are on the disk, and no data that was not flushed."""
        whole = self._after(self.pending)
        return (self.data + bytes(max(0, len(whole) - len(self.data))))[:len(whole)]

    def states(self):
        """All (mode, content) that may be there."""
        contents = {self._after(events) for events in self._subsets()}
        for i, event in enumerate(self.pending):
            if event.kind == "write":
                for cut in (1, len(event.data) // 2, len(event.data) // 4096 * 4096):
                    contents.add(self._after(self.pending[:i + 1], cut))
        if self.pending:
            whole = self._after(self.pending)
            contents.add(self.data + bytes(max(0, len(whole) - len(self.data))))
        return {(mode, content) for mode in self.modes for content in contents}


class Disk:
    """The folder as it may be found after a crash at this moment."""

    def __init__(self, recording):
        self.files = {number: File(*each) for number, each in enumerate(recording.initial)}
        self.recording = recording
        self.names = dict(recording.first)  # that are on the disk for certain
        self.pending = []                   # (name, file)

    def add(self, event):
        if event.kind == "create":
            self.files[event.file] = File(self.recording.modes[event.file], b"")
        elif event.kind == "name":
            self.pending.append((event.name, event.file))
        elif event.kind == "flush-folder":
            self.names.update(self.pending)
            self.pending = []
        elif event.kind in ("write", "size", "mode", "flush"):
            self.files[event.file].add(event)

    def choices(self, name):
        """The files, or None, that may have the name."""
        return {self.names.get(name), *(file for each, file in self.pending if each == name)}

    def all_names(self):
        return {*self.names, *(name for name, _ in self.pending)}

    def states(self, name):
        """All that may be found under the name: (mode, content), or None."""
        found = set()
        for file in self.choices(name):
            found |= {None} if file is None else self.files[file].states()
        return found


def violations(recording, events, target, old, new, must_look):
    """What is wrong with the order of the events that replace `target`; `old` and `new` are
    (mode, content), the former may be None. With `must_look`, the new file derives from the old
    one, which has to be there still. Also returns the number of states."""
    disk = Disk(recording)
    found, count = [], 0
    held, looked = set(), False
    for number, event in enumerate(events):
        disk.add(event)
        if event.kind == "lock":
            held.add(event.name)
            looked = False
        elif event.kind == "unlock":
            held.discard(event.name)
        elif event.kind == "look" and event.name == target:
            looked = True
        elif event.kind == "name" and event.name == target:
            if f".{target}.commit.tmp" not in held or (must_look and not looked):
                found.append(f"{number}: named without a lock that was held since the last look")
        states = disk.states(target)
        count += len(states)
        if states - {old, new}:
            found.append(f"{number}: after '{event.kind}' neither the old nor the new file")
    if disk.states(target) != {new}:
        found.append("at the end not certainly the new file")
    return found, count
