"""Measuring whole jobs beside other programs, in memory-backed storage."""

import array
import json
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile

from commands import cost, run

BANDS = [(120, -2), (400, 1.5), (1000, 3), (4000, -2), (10000, 2)]
LENGTH = 600
ALL = "audlmd, all processors"
FADE = 5
# At most so many times the CPU time of the faster peer.
GOALS = {"f32 to s16": 1.3, "fade and level, s24": 0.75, "five-band equaliser, fade and level, s24": 0.75,
         "the same at speed 1.1": 2.0, "reversed, s24": 0.6, "eight files summed into s16": 0.8,
         "speed 1.1 alone, s24": 1.5, "speed 1.1 alone, libsoxr in all, s24": 1.05,
         "44.1 to 48 kHz, libsoxr in all, s24": 1.05}
SOXR = "aresample=48000:resampler=soxr:precision=28"


def jobs(build, folder):
    """For each job: for each program, the commands that do it."""
    audlmd = [build / "audlmd", "render", "--threads", "1"]
    ffmpeg = ["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-filter_threads", "1"]
    sox = ["sox", "-D"]
    fade = {"audlmd": ["--fade-in", FADE, "--fade-out", FADE, "--gain", -3],
            "ffmpeg": f"afade=t=in:d={FADE}:curve=tri,afade=t=out:st={LENGTH - FADE}:d={FADE}:curve=tri,volume=-3dB",
            "sox": ["fade", "t", FADE, LENGTH, FADE, "gain", -3]}
    bands = {"audlmd": [part for hz, db in BANDS for part in ("--eq", f"peak:{hz}:{db}:0.9")],
             "ffmpeg": ",".join(f"equalizer=f={hz}:t=q:w=0.9:g={db}" for hz, db in BANDS),
             "sox": [part for hz, db in BANDS for part in ("equalizer", hz, "0.9q", db)]}
    source = folder / "in0.wav"
    sources = [folder / f"in{i}.wav" for i in range(8)]
    out = {name: folder / f"{name}.wav" for name in ("audlmd", "ffmpeg", "sox")}

    def single(bits, own, filters, effects, source=source):
        return {"audlmd": [[*audlmd, source, "-o", out["audlmd"], "--format", f"s{bits}", *own]],
                "ffmpeg": [[*ffmpeg, "-i", source, *(["-af", filters] if filters else []), "-c:a", f"pcm_s{bits}le",
                            out["ffmpeg"]]],
                "sox": [[*sox, source, "-e", "signed-integer", "-b", bits, out["sox"], *effects]]}

    timeline = folder / "eight.json"
    timeline.write_text(json.dumps({"audlmd": 1, "tracks": [
        {"strips": [{"media": str(path), "from": 0, "to": LENGTH * 48000}]} for path in sources]}))
    return {
        "f32 to s16": single(16, [], "", []),
        "fade and level, s24": single(24, fade["audlmd"], fade["ffmpeg"], fade["sox"]),
        "five-band equaliser, fade and level, s24": single(
            24, bands["audlmd"] + fade["audlmd"], bands["ffmpeg"] + "," + fade["ffmpeg"], bands["sox"] + fade["sox"]),
        "the same at speed 1.1": single(
            24, bands["audlmd"] + fade["audlmd"] + ["--speed", "1.1"],
            bands["ffmpeg"] + "," + fade["ffmpeg"] + ",asetrate=52800,aresample=48000",
            bands["sox"] + fade["sox"] + ["speed", "1.1", "rate", "48000"]),
        "speed 1.1 alone, s24": single(24, ["--speed", "1.1"], "asetrate=52800,aresample=48000",
                                       ["speed", "1.1", "rate", "48000"]),
        "speed 1.1 alone, libsoxr in all, s24": single(24, ["--speed", "1.1"], "asetrate=52800," + SOXR,
                                                       ["speed", "1.1", "rate", "-v", "48000"]),
        "44.1 to 48 kHz, libsoxr in all, s24": single(24, ["--rate", "48000"], SOXR, ["rate", "-v", "48000"],
                                                      folder / "cd.wav"),
        "reversed, s24": single(24, ["--reverse"], "areverse", ["reverse"]),
        "eight files summed into s16": {
            "audlmd": [[build / "audlmd", "mix", "--threads", "1", timeline, "-o", out["audlmd"], "--format", "s16"]],
            "ffmpeg": [[*ffmpeg, *[part for path in sources for part in ("-i", path)], "-filter_complex",
                        "amix=inputs=8:normalize=0", "-c:a", "pcm_s16le", out["ffmpeg"]]],
            "sox": [[*sox, "-m", *[part for path in sources for part in ("-v", "1", path)], "-e", "signed-integer", "-b",
                     "16", out["sox"]]]}}


def on_all_processors(commands, output):
    """The same commands without the limit to one thread, for wall-clock time."""
    def changed(command):
        parts = list(map(str, command))
        place = parts.index("--threads")
        del parts[place:place + 2]
        parts[parts.index("-o") + 1] = str(output)
        return parts
    return [changed(command) for command in commands]


def level_at_middle(path):
    """The level of one second in the middle, in dB, and the length in seconds."""
    with tempfile.NamedTemporaryFile(suffix=".raw") as raw:
        seconds = float(run(["soxi", "-D", path]))
        run(["sox", path, "-t", "f32", raw.name, "trim", seconds / 2, 1])
        samples = array.array("f", pathlib.Path(raw.name).read_bytes())
    return 10 * math.log10(sum(x * x for x in samples) / len(samples)), seconds


def measure_jobs(build):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="audlmd-bench-", dir="/dev/shm"))
    try:
        for rate, name in (48000, "in0.wav"), (44100, "cd.wav"):
            run(["sox", "-n", "-r", rate, "-c", 2, "-e", "floating-point", "-b", 32, folder / name, "synth", LENGTH,
                 "pinknoise", "gain", -24], stderr=subprocess.DEVNULL)
        for i in range(1, 8):
            shutil.copy(folder / "in0.wav", folder / f"in{i}.wav")
        results = {}
        for job, programs in jobs(build, folder).items():
            programs[ALL] = on_all_processors(programs["audlmd"], folder / f"{ALL}.wav")
            print(f"performance: {job}", file=sys.stderr, flush=True)
            runs = {program: [] for program in programs}
            for _ in range(5):
                for program, commands in programs.items():
                    costs = [cost(command) for command in commands]
                    runs[program].append({key: sum(c[key] for c in costs) for key in ("user", "system", "wall")})
            heard = {program: level_at_middle(folder / f"{program}.wav") for program in programs}
            for program, (level, seconds) in heard.items():
                if abs(level - heard["audlmd"][0]) > 0.5 or abs(seconds - heard["audlmd"][1]) > 0.01:
                    sys.exit(f"performance: {job}: {program} did something else: {heard}")
            results[job] = runs
        return results
    finally:
        shutil.rmtree(folder)


def cpu(runs):
    return min(runs, key=lambda r: r["user"] + r["system"])
