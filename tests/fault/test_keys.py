# SPDX-License-Identifier: MIT
"""Keys and passphrases do not stay in memory, where a core dump would show them."""

import os
import re
import signal
import unittest

import faulttest
import signing
from faulttest import FaultTest, needs_shim

PASSPHRASE = "open sesame, at once"


def memory_of(process):
    """The bytes of all memory that the process may write."""
    parts = []
    with open(f"/proc/{process}/maps", encoding="utf-8") as maps, \
            open(f"/proc/{process}/mem", "rb") as memory:
        for line in maps:
            found = re.match(r"([0-9a-f]+)-([0-9a-f]+) rw", line)
            if not found:
                continue
            begin, end = (int(each, 16) for each in found.groups())
            try:
                memory.seek(begin)
                parts.append(memory.read(end - begin))
            except OSError:
                continue  # of a device
    return b"".join(parts)


def numbers_of(key):
    """The secret numbers of a key as bytes, which memory may hold in either order."""
    text = signing.openssl("pkey", "-in", key, "-noout", "-text").decode()
    names = "prime1|prime2|privateExponent" if "prime1" in text else "priv"
    found = re.findall(rf"^(?:{names}):((?:\n +[0-9a-f:]+)+)", text, re.MULTILINE)
    numbers = [bytes.fromhex(re.sub(r"[\s:]", "", each)).lstrip(b"\0") for each in found]
    return numbers + [number[::-1] for number in numbers]


@needs_shim
class Keys(FaultTest):

    def secrets(self, name):
        """What must not stay, for a signer whose encrypted key is written to 'locked.key'."""
        key = signing.material() / f"{name}.key"
        signing.openssl("pkcs8", "-topk8", "-in", key, "-out", self.path("locked.key"),
                        "-passout", f"pass:{PASSPHRASE}")
        self.path("locked.key").chmod(0o600)
        self.words = ["sign", "p.kraddon", "--key", "locked.key", *signing.words(name)[2:]]
        numbers = numbers_of(key)
        self.assertGreaterEqual(len(numbers), 2)
        lines = self.path("locked.key").read_bytes().split(b"\n")[1:-2]
        return numbers, [PASSPHRASE.encode(), *lines]

    def memory_at(self, rules):
        """The memory of 'sign' where a rule stops it, or nothing if none does."""
        os.environ["KRADDON_PASSPHRASE"] = PASSPHRASE
        try:
            process = self.start_stopped(rules, *self.words)
        finally:
            del os.environ["KRADDON_PASSPHRASE"]
        if process.returncode is not None:
            return None
        try:
            return memory_of(process.pid)
        finally:
            process.send_signal(signal.SIGKILL)
            process.communicate()
            self.restore()

    def test_are_gone_when_the_package_is_written(self):
        self.make_inputs()
        for name in ("rsa", "p256"):
            with self.subTest(key=name):
                numbers, texts = self.secrets(name)
                self.before = faulttest.snapshot(self.folder)
                memory = self.memory_at("nameless:1:SIGSTOP")
                self.assertTrue(any(each in memory for each in numbers), "the key is not found")
                self.assertEqual([each for each in texts if each in memory], [])

                memory = self.memory_at("rename,renamekeeping,link:1:SIGSTOP")
                self.assertEqual([each for each in numbers + texts if each in memory], [])


if __name__ == "__main__":
    faulttest.main()
