"""commands.py ROOT BIN: types the lines of the documents that begin with `audlmd`, `for` or `parallel`, in a folder with the
files that they name, and fails where one fails or where a file that it names is not there afterwards.

Playing goes to a device that swallows everything.
"""

import array
import math
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import wave

root, binaries = pathlib.Path(sys.argv[1]), sys.argv[2]
PAGES = ["README.md", "docs/files.md"]
# What a reader brings along, by name.
MEDIA = {"song.wav": 90, "take.flac": 90, "take.wav": 2, "master.wav": 2,
         "speech.wav": 3, "voice.wav": 2, "music.wav": 2, "film51.wav": 2}
TIMELINE = """{"audlmd": 1, "name": "film", "sampleRate": 48000, "channels": 2, "tracks": [{"name": "voice",
  "strips": [{"media": "voice.wav", "at": 0, "from": 0, "to": "1s"}]}]}"""
# Made by ffmpeg; without it, the lines that name them are left out.
FILMS = {"film.mov": "-i voice.wav -c copy",
         "film.mxf": "-f lavfi -i testsrc=d=2 -i voice.wav -i music.wav -map 0 -map 1 -map 2 -c:v mpeg2video -c:a pcm_s16le -ar 48000"}
FFMPEG = shutil.which("ffmpeg")
ALSA = "pcm.!default { type null }\n"


def chunk(identifier, content):
    return identifier + struct.pack("<I", len(content)) + content + bytes(len(content) % 2)


def add_markers(path, places):
    cue, labels = struct.pack("<I", len(places)), b"adtl"
    for number, (name, sample) in enumerate(places.items()):
        cue += struct.pack("<2I4s3I", number, sample, b"data", 0, 0, sample)
        labels += chunk(b"labl", struct.pack("<I", number) + name.encode() + b"\0")
    content = path.read_bytes()[8:] + chunk(b"cue ", cue) + chunk(b"LIST", labels)
    path.write_bytes(chunk(b"RIFF", content))


def make_media(folder):
    for name, seconds in MEDIA.items():
        wav = folder / pathlib.Path(name).with_suffix(".wav")
        with wave.open(str(wav), "wb") as file:
            channels = 6 if name == "film51.wav" else 2
            file.setparams((channels, 2, 8000, 0, "NONE", ""))
            frames = (int(3000 * math.sin(i / 9)) for i in range(channels * 8000 * seconds))
            file.writeframes(array.array("h", frames).tobytes())
        if name == "song.wav":
            add_markers(wav, {"verse 2": 160000, "chorus": 320000})
        if name.endswith(".flac"):
            subprocess.run([f"{binaries}/audlmd", "render", wav, "-o", folder / name], check=True, stdout=subprocess.DEVNULL)
            wav.unlink()
    if FFMPEG:
        for film, words in FILMS.items():
            subprocess.run([FFMPEG, "-v", "error", *words.split(), film], cwd=folder, check=True, stdin=subprocess.DEVNULL)
    (folder / "ride.csv").write_text("0,-20\n1:02.5,0\n")
    # Both kinds of timeline are known by their content.
    (folder / "film.otio").write_text(TIMELINE)
    (folder / "asoundrc").write_text(ALSA)


def lines():
    for page in PAGES:
        for line in (root / page).read_text().splitlines():
            if re.match(r"    (audlmd|for \w+ in|parallel) ", line):
                yield page, line.split("      (")[0].strip()


def fault_of(line, folder, environment):
    if line.startswith("audlmd play"):
        line = "timeout 2 " + line + "; test $? = 0 -o $? = 124"
    done = subprocess.run(["sh", "-c", line.replace("/archive/sound", ".")], cwd=folder, env=environment, text=True,
                          capture_output=True, stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        return f"exit {done.returncode}: {done.stderr}"
    missing = [name for name in re.findall(r" (?:-o|--report|--picture) (\S+)", line)
               if re.fullmatch(r"[\w.]+", name) and not (folder / name).exists()]
    return f"{', '.join(missing)} is missing" if missing else None


with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    make_media(folder)
    environment = {**os.environ, "PATH": f"{binaries}:{os.environ['PATH']}", "ALSA_CONFIG_PATH": str(folder / "asoundrc"),
                   "HOME": name}
    count = failures = 0
    for page, line in lines():
        if line.startswith("parallel") and subprocess.run(["sh", "-c", "command -v parallel"], capture_output=True).returncode:
            continue
        if not FFMPEG and any(film in line for film in FILMS):
            continue
        count += 1
        if fault := fault_of(line, folder, environment):
            failures += 1
            print(f"{page}: {line}\n  {fault}")
print(f"{count} commands, {failures} failures")
sys.exit(failures != 0 or count < 20)
