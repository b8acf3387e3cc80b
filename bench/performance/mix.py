"""Measuring the mixer: its cost beyond that of the strips, and its memory."""

import json
import pathlib
import shutil
import subprocess
import tempfile

from commands import cost, run

CLIP = 48000 * 5
FADE = 48000 // 2


def long_timeline(source, clip):
    """Twenty clips of that length, with crossfades, on each of four tracks."""
    fade = {"length": FADE, "curve": "power"}
    strips = [{"media": str(source), "at": i * (clip - FADE), "from": i * 1000, "to": i * 1000 + clip,
               "fadeIn": fade, "fadeOut": fade} for i in range(20)]
    return {"audlmd": 1, "tracks": [{"name": str(track), "strips": strips} for track in range(4)]}


def measure_mix(build):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="audlmd-bench-", dir="/dev/shm"))
    try:
        together, alone = map(float, run([build / "bench/audlmd-bench-mix", folder]).split())
        source = folder / "source.wav"
        run(["sox", "-n", "-r", 48000, "-c", 2, "-b", 24, source, "synth", 90, "pinknoise", "gain", -24],
            stderr=subprocess.DEVNULL)
        memory = {}
        for times in (1, 4, 16):
            timeline = folder / f"{times}.json"
            timeline.write_text(json.dumps(long_timeline(source, times * CLIP)))
            output = folder / "out.wav"
            memory[times] = cost([build / "audlmd", "mix", timeline, "-o", output, "--format", "s16"])["memory"]
        return {"together": together, "alone": alone, "memory": memory}
    finally:
        shutil.rmtree(folder)
