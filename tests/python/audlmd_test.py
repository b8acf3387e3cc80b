"""The Python module against the command, and on its own."""

import pathlib
import subprocess
import sys
import tempfile
import unittest
import wave

import numpy as np

import audlmd

COMMAND = sys.argv.pop()


class Module(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        noise = np.random.default_rng(1).integers(-9000, 9000, (48000, 2), np.int16)
        self.take = self.folder / "take.wav"
        with wave.open(str(self.take), "wb") as file:
            file.setparams((2, 2, 48000, 0, "NONE", ""))
            file.writeframes(noise.tobytes())
        self.noise = noise

    def command(self, *words):
        """Runs the command, whose output is out.wav, and returns the samples of that."""
        out = self.folder / "out.wav"
        subprocess.run([COMMAND, *words, "-o", out, "--quiet"], check=True, cwd=self.folder)
        with wave.open(str(out), "rb") as file:
            return np.frombuffer(file.readframes(file.getnframes()), np.int16).reshape(-1, file.getnchannels())

    def test_gives_the_bytes_of_the_command(self):
        automation = [[0, 0], [9000, -20], [30000, "-inf"]]
        (self.folder / "level.csv").write_text("0,0\n0.1875,-20\n0.625,-inf\n")
        with audlmd.open(self.take) as take:
            for strip, words in [
                    (take, []),
                    (take.strip(from_="0.25s", to=36000, reverse=True), ["--from", "0.25s", "--to", "36000smp", "--reverse"]),
                    (take.strip(speed=1.3, gain=-7), ["--speed", "1.3", "--gain", "-7"]),
                    (take.strip(equaliser=["peak:1k:6:0.7", "lowshelf:80:-4"], fade_out={"length": 4800, "curve": "power"}),
                     ["--eq", "peak:1k:6:0.7", "--eq", "lowshelf:80:-4", "--fade-out", "0.1s:power"]),
                    (take.strip(automation={"points": automation}), ["--automation", "level.csv"]),
                    (take.strip(sample_rate=44100), ["--rate", "44100"]),
                    (take.strip(channels="mono"), ["--channels", "mono"])]:
                ours = strip.read(dtype=np.int16)
                theirs = self.command("render", "take.wav", "--format", "s16", *words)
                self.assertTrue(np.array_equal(ours, theirs), words)
                if words and "--reverse" not in words:  # the command copies samples that nothing changes
                    dithered = self.command("render", "take.wav", "--format", "s16", "--dither", *words)
                    self.assertTrue(np.array_equal(strip.read(dtype=np.int16, dither=True), dithered), words)
                self.assertTrue(np.array_equal(np.concatenate(list(strip.blocks(7000, dtype=np.int16))), ours))

    def test_mixes_timelines_like_the_command(self):
        mix = audlmd.Timeline(sample_rate=48000, channels=2)
        with audlmd.open(self.take) as take:
            mix.add(take, "a", at=0, to="0.5s", gain=-6)
            mix.add(take, "b", at="0.25s", speed=0.9)
        sound = mix.mix()
        mix.close()
        (self.folder / "t.json").write_text("""{"audlmd": 1, "tracks": [
            {"strips": [{"media": "take.wav", "to": "0.5s", "gain": -6}]},
            {"strips": [{"media": "take.wav", "at": "0.25s", "speed": 0.9}]}]}""")
        theirs = self.command("mix", "t.json", "--format", "s16")
        self.assertTrue(np.array_equal(sound.read(dtype=np.int16), theirs))
        self.assertTrue(np.array_equal(audlmd.open(self.folder / "t.json").read(dtype=np.int16), theirs))
        self.assertEqual(len(sound.report()["channels"]), 2)
        self.assertEqual(sound.timeline()["tracks"][1]["strips"][0]["speed"], 0.9)

    def test_takes_and_fills_arrays_in_place(self):
        sound = audlmd.from_array(self.noise, 48000)
        self.assertTrue(np.array_equal(sound.read(dtype=np.int16), self.noise))
        out = np.full((100, 2), 7, np.int32)
        filled = sound.read(47950, out=out)
        self.assertIs(filled.base, out)
        self.assertTrue(np.array_equal(filled >> 16, self.noise[-50:]))
        self.assertTrue((out[50:] == 7).all())
        self.assertEqual(audlmd.from_array([0.0, 0.5], 8000).read().tolist(), [[0.0], [0.5]])
        for wrong in (np.zeros((3, 1), np.int32), np.zeros((3, 2)), np.zeros((2, 3), np.float32).T):
            with self.assertRaisesRegex(audlmd.Error, "'out'|float64"):
                sound.read(out=wrong)

    def test_raises_what_the_library_says(self):
        sound = audlmd.from_array(self.noise, 48000)
        with self.assertRaisesRegex(audlmd.Error, '"gian"'):
            sound.strip(gian=3)
        with self.assertRaisesRegex(audlmd.Error, "gone.wav"):
            audlmd.open("gone.wav")
        with self.assertRaisesRegex(audlmd.Error, "cannot be negative"):
            sound.read(-1)
        sound.close()
        sound.close()
        with self.assertRaisesRegex(audlmd.Error, "closed"):
            sound.read()

    def test_plays_live(self):
        with audlmd.from_array(self.noise, 48000) as sound, audlmd.Player(sound, latency=0.5) as player:
            player.seek(10000)
            player.play()
            block = np.zeros((256, 2), np.float32)
            while player.position < 10256:
                player.fill(block)
            self.assertTrue(player.is_playing)
            self.assertGreater(player.take_peak(1), 0.01)
            self.assertEqual(player.report()["sound"]["failure"], "")
            with self.assertRaises(audlmd.Error):
                player.set_speed(0)
            with self.assertRaises(audlmd.Error):
                player.fill(block[:, :1])

    def test_names_its_library(self):
        told = subprocess.run([sys.executable, "-m", "audlmd"], check=True, capture_output=True, text=True).stdout
        self.assertRegex(told, rf"^audlmd {audlmd.version()}, /.*libaudlmd_c\.so")


if __name__ == "__main__":
    unittest.main()
