# SPDX-License-Identifier: MIT
"""Types that several modules name."""
import os
import typing
from typing import Callable, Union

# A path on disk.
StrPath = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
# Called with the bytes that are done and the bytes in total.
Progress = Callable[[int, int], object]
# Any number of them.
Texts = typing.Iterable[str]
Paths = typing.Iterable[StrPath]
