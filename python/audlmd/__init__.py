"""Renders, mixes and plays sound: the C interface of audlmd for Python, with NumPy arrays.

Whatever can be heard is a `Sound`: a file, an array, a strip of another sound, the mix of a timeline.

    import audlmd

    with audlmd.open("music.wav") as music:
        end = music.strip(from_="10s", gain=-3, fade_out={"length": "2s", "curve": "power"})
        samples = end.read()            # an array of frames by channels, 32-bit floats

Options have the names of audlmd's own timelines (docs/timeline.schema.json), written `fade_out` or `fadeOut`; `from_`
stands for `from`. Times are frames, or seconds as in "1.5s".

Whatever the library refuses raises `Error`, with its text. Different objects may be used on different threads; one sound
may be read on several.
"""

from __future__ import annotations

import os
from typing import Any, Iterator, Optional, Union

import numpy as np
import numpy.typing as npt

from ._library import Error, library, options

__all__ = ["Error", "Player", "Sound", "Timeline", "from_array", "library_path", "open", "version"]

_FORMATS = {np.dtype(np.float32): 0, np.dtype(np.int16): 1, np.dtype(np.int32): 3}
_DITHERED = 16


def version() -> str:
    """The version of the library, such as "1.1.0.0"."""
    return str(library.version().decode())


def library_path() -> str:
    """The file of the library that was loaded."""
    return str(library.path())


class _Handle:
    """Something of the library's, which is freed once: by close(), at the end of a `with`, or with this object."""

    _free = ""

    def __init__(self, handle: Any) -> None:
        self._handle = library.checked(handle)

    def close(self) -> None:
        """Frees what the library holds. Nothing else may be asked afterwards."""
        handle, self._handle = getattr(self, "_handle", None), None
        if handle is not None:
            getattr(library, self._free)(handle)

    def _use(self) -> Any:
        if self._handle is None:
            raise Error("this is closed already")
        return self._handle

    def __enter__(self) -> Any:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    __del__ = close


class Sound(_Handle):
    """Something that can be heard. Reads the same samples in pieces of any length, from any place."""

    _free = "free"

    @property
    def channels(self) -> int:
        return int(library.channels(self._use()))

    @property
    def sample_rate(self) -> int:
        """In frames per second."""
        return int(library.sample_rate(self._use()))

    @property
    def frames(self) -> int:
        """The length. A frame is one sample of each channel."""
        return int(library.frames(self._use()))

    def __len__(self) -> int:
        return self.frames

    def read(self, position: int = 0, frames: Optional[int] = None, *, dtype: npt.DTypeLike = np.float32,
             dither: bool = False, out: Optional[npt.NDArray[Any]] = None) -> npt.NDArray[Any]:
        """Reads frames from `position` on: `frames` of them, or as many as there are; fewer at the end.

        Returns an array of frames by channels, of float32 (full scale is -1 to 1, nothing is clipped), int16 or int32
        (rounded and clipped; `dither` adds the noise of triangular dither first). `out`, an array of that shape which lies
        in one piece, is filled in place, and what was filled of it is returned.
        """
        channels = self.channels
        if out is None:
            there = max(self.frames - position, 0)
            out = np.empty((there if frames is None else min(max(frames, 0), there), channels), dtype)
        elif out.ndim != 2 or out.shape[1] != channels or not out.flags.c_contiguous or not out.flags.writeable:
            raise Error(f"'out' must be a writeable array of frames by {channels} channels in one piece")
        wanted = len(out) if frames is None else min(frames, len(out))
        if out.dtype not in _FORMATS:
            raise Error(f"samples are float32, int16 or int32, not {out.dtype}")
        sample_format = _FORMATS[out.dtype] | (_DITHERED if dither else 0)
        return out[:library.checked(library.read(self._use(), position, wanted, sample_format, out.ctypes.data))]

    def blocks(self, frames: int = 65536, **how: Any) -> Iterator[npt.NDArray[Any]]:
        """All of the sound, in arrays of so many frames; the last one may be shorter. `how` as in read()."""
        for position in range(0, self.frames, frames):
            yield self.read(position, frames, **how)

    def strip(self, **how: Any) -> Sound:
        """A part of the sound as a strip plays it: `from_`, `to`, `reverse`, `speed`, `converter`, `gain`, `fade_in`,
        `fade_out`, `equaliser`, `automation` and others. `sample_rate` converts the rate, `channels` folds down."""
        return Sound(library.strip(self._use(), options(how)))

    def report(self) -> Any:
        """What went wrong in a mix or a strip so far: clips that were silent or too loud, peaks, notes."""
        return library.read_json("report", self._use())

    def timeline(self) -> Any:
        """The timeline of a mix or a strip, with all defaults written out."""
        return library.read_json("timeline_text", self._use())


def open(path: Union[str, "os.PathLike[str]"], **how: Any) -> Sound:  # pylint: disable=redefined-builtin
    """Opens a sound file, a film or a timeline: the content decides.

    `stream` chooses a stream of a film, from 1; `films=False` starts no program for films, `cache` is the folder of what is
    decoded; `timeline` names one of several; below the folder `media` are looked for media that are not where a timeline
    says; `channels` folds a timeline down; `threads` mix it.
    """
    return Sound(library.open(os.fsencode(path), options(how)))


def from_array(samples: npt.ArrayLike, sample_rate: int) -> Sound:
    """A sound of an array: frames by channels, or frames alone. Integers count up to full scale; the library keeps a copy."""
    array = np.asarray(samples)
    if np.issubdtype(array.dtype, np.signedinteger):
        array = array / -float(np.iinfo(array.dtype).min)
    array = np.ascontiguousarray(array, np.float32)
    if array.ndim == 1:
        array = array[:, np.newaxis]
    if array.ndim != 2:
        raise Error("samples are an array of frames by channels")
    return Sound(library.from_samples(array.ctypes.data, len(array), array.shape[1], sample_rate))


class Timeline(_Handle):
    """A timeline that is built by calls: parts of sounds on tracks, which mix() makes a sound of.

    Options: `name`, `sample_rate`, `channels`, `length`, `time_reference`, `frame_rate`, `markers`.
    """

    _free = "timeline_free"

    def __init__(self, **how: Any) -> None:
        super().__init__(library.timeline_new(options(how)))

    def add(self, sound: Sound, track: str = "", **how: Any) -> None:
        """Places a part of a sound on a track, `at` frames or seconds into the output. Other options as of
        Sound.strip(). A refusal leaves the timeline as it was."""
        name = track.encode("utf-8", "surrogateescape")
        library.checked(library.timeline_add(self._use(), name, sound._use(), options(how)))

    def mix(self, **how: Any) -> Sound:
        """The mix as a sound. `channels` folds it down, so many `threads` render it side by side."""
        return Sound(library.mix(self._use(), options(how)))


class Player(_Handle):
    """Plays a sound live, forwards and backwards, at any speed, from any place. `latency` and `fade` are seconds.

    The program's audio callback calls fill(); everything else may be called on any other thread.
    """

    _free = "player_free"

    def __init__(self, sound: Sound, **how: Any) -> None:
        super().__init__(library.player_new(sound._use(), options(how)))
        self._channels = sound.channels

    def fill(self, out: npt.NDArray[np.float32]) -> None:
        """Fills an array of frames by channels, with silence where nothing plays. Waits for nothing."""
        if out.dtype != np.float32 or out.shape[1:] != (self._channels,) or not out.flags.c_contiguous:
            raise Error(f"'out' must be a float32 array of frames by {self._channels} channels in one piece")
        library.player_fill(self._use(), out.ctypes.data, len(out))

    def play(self) -> None:
        library.checked(library.player_play(self._use()))

    def stop(self) -> None:
        library.checked(library.player_stop(self._use()))

    def seek(self, position: int) -> None:
        """Jumps to a frame of the sound; beyond the sound counts as its ends."""
        library.checked(library.player_seek(self._use(), position))

    def set_speed(self, speed: float) -> None:
        """1 is the sound's own speed, -1 plays backwards."""
        library.checked(library.player_set_speed(self._use(), speed))

    def set_loop(self, start: int, end: int) -> None:
        """Plays a part again and again; no loop where both are 0."""
        library.checked(library.player_set_loop(self._use(), start, end))

    def set_gain(self, decibels: float) -> None:
        library.checked(library.player_set_gain(self._use(), decibels))

    @property
    def position(self) -> int:
        """The frame that the device was given last."""
        return int(library.player_position(self._use()))

    @property
    def is_playing(self) -> bool:
        return bool(library.player_is_playing(self._use()))

    def take_peak(self, channel: int) -> float:
        """The largest magnitude of a channel, counted from 0, since the last call."""
        return float(library.checked(library.player_take_peak(self._use(), channel)))

    def report(self) -> Any:
        """What was late or failed so far."""
        return library.read_json("player_report", self._use())
