"""examples.py PAGE: runs the programs of a page one after another, as in one session, beside the files that they name."""

import math
import os
import pathlib
import re
import struct
import sys
import tempfile
import wave

programs = re.findall(r"```python\n(.*?)```", pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"), re.S)
assert len(programs) >= 4, "the page has lost its programs"
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    for name in ("music.wav", "voice.wav"):
        with wave.open(name, "wb") as file:
            file.setparams((2, 2, 48000, 0, "NONE", ""))
            file.writeframes(b"".join(struct.pack("<h", int(9000 * math.sin(i / 9))) for i in range(2 * 96000)))
    names = {}
    for program in programs:
        exec(compile(program, sys.argv[1], "exec"), names)  # pylint: disable=exec-used
