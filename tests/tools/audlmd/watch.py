"""watch.py AUDLMD: mix --watch mixes again when an input changes, whatever way it changes, and not else."""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import wave


def expect(condition, what):
    if not condition:
        raise RuntimeError(what)


def write_sound(path, frames):
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, 48000, 0, "NONE", ""))
        file.writeframes(b"\1\2" * frames)


def write_timeline(path, media):
    strips = [{"media": medium, "to": 4800, "at": 4800 * n} for n, medium in enumerate(media)]
    path.write_text(json.dumps({"audlmd": 1, "tracks": [{"strips": strips}]}))


class Watched:
    def __init__(self, *words):
        self.process = subprocess.Popen([audlmd, "mix", *words, "--watch"], cwd=folder, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT)
        os.set_blocking(self.process.stdout.fileno(), False)
        self.text = ""

    def take(self):
        self.text += (self.process.stdout.read() or b"").decode()

    def round(self, *parts, within=10.0):
        """The text up to the line that ends a round, which holds the parts."""
        end = time.monotonic() + within
        while "; waiting for" not in self.text:
            expect(time.monotonic() < end and self.process.poll() is None, f"no round: {self.text}")
            self.take()
            time.sleep(0.02)
        told, self.text = self.text.split("Ctrl-C ends\n", 1)
        for part in parts:
            expect(part in told, f"'{part}' is not in: {told}")

    def expect_rest(self):
        time.sleep(0.7)
        self.take()
        expect(self.text == "", f"a round without a change: {self.text}")

    def end(self, status):
        self.process.send_signal(signal.SIGINT)
        expect(self.process.wait(10) == status, f"the status is {self.process.returncode}, not {status}")


def check():
    film, sound = folder / "film.json", folder / "a.wav"
    write_sound(sound, 4800)
    write_timeline(film, ["a.wav", "later/b.wav"])
    watched = Watched("film.json", "-o", "mix.wav", "--page", "mix.html", "--report", "r.json", "--media", "found")
    watched.round("later/b.wav", "done in")
    watched.expect_rest()
    # In place, and by a new file under the old name.
    write_sound(sound, 4801)
    watched.round("'a.wav' has changed: done in")
    write_sound(folder / "new", 4802)
    (folder / "new").rename(sound)
    watched.round("'a.wav' has changed: done in")
    # A broken timeline gives its error, and the mix stays.
    before = (folder / "mix.wav").read_bytes()
    film.write_text("{")
    watched.round("film.json': line 1", "'film.json' has changed: failed after")
    expect((folder / "mix.wav").read_bytes() == before, "a failed round has changed the mix")
    write_timeline(film, ["a.wav", "later/b.wav"])
    watched.round("done in")
    # What was missing comes, in a folder that was not there, and goes.
    (folder / "later").mkdir()
    watched.round("'later' has changed")
    write_sound(folder / "later" / "b.wav", 4800)
    watched.round("'b.wav' has changed: done in")
    expect(json.loads((folder / "r.json").read_text())["exitStatus"] == 0, "the medium is still silent")
    # What is none of it.
    write_sound(folder / "later" / "c.wav", 4800)
    write_sound(folder / "mix.wav", 10)
    watched.expect_rest()
    watched.end(0)
    # The status is that of the last round. A medium comes below --media.
    (folder / "found" / "deep").mkdir()
    write_timeline(film, ["/nowhere/d.wav"])
    watched = Watched("film.json", "-o", "mix.wav", "--media", "found")
    watched.round("is not there", "done in")
    write_sound(folder / "found" / "deep" / "d.wav", 4800)
    watched.round("'d.wav' has changed: done in")
    (folder / "found" / "deep" / "d.wav").unlink()
    watched.round("is not there")
    watched.end(4)


audlmd = pathlib.Path(sys.argv[1]).resolve()
with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    (folder / "found").mkdir()
    check()
