# What is used of Debian's fsspec, which has no types.
from typing import IO, Any

from .spec import AbstractFileSystem

def open(urlpath: str, mode: str = ..., **options: Any) -> IO[bytes]: ...
def register_implementation(name: str, cls: type[AbstractFileSystem], clobber: bool = ...) -> None: ...
