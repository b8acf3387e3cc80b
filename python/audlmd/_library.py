"""The C interface by ctypes: finds the library, declares its functions, and makes exceptions of its errors."""

from __future__ import annotations

import ctypes
import json
import os
from typing import Any

_text, _number, _frames, _pointer = ctypes.c_char_p, ctypes.c_int, ctypes.c_int64, ctypes.c_void_p
_options = ctypes.POINTER(ctypes.c_char_p)

# Name: what it returns, what it takes. A text that the caller frees is a pointer here.
_FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "version": (_text, []),
    "error": (_text, []),
    "open": (_pointer, [_text, _options]),
    "from_samples": (_pointer, [_pointer, _frames, _number, _number]),
    "strip": (_pointer, [_pointer, _options]),
    "mix": (_pointer, [_pointer, _options]),
    "free": (None, [_pointer]),
    "channels": (_number, [_pointer]),
    "sample_rate": (_number, [_pointer]),
    "frames": (_frames, [_pointer]),
    "read": (_frames, [_pointer, _frames, _frames, _number, _pointer]),
    "report": (_pointer, [_pointer]),
    "timeline_text": (_pointer, [_pointer]),
    "free_text": (None, [_pointer]),
    "timeline_new": (_pointer, [_options]),
    "timeline_add": (_number, [_pointer, _text, _pointer, _options]),
    "timeline_free": (None, [_pointer]),
    "player_new": (_pointer, [_pointer, _options]),
    "player_free": (None, [_pointer]),
    "player_fill": (None, [_pointer, _pointer, _frames]),
    "player_play": (_number, [_pointer]),
    "player_stop": (_number, [_pointer]),
    "player_seek": (_number, [_pointer, _frames]),
    "player_set_speed": (_number, [_pointer, ctypes.c_double]),
    "player_set_loop": (_number, [_pointer, _frames, _frames]),
    "player_set_gain": (_number, [_pointer, ctypes.c_double]),
    "player_position": (_frames, [_pointer]),
    "player_is_playing": (_number, [_pointer]),
    "player_take_peak": (ctypes.c_float, [_pointer, _number]),
    "player_report": (_pointer, [_pointer]),
}


class Error(Exception):
    """What the library refuses, in its own words: one line for the user."""


class _Library:
    """Calls the functions of `_FUNCTIONS` by their names without `audlmd_`."""

    def __init__(self) -> None:
        name = os.environ.get("AUDLMD_LIBRARY", "libaudlmd_c.so.1")
        try:
            library = ctypes.CDLL(name)
        except OSError as error:
            raise ImportError(f"the library of audlmd cannot be loaded: {error}; install it, or set AUDLMD_LIBRARY "
                              "to its path") from None
        for function, (result, arguments) in _FUNCTIONS.items():
            found = getattr(library, "audlmd_" + function)
            found.restype, found.argtypes = result, arguments
            setattr(self, function, found)

    def path(self) -> str:
        """The file that the system has loaded."""
        with open("/proc/self/maps", encoding="utf-8", errors="surrogateescape") as maps:
            return next((line.split(maxsplit=5)[5].strip() for line in maps if "libaudlmd_c.so" in line), "unknown")

    def checked(self, result: Any) -> Any:
        """What a function has returned, unless that says that it failed."""
        if result is None or result == -1:
            raise Error(self.error().decode("utf-8", "replace"))
        return result

    def read_json(self, function: str, of: Any) -> Any:
        """The JSON that a function returns."""
        text = self.checked(getattr(self, function)(of))
        try:
            return json.loads(ctypes.string_at(text))
        finally:
            self.free_text(text)


library: Any = _Library()


def options(values: dict[str, Any]) -> Any:
    """Options as the library takes them. `fade_in` and `from_` stand for `fadeIn` and `from`; texts stay as they are,
    everything else becomes JSON; None is left out."""
    words: list[bytes] = []
    for key, value in values.items():
        if value is None:
            continue
        first, *others = key.rstrip("_").split("_")
        words.append((first + "".join(word.capitalize() for word in others)).encode())
        words.append((value if isinstance(value, str) else json.dumps(value)).encode("utf-8", "surrogateescape"))
    return (ctypes.c_char_p * (len(words) + 1))(*words, None)
