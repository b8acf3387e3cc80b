"""Measuring the library itself: one function for each section of the page, which takes the build folder."""

import json
import os
import pathlib
import re
import shlex
import statistics
import subprocess
import tempfile
import time

from commands import cost, run
from modes import FAMILIES, decode, encode, is_twin, valid_codes

BENCH = "bench/audlmd-bench"


def bench_rows(build, processes, *arguments):
    """The figures of several processes: least minimum, median of the medians."""
    merged = {}
    for _ in range(processes):
        for row in json.loads(run([build / BENCH, *arguments, "--json", "-"])):
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


def measure_modes(build):
    everything = bench_rows(build, 3, "modes", "--rounds", 2)
    codes = sorted({encode(d, **f) for d in (0, 1) for _, fields, _, _ in FAMILIES for f in fields})
    families = bench_rows(build, 9, "modes", "--rounds", 2, "--speed", 0.25, 0.5, 1, 2, "--code", *codes)
    return {"all": everything, "families": families}


def measure_calls(build):
    codes = [c for c in valid_codes() if decode(c).conversion == 0 and not is_twin(c)]
    return bench_rows(build, 5, "calls", "--rounds", 1, "--code", *codes)


def measure_load(build):
    times = {"audlmd": [], "audlmd_unregistered": []}
    for _ in range(200):
        for name, values in times.items():
            library = build / "libaudlmd.so" if name == "audlmd" else build / f"bench/lib{name}.so"
            values.append(float(run([build / "bench/audlmd-bench-load", library]).split()[0]) / 1000)
    return times


def measure_size(build):
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


def callgrind(build, function, *arguments):
    """Instructions inside a function, with all that it calls."""
    with tempfile.NamedTemporaryFile() as out:
        result = subprocess.run(
            ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out.name}", "--collect-atstart=no",
             f"--toggle-collect={function}", str(build / BENCH), *map(str, arguments)],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True).stderr
    return int(re.search(r"Collected : (\d+)", result)[1])


def measure_instructions(build):
    """Per output sample to S16: what one more sample costs."""
    rows = []
    for name, fields, speeds, _ in FAMILIES:
        for direction in (1, 0):
            options = ["modes", "--code", encode(direction, **fields[-1]), "--output", "S16", "--rounds", 1,
                       "--repetitions", 1, "--speed", *speeds, "--samples"]
            row = {"family": name, "direction": direction}
            for key, function in (("render", "*::ProcessSamples*"), ("floor", "audlmd::bench::Floor::run*")):
                row[key] = (callgrind(build, function, *options, 2048) - callgrind(build, function, *options, 1024)) / 1024
            rows.append(row)
    return rows


def measure_build(build):
    """Every unit of the library, one at a time, without a compiler cache."""
    units = []
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = pathlib.Path(entry["file"])
        command = [part for part in shlex.split(entry["command"]) if not part.endswith("ccache")]
        object_file = command.index("-o") + 1
        if not command[object_file].startswith("loop_modes/"):
            continue
        command[object_file] = "/dev/null"
        units.append({"unit": f"{file.parent.name}/{file.name}",
                      **cost(command, cwd=entry["directory"], env={**os.environ, "CCACHE_DISABLE": "1"})})
    return units


def machine():
    cpu = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())[1]
    return {"cpu": cpu, "cores": os.cpu_count(), "compiler": run(["g++", "--version"]).splitlines()[0],
            "ffmpeg": run(["ffmpeg", "-version"]).split()[2], "sox": run(["sox", "--version"]).split()[-1].lstrip("v"),
            "date": time.strftime("%Y-%m-%d")}
