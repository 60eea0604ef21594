# The native module. Paths of the disk are bytes, those in a package text.
from collections.abc import Callable
from typing import Any, Protocol

Progress = Callable[[int, int], object]

version: str
tables: tuple[Any, Any]

class Stream:
    def readinto(self, buffer: Any) -> int: ...
