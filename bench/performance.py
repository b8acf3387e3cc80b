"""performance.py BUILD PAGE [SECTION...]: measures, and writes figures and pictures into the page.

Sections: modes calls load size instructions jobs build; all of them where none is named. What was measured is kept in
BUILD/bench/performance.json, so that the page can be made again from old and new figures.
"""

import array
import collections
import json
import math
import os
import pathlib
import re
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

build, page = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
store = build / "bench/performance.json"
bench = build / "bench/audlmd-bench"
figures = json.loads(store.read_text()) if store.exists() else {}


def say(text):
    print(f"performance: {text}", file=sys.stderr, flush=True)


def run(command, **options):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True, **options).stdout


# Modes by their fields.

Fields = collections.namedtuple("Fields", "direction level filter conversion envelope walk")


def decode(code):
    return Fields(code >> 10, code >> 8 & 3, code >> 7 & 1, code >> 5 & 3, code >> 1 & 15, code & 1)


def encode(direction, level=0, filter=0, conversion=0, envelope=0, walk=0):
    return direction << 10 | level << 8 | filter << 7 | conversion << 5 | envelope << 1 | walk


def valid_codes():
    return [c for c in range(1752) if (f := decode(c)).level < 3 and f.conversion < 3 and f.envelope < 12]


def is_twin(code):
    return code & 1 and decode(code).level != 1


# Name, the fields of its modes, the speeds at which they are measured, and the goal.
FAMILIES = [
    ("plain", [{}], [1], 1.08),
    ("fixed levels", [{"envelope": 1}, {"level": 2}, {"envelope": 1, "level": 2}], [1], 1.08),
    ("simple ramp", [{"envelope": 2}, {"envelope": 3}], [1], 1.12),
    ("dynamic level", [{"level": 1, "walk": 0}, {"level": 1, "walk": 1}], [1], 1.18),
    ("ramp-hold, hold-ramp", [{"envelope": 6}, {"envelope": 7}], [1], 1.25),
    ("ramp-hold-ramp", [{"envelope": 8}], [1], 1.33),
    ("equaliser", [{"filter": 1}], [1], 1.04),
    ("everything but conversion", [{"filter": 1, "envelope": 11, "level": 2}, {"filter": 1, "envelope": 11, "level": 1}],
     [1], 1.15),
    ("linear, speed 0.5", [{"conversion": 1}], [0.5], 1.35),
    ("linear, speed 1", [{"conversion": 1}], [1], 1.18),
    ("linear, speed 2", [{"conversion": 1}], [2], 1.12),
    ("filtering, speed 0.25", [{"conversion": 2}], [0.25], 1.02),
    ("filtering, speed 1", [{"conversion": 2}], [1], 1.04),
    ("filtering, speed 2", [{"conversion": 2}], [2], 1.05),
]


def family_rows(rows, family, direction):
    name, fields, speeds, _ = family
    codes = {encode(direction, **f) for f in fields}
    return [r for r in rows if r["code"] in codes and r["speed"] in speeds]


# Measuring.


def bench_rows(processes, *arguments):
    """The figures of several processes: least minimum, median of the medians."""
    merged = {}
    for _ in range(processes):
        for row in json.loads(run([bench, *arguments, "--json", "-"])):
            merged.setdefault((row["code"], row["output"], row["speed"], row["count"]), []).append(row)
    rows = []
    for same in merged.values():
        row = dict(same[0])
        for key in ("minimum", "floorMinimum"):
            row[key] = min(r[key] for r in same)
        for key in ("median", "floorMedian"):
            row[key] = statistics.median(r[key] for r in same)
        row["processRatios"] = [r["minimum"] / r["floorMinimum"] for r in same]
        rows.append(row)
    return rows


def measure_modes():
    everything = bench_rows(3, "modes", "--rounds", 2)
    codes = sorted({encode(d, **f) for d in (0, 1) for _, fields, _, _ in FAMILIES for f in fields})
    families = bench_rows(9, "modes", "--rounds", 2, "--speed", 0.25, 0.5, 1, 2, "--code", *codes)
    return {"all": everything, "families": families}


def measure_calls():
    codes = [c for c in valid_codes() if decode(c).conversion == 0 and not is_twin(c)]
    return bench_rows(5, "calls", "--rounds", 1, "--code", *codes)


def measure_load():
    times = {"audlmd": [], "audlmd_unregistered": []}
    for _ in range(200):
        for name, values in times.items():
            library = build / "libaudlmd.so" if name == "audlmd" else build / f"bench/lib{name}.so"
            values.append(float(run([build / "bench/audlmd-bench-load", library]).split()[0]) / 1000)
    return times


def measure_size():
    library = build / "libaudlmd.so"
    sections = dict(line.split()[:2] for line in run(["size", "-A", library]).splitlines() if line.startswith("."))
    with tempfile.TemporaryDirectory() as folder:
        stripped = pathlib.Path(folder) / "stripped"
        run(["strip", "-o", stripped, library])
        stripped_size = stripped.stat().st_size
    relocations = re.findall(r"^[0-9a-f]{12,16} .*", run(["readelf", "-rW", library]), re.M)
    own, needed = (run(["nm", "-D", f"--{kind}", "--without-symbol-versions", library]).splitlines()
                   for kind in ("defined-only", "undefined-only"))
    own_names = {line.split()[-1] for line in own}
    looked_up = [r for r in relocations if len(r.split()) > 4 and r.split()[4].split("@")[0] in own_names]
    return {"text": int(sections[".text"]), "stripped": stripped_size, "relocations": len(relocations),
            "ownLookups": len(looked_up), "exported": len(own), "imported": len(needed)}


def callgrind(function, *arguments):
    """Instructions inside a function, with all that it calls."""
    with tempfile.NamedTemporaryFile() as out:
        result = subprocess.run(
            ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out.name}", "--collect-atstart=no",
             f"--toggle-collect={function}", str(bench), *map(str, arguments)],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True).stderr
    return int(re.search(r"Collected : (\d+)", result)[1])


def measure_instructions():
    """Per output sample to S16: what one more sample costs."""
    rows = []
    for name, fields, speeds, _ in FAMILIES:
        for direction in (1, 0):
            options = ["modes", "--code", encode(direction, **fields[-1]), "--output", "S16", "--rounds", 1,
                       "--repetitions", 1, "--speed", *speeds, "--samples"]
            row = {"family": name, "direction": direction}
            for key, function in (("render", "*::ProcessSamples*"), ("floor", "Bench::Floor::run*")):
                row[key] = (callgrind(function, *options, 2048) - callgrind(function, *options, 1024)) / 1024
            rows.append(row)
    return rows


def cost(command, **options):
    """User and system CPU seconds, wall seconds and peak memory in MB."""
    start = time.monotonic()
    process = subprocess.Popen([str(part) for part in command], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               text=True, **options)
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"performance: {shlex.join(map(str, command))} failed:\n{errors}")
    return {"user": usage.ru_utime, "system": usage.ru_stime, "wall": time.monotonic() - start,
            "memory": usage.ru_maxrss / 1000}


def measure_build():
    """Every unit of the library, one at a time, without a compiler cache."""
    units = []
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = pathlib.Path(entry["file"])
        if "loop_modes" not in file.parts:
            continue
        command = [part for part in shlex.split(entry["command"]) if not part.endswith("ccache")]
        command[command.index("-o") + 1] = "/dev/null"
        units.append({"unit": f"{file.parent.name}/{file.name}",
                      **cost(command, cwd=entry["directory"], env={**os.environ, "CCACHE_DISABLE": "1"})})
    return units


# Whole jobs, in memory-backed storage.

BANDS = [(120, -2), (400, 1.5), (1000, 3), (4000, -2), (10000, 2)]
LENGTH = 600
FADE = 5


def jobs(folder):
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
    parts = [folder / "part0.wav", folder / "part1.wav"]

    def single(bits, own, filters, effects):
        return {"audlmd": [[*audlmd, source, "-o", out["audlmd"], "--format", f"s{bits}", *own]],
                "ffmpeg": [[*ffmpeg, "-i", source, *(["-af", filters] if filters else []), "-c:a", f"pcm_s{bits}le",
                            out["ffmpeg"]]],
                "sox": [[*sox, source, "-e", "signed-integer", "-b", bits, out["sox"], *effects]]}

    mix = [[*audlmd, sources[0], "-o", parts[0], "--format", "s16"]]
    for i in range(1, 8):
        target = out["audlmd"] if i == 7 else parts[i % 2]
        mix.append([*audlmd, sources[i], "-o", target, "--mix-into", parts[(i + 1) % 2]])
    return {
        "f32 to s16": single(16, [], "", []),
        "fade and level, s24": single(24, fade["audlmd"], fade["ffmpeg"], fade["sox"]),
        "five-band equaliser, fade and level, s24": single(
            24, bands["audlmd"] + fade["audlmd"], bands["ffmpeg"] + "," + fade["ffmpeg"], bands["sox"] + fade["sox"]),
        "the same at speed 1.1": single(
            24, bands["audlmd"] + fade["audlmd"] + ["--speed", "1.1"],
            bands["ffmpeg"] + "," + fade["ffmpeg"] + ",asetrate=52800,aresample=48000",
            bands["sox"] + fade["sox"] + ["speed", "1.1", "rate", "48000"]),
        "reversed, s24": single(24, ["--reverse"], "areverse", ["reverse"]),
        "eight files summed into s16": {
            "audlmd": mix,
            "ffmpeg": [[*ffmpeg, *[part for path in sources for part in ("-i", path)], "-filter_complex",
                        "amix=inputs=8:normalize=0", "-c:a", "pcm_s16le", out["ffmpeg"]]],
            "sox": [[*sox, "-m", *[part for path in sources for part in ("-v", "1", path)], "-e", "signed-integer", "-b",
                     "16", out["sox"]]]}}


def level_at_middle(path):
    """The level of one second in the middle, in dB, and the length in seconds."""
    with tempfile.NamedTemporaryFile(suffix=".raw") as raw:
        seconds = float(run(["soxi", "-D", path]))
        run(["sox", path, "-t", "f32", raw.name, "trim", seconds / 2, 1])
        samples = array.array("f", pathlib.Path(raw.name).read_bytes())
    return 10 * math.log10(sum(x * x for x in samples) / len(samples)), seconds


def measure_jobs():
    folder = pathlib.Path(tempfile.mkdtemp(prefix="audlmd-bench-", dir="/dev/shm"))
    try:
        run(["sox", "-n", "-r", 48000, "-c", 2, "-e", "floating-point", "-b", 32, folder / "in0.wav", "synth", LENGTH,
             "pinknoise", "gain", -24], stderr=subprocess.DEVNULL)
        for i in range(1, 8):
            shutil.copy(folder / "in0.wav", folder / f"in{i}.wav")
        results = {}
        for job, programs in jobs(folder).items():
            say(job)
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


def machine():
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())[1]
    return {"cpu": cpu, "cores": os.cpu_count(), "compiler": run(["g++", "--version"]).splitlines()[0],
            "ffmpeg": run(["ffmpeg", "-version"]).split()[2], "sox": run(["sox", "--version"]).split()[-1].lstrip("v"),
            "date": time.strftime("%Y-%m-%d")}


# Pictures.

INK, PALE = "#222", "#999"


class Svg:
    def __init__(self, width, height):
        self.parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
                      f'height="{height}" font-family="sans-serif" font-size="11" fill="{INK}">',
                      f'<rect width="{width}" height="{height}" fill="white"/>']

    def rect(self, x, y, w, h, fill):
        self.parts.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{w:.1f}" height="{h:.1f}" fill="{fill}"/>')

    def line(self, x1, y1, x2, y2, stroke=PALE):
        self.parts.append(f'<path d="M{x1:.1f} {y1:.1f}L{x2:.1f} {y2:.1f}" stroke="{stroke}" fill="none"/>')

    def text(self, x, y, text, anchor="start", more=""):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" {more}>{text}</text>')

    def path(self, data, fill):
        self.parts.append(f'<path d="{data}" fill="{fill}"/>')

    def save(self, path):
        path.write_text("\n".join(self.parts) + "\n</svg>\n")


def colour(share):
    """From dark blue over green to pale yellow, lighter throughout."""
    stops = [(48, 18, 90), (38, 86, 140), (32, 144, 140), (110, 200, 90), (250, 230, 60)]
    position = min(max(share, 0), 1) * (len(stops) - 1)
    i = min(int(position), len(stops) - 2)
    return "#" + "".join(f"{round(a + (b - a) * (position - i)):02x}" for a, b in zip(stops[i], stops[i + 1]))


ENVELOPES = ["none", "fixed", "ramp, log", "ramp, power", "ramp, log + fixed", "ramp, power + fixed", "ramp-hold",
             "hold-ramp", "ramp-hold-ramp", "ramp-hold + fixed", "hold-ramp + fixed", "ramp-hold-ramp + fixed"]
LEVELS = ["none", "automation back", "automation", "fixed"]


def draw_modes(rows, path):
    """One cell per function that is not a jump: columns by conversion, direction, filter and outer level; rows by
    envelope and, within, output type."""
    outputs = list(dict.fromkeys(r["output"] for r in rows))
    width, height, left, top = 12, 3, 150, 92
    svg = Svg(left + 48 * (width + 1) + 130, top + 12 * (14 * height + 3) + 30)
    low, high, steps = 3.0, 96.0, 32
    cells = collections.defaultdict(list)
    for r in rows:
        if is_twin(r["code"]):
            continue
        f = decode(r["code"])
        level = {0: 0, 2: 3}.get(f.level, 1 + f.walk)
        column = ((f.conversion * 2 + (1 - f.direction)) * 2 + f.filter) * 4 + level
        x, y = left + column * (width + 1), top + f.envelope * (14 * height + 3) + outputs.index(r["output"]) * height
        cells[round(math.log(r["minimum"] / low) / math.log(high / low) * steps)].append((x, y))
    for step, places in sorted(cells.items()):
        svg.path("".join(f"M{x} {y}h{width}v{height}h-{width}z" for x, y in places), colour(step / steps))
    for i, name in enumerate(ENVELOPES):
        svg.text(left - 8, top + (i + 0.5) * (14 * height + 3) + 3, name, "end")
    for i, name in enumerate(["no conversion", "linear", "filtering"]):
        svg.text(left + (i + 0.5) * 16 * (width + 1), 34, name, "middle", 'font-weight="bold"')
        for j, direction in enumerate(["forward", "reverse"]):
            svg.text(left + (i * 2 + j + 0.5) * 8 * (width + 1), 50, direction, "middle")
            for k, kind in enumerate(["", "eq"]):
                x = left + ((i * 2 + j) * 2 + k) * 4 * (width + 1)
                svg.text(x + 2 * (width + 1), 64, kind, "middle")
                for m, symbol in enumerate("–↓↑="):
                    svg.text(x + (m + 0.5) * (width + 1), 82, symbol, "middle")
                svg.line(x - 0.5, 54, x - 0.5, top + 12 * (14 * height + 3))
    svg.text(10, 18, "Nanoseconds per output sample of every render function", more='font-size="14" font-weight="bold"')
    svg.text(left, top + 12 * (14 * height + 3) + 18,
             "Outer level: – none, ↓ automation walked backwards, ↑ forwards, = fixed. Within a row: the fourteen output types.")
    x = left + 48 * (width + 1) + 30
    for step in range(steps + 1):
        svg.rect(x, top + (steps - step) * 10, 18, 10, colour(step / steps))
    for value in (3, 6, 12, 24, 48, 96):
        svg.text(x + 24, top + (steps - math.log(value / low) / math.log(high / low) * steps) * 10 + 9, f"{value} ns")
    svg.save(path)


def draw_families(rows, path):
    left, top, row_height, width, last = 190, 56, 34, 700, 2.5
    svg = Svg(left + width + 40, top + len(FAMILIES) * row_height + 40)

    def x(ratio):
        return left + (min(ratio, last) - 1) / (last - 1) * width

    svg.text(10, 18, "Time per output sample, as a multiple of the floor", more='font-size="14" font-weight="bold"')
    svg.text(left, 36, "bar: from the fastest to the slowest of the output types; tick: their median; red: the goal")
    for tick in range(10, 26):
        svg.line(x(tick / 10), top - 6, x(tick / 10), top + len(FAMILIES) * row_height, "#e4e4e4")
        svg.text(x(tick / 10), top + len(FAMILIES) * row_height + 14, f"{tick / 10:.1f}", "middle")
    for i, family in enumerate(FAMILIES):
        y = top + i * row_height
        svg.text(left - 10, y + 16, family[0], "end")
        for direction, fill in ((1, "#26568c"), (0, "#6ec85a")):
            ratios = sorted(r["minimum"] / r["floorMinimum"] for r in family_rows(rows, family, direction))
            bar = y + (2 if direction else 15)
            svg.rect(x(ratios[0]), bar, max(x(ratios[-1]) - x(ratios[0]), 1.5), 9, fill)
            middle = x(statistics.median(ratios))
            svg.line(middle, bar - 1, middle, bar + 10, INK)
        svg.line(x(family[3]), y, x(family[3]), y + 26, "#d02020")
    y = top + len(FAMILIES) * row_height + 30
    svg.rect(left, y - 8, 18, 8, "#26568c")
    svg.text(left + 24, y, "forward")
    svg.rect(left + 90, y - 8, 18, 8, "#6ec85a")
    svg.text(left + 114, y, "reverse")
    svg.save(path)


def cpu(runs):
    return min(runs, key=lambda r: r["user"] + r["system"])


def draw_jobs(results, path):
    left, top, row_height = 330, 44, 58
    svg = Svg(left + 540, top + len(results) * row_height + 30)
    longest = max(cpu(runs)["user"] + cpu(runs)["system"] for programs in results.values() for runs in programs.values())
    svg.text(10, 18, "CPU seconds for ten minutes of stereo at 48 kHz (dark: in the system)",
             more='font-size="14" font-weight="bold"')
    for i, (job, programs) in enumerate(results.items()):
        svg.text(left - 70, top + i * row_height + 26, job, "end")
        for j, (program, runs) in enumerate(programs.items()):
            best, y = cpu(runs), top + i * row_height + j * 15
            scale = 460 / longest
            svg.text(left - 6, y + 11, program, "end")
            svg.rect(left, y, best["user"] * scale, 13, "#26568c" if program == "audlmd" else "#b4b4b4")
            svg.rect(left + best["user"] * scale, y, best["system"] * scale, 13,
                     "#12305a" if program == "audlmd" else "#707070")
            total = best["user"] + best["system"]
            svg.text(left + total * scale + 5, y + 11, f"{total:.2f}")
    svg.save(path)


# Tables.


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def ratio_range(rows):
    ratios = sorted(r["minimum"] / r["floorMinimum"] for r in rows)
    return ratios[0], statistics.median(ratios), ratios[-1]


def goal_table():
    rows = []

    def add(what, goal, reached, spread, met):
        rows.append([what, goal, f"{reached}" if met else f"**{reached}**", spread])

    for family in FAMILIES:
        forward = family_rows(figures["modes"]["families"], family, 1)
        low, middle, high = ratio_range(forward)
        reverse = ratio_range(family_rows(figures["modes"]["families"], family, 0))[1]
        add(f"{family[0]} / floor", f"{family[3]:.2f}", f"{middle:.2f}",
            f"{low:.2f} to {high:.2f} over the output types; reverse {reverse:.2f}", middle <= family[3] + 0.005)
    calls = [r["minimum"] / r["floorMinimum"] for r in figures["calls"] if r["count"] == 0]
    plain = [r["minimum"] / r["floorMinimum"] for r in figures["calls"] if r["count"] == 0 and r["code"] in (0, 1024)]
    add("a call of count 0 / the same copies by hand", "1.05", f"{statistics.mean(plain):.2f}",
        f"without stages; {min(calls):.2f} to {max(calls):.2f} over the modes without conversion",
        statistics.mean(plain) <= 1.055)
    load = {name: sorted(times) for name, times in figures["load"].items()}
    ratios = [load["audlmd"][i] / load["audlmd_unregistered"][i] for i in (0, len(load["audlmd"]) // 2)]
    add("load / load without registration", "2.5", f"{ratios[0]:.2f}",
        f"medians {ratios[1]:.2f}; {load['audlmd'][0]:.0f} and {load['audlmd_unregistered'][0]:.0f} µs", ratios[0] <= 2.5)
    size = figures["size"]
    add(".text; stripped library", "7.0 MB; 11.8 MB", f"{size['text'] / 1e6:.2f} MB; {size['stripped'] / 1e6:.2f} MB", "",
        size["text"] <= 7.0e6 and size["stripped"] <= 11.8e6)
    add("own-symbol lookups at load; dynamic relocations", "0; 120", f"{size['ownLookups']}; {size['relocations']}",
        f"{size['exported']:,} symbols exported, {size['imported']} imported",
        size["ownLookups"] == 0 and size["relocations"] <= 120)
    units = figures["build"]
    total = sum(u["user"] + u["system"] for u in units)
    most = max(u["memory"] for u in units)
    add("full build of the library, CPU; peak memory of a unit", "180 s; 550 MB", f"{total:.0f} s; {most:.0f} MB",
        f"{len(units)} units, one at a time", total <= 180 and most <= 550)
    for job, programs in figures["jobs"].items():
        spent = {p: [r["user"] + r["system"] for r in runs] for p, runs in programs.items()}
        peer = min(("ffmpeg", "sox"), key=lambda p: min(spent[p]))
        ratio = min(spent["audlmd"]) / min(spent[peer])
        goal = "1.0" if job.startswith("five-band") else "–"
        add(f"job: {job} / {peer}", goal, f"{ratio:.2f}",
            f"{min(spent['audlmd']):.2f} to {max(spent['audlmd']):.2f} s against {min(spent[peer]):.2f} to "
            f"{max(spent[peer]):.2f} s", goal == "–" or ratio <= 1.0)
    return table(["what", "goal, at most", "reached", "spread"], rows)


def family_table():
    rows = []
    for family in FAMILIES:
        for direction in (1, 0):
            measured = [r for r in family_rows(figures["modes"]["families"], family, direction) if r["output"] == "S16"]
            best = min(measured, key=lambda r: r["minimum"] / r["floorMinimum"])
            worst = max(measured, key=lambda r: r["minimum"] / r["floorMinimum"])
            instructions = next(r for r in figures["instructions"]
                                if r["family"] == family[0] and r["direction"] == direction)
            processes = [ratio for r in measured for ratio in r["processRatios"]]
            rows.append([family[0], "forward" if direction else "reverse",
                         f"{best['minimum']:.2f}" + (f" to {worst['minimum']:.2f}" if len(measured) > 1 else ""),
                         f"{best['floorMinimum']:.2f}", f"{min(processes):.2f} to {max(processes):.2f}",
                         f"{instructions['render']:.0f}", f"{instructions['floor']:.0f}"])
    return table(["family", "direction", "ns", "floor, ns", "ratio in single processes", "instructions", "in the floor"],
                 rows)


def job_table():
    rows = []
    for job, programs in figures["jobs"].items():
        row = [job]
        for runs in programs.values():
            best = cpu(runs)
            row.append(f"{best['user']:.2f} + {best['system']:.2f} = {best['user'] + best['system']:.2f}")
        rows.append(row)
    return table(["job", *next(iter(figures["jobs"].values()))], rows)


def machine_line():
    m = figures["machine"]
    return (f"Measured on {m['date']}: {m['cpu']}, {m['cores']} virtual cores; {m['compiler']}, `-O2`, baseline x86-64; "
            f"ffmpeg {m['ffmpeg']}, sox {m['sox']}.")


def with_pictures(content, **pictures):
    return content + "".join(f"\n\n![{text}](images/performance-{name}.svg)" for name, text in pictures.items())


def write_page():
    text = page.read_text()
    for name, content in {
            "machine": machine_line,
            "goals": lambda: with_pictures(goal_table(), modes="Nanoseconds per output sample of every render function",
                                           families="Time per output sample as a multiple of the floor"),
            "families": family_table,
            "jobs": lambda: with_pictures(job_table(), jobs="CPU seconds of whole jobs")}.items():
        pattern = re.compile(rf"(<!-- {name}: written by scripts/performance -->\n).*?(\n?<!-- end -->)", re.S)
        assert pattern.search(text), f"{page} has no place for {name}"
        text = pattern.sub(lambda match, c=content(): match[1] + c + "\n" + match[2].lstrip(), text)
    page.write_text(text)
    images = page.parent / "images"
    draw_modes(figures["modes"]["all"], images / "performance-modes.svg")
    draw_families(figures["modes"]["families"], images / "performance-families.svg")
    draw_jobs(figures["jobs"], images / "performance-jobs.svg")


sections = {"modes": measure_modes, "calls": measure_calls, "load": measure_load, "size": measure_size,
            "instructions": measure_instructions, "jobs": measure_jobs, "build": measure_build}
chosen = sys.argv[3:] or list(sections)
if unknown := set(chosen) - set(sections):
    sys.exit(f"performance: no such section: {', '.join(sorted(unknown))}; there are {', '.join(sections)}")
for section in chosen:
    say(section)
    figures[section] = sections[section]()
    figures["machine"] = machine()
    store.write_text(json.dumps(figures))
missing = [section for section in sections if section not in figures]
if missing:
    sys.exit(f"performance: not measured yet, so that the page is left as it is: {', '.join(missing)}")
write_page()
