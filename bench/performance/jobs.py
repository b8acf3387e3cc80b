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
GOALS = {"f32 to s16": 0.75, "FLAC to f32": 0.9, "fade and level, s24": 0.4, "five-band equaliser, fade and level, s24": 0.42,
         "the same at speed 1.1": 1.0, "reversed, s24": 0.6, "eight files summed into s16": 0.4,
         "speed 1.1 alone, s24": 1.5, "speed 1.1 alone, libsoxr in all, s24": 1.05,
         "44.1 to 48 kHz, libsoxr in all, s24": 1.05, "160 crossfaded clips, f32": 0.09}
SOXR = "aresample=48000:resampler=soxr:precision=28"


CLIPS, CLIP, CROSSFADE = 160, 5 * 48000, 24000
# Of a sample of the output, and how often: the names are those of audlmd-bench-limits.
ARITHMETIC = {"f32 to s16": {"to s16": 1}, "FLAC to f32": {"decoding of FLAC": 1},
              "fade and level, s24": {"gain": 1, "to s24": 1},
              "five-band equaliser, fade and level, s24": {"five bands": 1, "gain": 1, "to s24": 1},
              "the same at speed 1.1": {"libsoxr, speed 1.1": 1, "five bands": 1, "gain": 1, "to s24": 1},
              "speed 1.1 alone, s24": {"libsoxr, speed 1.1": 1, "to s24": 1},
              "speed 1.1 alone, libsoxr in all, s24": {"libsoxr, speed 1.1": 1, "to s24": 1},
              "44.1 to 48 kHz, libsoxr in all, s24": {"libsoxr, 44.1 to 48 kHz": 1, "to s24": 1},
              "reversed, s24": {"backwards": 1, "to s24": 1},
              "eight files summed into s16": {"sum": 8, "to s16": 1},
              "160 crossfaded clips, f32": {"sum": CLIP / (CLIP - CROSSFADE), "gain": 2 * CROSSFADE / CLIP}}


def edit(folder, out):
    """Clips from all over one file, each faded into the next. For ffmpeg each clip is an input of its own, from which no
    more is read than is heard, and each second clip is on one of two tracks: the fastest graph of several that were tried."""
    starts = [i * 37 % (LENGTH - 10) for i in range(CLIPS)]
    fade = {"length": CROSSFADE, "curve": "linear"}
    source = folder / "in0.wav"
    strips = [{"media": str(source), "at": i * (CLIP - CROSSFADE), "from": start * 48000, "to": start * 48000 + CLIP,
               **({"fadeIn": fade} if i > 0 else {}), **({"fadeOut": fade} if i + 1 < CLIPS else {})}
              for i, start in enumerate(starts)]
    timeline = folder / "edit.json"
    timeline.write_text(json.dumps({"audlmd": 1, "tracks": [{"strips": strips[0::2]}, {"strips": strips[1::2]}]}))
    clips = []
    for i in range(CLIPS):
        fade_in = f"afade=t=in:ns={CROSSFADE}:curve=tri," if i > 0 else ""
        fade_out = f"afade=t=out:ss={CLIP - CROSSFADE}:ns={CROSSFADE}:curve=tri," if i + 1 < CLIPS else ""
        clips.append(f"[{i}]{fade_in}{fade_out}apad=pad_len={CLIP - 2 * CROSSFADE}[c{i}]")
    tracks = ["".join(f"[c{i}]" for i in range(first, CLIPS, 2)) + f"concat=n={CLIPS // 2}:v=0:a=1" for first in (0, 1)]
    graph = folder / "edit.txt"
    graph.write_text(";".join([*clips, f"{tracks[0]}[a]", f"{tracks[1]},adelay={CLIP - CROSSFADE}S:all=1[b]",
                               "[a][b]amix=inputs=2:normalize=0,"
                               f"atrim=end_sample={CLIPS * (CLIP - CROSSFADE) + CROSSFADE}[out]"]))
    inputs = [part for start in starts for part in ("-ss", start, "-t", 5, "-i", source)]
    return timeline, [*inputs, "-filter_complex_threads", "1", "-filter_complex_script", graph, "-map", "[out]", "-c:a",
                      "pcm_f32le", out]


def jobs(build, folder):
    """For each job: for each program, the commands that do it, and what they read."""
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

    def single(kind, own, filters, effects, source=source):
        encoding = "floating-point" if kind == "f32" else "signed-integer"
        return {"audlmd": [[*audlmd, source, "-o", out["audlmd"], "--format", kind, *own]],
                "ffmpeg": [[*ffmpeg, "-i", source, *(["-af", filters] if filters else []), "-c:a", f"pcm_{kind}le",
                            out["ffmpeg"]]],
                "sox": [[*sox, source, "-e", encoding, "-b", kind[1:], out["sox"], *effects]]}

    timeline = folder / "eight.json"
    timeline.write_text(json.dumps({"audlmd": 1, "tracks": [
        {"strips": [{"media": str(path), "from": 0, "to": LENGTH * 48000}]} for path in sources]}))
    cut, cutting = edit(folder, out["ffmpeg"])
    return {
        "f32 to s16": single("s16", [], "", []),
        "FLAC to f32": single("f32", [], "", [], folder / "in.flac"),
        "fade and level, s24": single("s24", fade["audlmd"], fade["ffmpeg"], fade["sox"]),
        "five-band equaliser, fade and level, s24": single(
            "s24", bands["audlmd"] + fade["audlmd"], bands["ffmpeg"] + "," + fade["ffmpeg"], bands["sox"] + fade["sox"]),
        "the same at speed 1.1": single(
            "s24", bands["audlmd"] + fade["audlmd"] + ["--speed", "1.1"],
            bands["ffmpeg"] + "," + fade["ffmpeg"] + ",asetrate=52800,aresample=48000",
            bands["sox"] + fade["sox"] + ["speed", "1.1", "rate", "48000"]),
        "speed 1.1 alone, s24": single("s24", ["--speed", "1.1"], "asetrate=52800,aresample=48000",
                                       ["speed", "1.1", "rate", "48000"]),
        "speed 1.1 alone, libsoxr in all, s24": single("s24", ["--speed", "1.1"], "asetrate=52800," + SOXR,
                                                       ["speed", "1.1", "rate", "-v", "48000"]),
        "44.1 to 48 kHz, libsoxr in all, s24": single("s24", ["--rate", "48000"], SOXR, ["rate", "-v", "48000"],
                                                      folder / "cd.wav"),
        "reversed, s24": single("s24", ["--reverse"], "areverse", ["reverse"]),
        "eight files summed into s16": {
            "audlmd": [[build / "audlmd", "mix", "--threads", "1", timeline, "-o", out["audlmd"], "--format", "s16"]],
            "ffmpeg": [[*ffmpeg, *[part for path in sources for part in ("-i", path)], "-filter_complex",
                        "amix=inputs=8:normalize=0", "-c:a", "pcm_s16le", out["ffmpeg"]]],
            "sox": [[*sox, "-m", *[part for path in sources for part in ("-v", "1", path)], "-e", "signed-integer", "-b",
                     "16", out["sox"]]]},
        "160 crossfaded clips, f32": {
            "audlmd": [[build / "audlmd", "mix", "--threads", "1", cut, "-o", out["audlmd"], "--format", "f32"]],
            "ffmpeg": [[*ffmpeg, *cutting]]}}


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


def limits(build, folder):
    """Nanoseconds a sample, by name."""
    lines = run([build / "bench/audlmd-bench-limits", folder / "in.flac"]).splitlines()
    return {name: float(figure) for name, figure in (line.rsplit(": ", 1) for line in lines)}


def copying(inputs, output):
    """What reading the inputs and writing as many bytes as the output costs, by the least of five runs."""
    written = output.stat().st_size
    spare = output.with_suffix(".copy")
    commands = [*(["dd", "bs=256K", f"if={path}", "of=/dev/null"] for path in inputs),
                ["dd", "bs=256K", "iflag=count_bytes", f"count={written}", "if=/dev/zero", f"of={spare}"]]
    runs = [sum(c["user"] + c["system"] for c in map(cost, commands)) for _ in range(5)]
    spare.unlink()
    return min(runs)


def limit(job, folder, arithmetic):
    """CPU seconds of the memory's copies, and of the arithmetic alone."""
    inputs = {"eight files summed into s16": [folder / f"in{i}.wav" for i in range(8)],
              "FLAC to f32": [folder / "in.flac"], "44.1 to 48 kHz, libsoxr in all, s24": [folder / "cd.wav"]}
    output = folder / "audlmd.wav"
    samples = 2 * 48000 * float(run(["soxi", "-D", output]))
    return {"copies": copying(inputs.get(job, [folder / "in0.wav"]), output),
            "arithmetic": samples * 1e-9 * sum(times * arithmetic[name] for name, times in ARITHMETIC[job].items())}


def measure_jobs(build):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="audlmd-bench-", dir="/dev/shm"))
    try:
        for rate, name in (48000, "in0.wav"), (44100, "cd.wav"):
            run(["sox", "-n", "-r", rate, "-c", 2, "-e", "floating-point", "-b", 32, folder / name, "synth", LENGTH,
                 "pinknoise", "gain", -24], stderr=subprocess.DEVNULL)
        for i in range(1, 8):
            shutil.copy(folder / "in0.wav", folder / f"in{i}.wav")
        run(["sox", folder / "in0.wav", "-b", 24, folder / "in.flac"], stderr=subprocess.DEVNULL)
        arithmetic = limits(build, folder)
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
            results[job] = {"runs": runs, "limit": limit(job, folder, arithmetic)}
        return results
    finally:
        shutil.rmtree(folder)


def cpu(runs):
    return min(runs, key=lambda r: r["user"] + r["system"])
