"""python3 -m audlmd: the version, and the file of the library."""

from . import library_path, version

print(f"audlmd {version()}, {library_path()}")
