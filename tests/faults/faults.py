"""faults.py AUDLMD INJECTOR JOB [COUNT [SEED]]: runs a job of the command again and again, with another fault every time.

The job succeeds with the right output; or it fails with one line, and an old output is as it was. It leaves no temporary
file, and it ends. COUNT faults of each kind are drawn by SEED; 0, or more than there are, takes all. A job named
"surroundings" tries what no injector is needed for: full disks, limits, closed pipes, and two writers of one file.
"""

import concurrent.futures
import errno
import functools
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import wave

COMMAND, INJECTOR, JOB = sys.argv[1:4]
COUNT, SEED = int(sys.argv[4]) if len(sys.argv) > 4 else 0, int(sys.argv[5]) if len(sys.argv) > 5 else 1
OLD = b"what was there before"
TIME_LIMIT = 60

# Options; the outputs, which are there before.
JOBS = {
    "render": ("render a.wav -o out.wav --fade-in 10ms --eq peak:1k:+3 --speed 1.1 --gain -3", ["out.wav"]),
    "convert": ("render a.wav -o out.flac --rate 44100 --format s24", ["out.flac"]),
    "mix": ("mix t.json -o out.wav --threads 2 --report out.json", ["out.wav", "out.json"]),
    "picture": ("mix t.json -o out.wav --picture out.svg", ["out.wav", "out.svg"]),
    "plot": ("plot spectrogram a.wav -o out.png", ["out.png"]),
}

# What is tried at the n-th call of a kind; with a plus, from then on.
ACTIONS = {
    "read": ["EIO", "EINTR", "short"], "write": ["ENOSPC+", "EIO", "EINTR", "short"],
    "open": ["EMFILE+", "EACCES", "EINTR"], "seek": ["EIO"], "sync": ["EIO", "ENOSPC"], "close": ["EIO", "ENOSPC"],
    "rename": ["EACCES", "ENOSPC"], "thread": ["EAGAIN", "EAGAIN+"], "allocate": ["ENOMEM", "ENOMEM+"],
}
CHANGES = ["truncate a.wav", "grow a.wav", "replace a.wav b.wav"]
SIGNALS = [f"signal {number.value}" for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL)]


def write_sound(path, seed, frames=3000):
    with wave.open(str(path), "wb") as sound:
        sound.setparams((2, 2, 48000, 0, "NONE", ""))
        sound.writeframes(random.Random(seed).randbytes(4 * frames))
    # A marker in its middle.
    cue = struct.pack("<4sI3I4s3I", b"cue ", 28, 1, 1, 0, b"data", 0, 0, frames // 2)
    path.write_bytes(b"RIFF" + struct.pack("<I", path.stat().st_size - 8 + len(cue)) + path.read_bytes()[8:] + cue)


def fill(folder, outputs=()):
    for seed, name in enumerate(("a.wav", "b.wav")):
        write_sound(folder / name, seed)
    strip = {"name": "a", "media": "a.wav", "at": 0, "from": 0, "to": "0.05s", "fadeIn": {"length": "0.005s"}}
    tracks = [{"name": "1", "strips": [strip]}, {"name": "2", "strips": [strip | {"media": "b.wav", "at": "0.01s"}]}]
    (folder / "t.json").write_text(json.dumps({"audlmd": 1, "name": "t", "sampleRate": 48000, "channels": 2, "tracks": tracks}))
    for name in outputs:
        (folder / name).write_bytes(OLD)


def run(folder, words, surroundings=None, before=None):
    environment = {**os.environ, **(surroundings or {})}
    return subprocess.run([COMMAND, *words.split()], cwd=folder, env=environment, capture_output=True, text=True, errors="backslashreplace",
                          timeout=TIME_LIMIT, preexec_fn=before)


def contents(folder):
    return {path.name: path.read_bytes() for path in folder.iterdir()}


def lines_wrong(outcome):
    """What is wrong with how a run failed, or an empty text."""
    if outcome.returncode < 0:
        return f"ended by signal {-outcome.returncode}"
    # The report of a mix that fails may fail, too.
    if not re.fullmatch(r"(audlmd: 'out\.json' cannot be written: [^\n]+\n)?audlmd: [^\n]+\n", outcome.stderr):
        return f"status {outcome.returncode} with: {outcome.stderr!r}"
    return ""


def reported(name, content):
    """What a file says, but for what was measured and for the folder."""
    return re.sub(rb'"seconds": [-\d.e]+|"slowest": \{[^}]*\}|"media": "[^"]*"', b"", content) if name.endswith(".json") else content


def states(found, outputs, wholes, told):
    """Of each output: "old", "whole", "failed", or "told" where its content is incomplete, and the command says so; or "damaged"."""
    def state(name):
        content = found.get(name, b"")
        if content == OLD:
            return "old"
        if any(reported(name, content) == whole[name] for whole in wholes):
            return "whole"
        # A report is written of a mix that fails, too.
        if name.endswith(".json") and b'"failure": "' in content and content.endswith(b"}\n"):
            return "failed"
        ends = name.endswith(".wav") and len(content) == len(wholes[0][name]) or content.endswith((b"}\n", b"</svg>\n"))
        return "told" if ends and told else "damaged"
    return {state(name) for name in outputs}


def verdict(outcome, found, outputs, wholes, killed=0):
    """What is wrong with the end of a job, or an empty text. `wholes`: the right outputs, one of which is expected."""
    left = sorted(set(found) - {"a.wav", "b.wav", "t.json", *outputs})
    if left and killed != signal.SIGKILL:
        return f"left {left}"
    # A picture shows what it could not read.
    told = "silent" in outcome.stdout or any(name.endswith(".svg") for name in outputs)
    ends = states(found, outputs, wholes, told)
    if "damaged" in ends:
        return f"damaged an output, status {outcome.returncode}: {outcome.stderr!r}"
    if outcome.returncode == 0:
        return "succeeded without an output" if ends & {"old", "failed"} else ""
    if killed and outcome.returncode == -killed:
        return ""
    return lines_wrong(outcome)


def faults(calls):
    """The faults of a job that makes so many calls of each kind."""
    draw = random.Random(SEED)
    for kind, number in calls.items():
        actions = [re.sub("E[A-Z]+", lambda name: str(getattr(errno, name.group())), action) for action in ACTIONS[kind]]
        actions += SIGNALS + (CHANGES if kind in ("read", "open", "seek") else [])
        every = [f"{kind} {n} {action}" for n in range(1, number + 1) for action in actions]
        yield from draw.sample(every, COUNT) if 0 < COUNT < len(every) else every


def attempt(words, outputs, wholes, fault):
    kind, _, action, *more = fault.split()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        fill(folder, outputs)
        try:
            outcome = run(folder, words, {"LD_PRELOAD": INJECTOR, "AUDLMD_FAULT": fault})
        except subprocess.TimeoutExpired:
            return fault, "hangs", "hung"
        killed = int(more[0]) if action == "signal" else 0
        # The destructor of a JSON value needs memory.
        if "t.json" in words and kind == "allocate" and action.startswith(str(errno.ENOMEM)):
            killed = signal.SIGABRT
        wrong = verdict(outcome, contents(folder), outputs, wholes, killed)
        if kind == "thread" and outcome.returncode == 1 and "a thread cannot be started" not in outcome.stderr:
            wrong = wrong or outcome.stderr
        return fault, wrong, {-killed: "ended by a signal", 0: "succeeded"}.get(outcome.returncode, "refused")


def try_job(words, outputs):
    wholes = []
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for swapped in (False, True): # what a job makes of the file that replaces another in CHANGES
            fill(folder)
            if swapped:
                shutil.copy(folder / "b.wav", folder / "a.wav")
            outcome = run(folder, words, {"LD_PRELOAD": INJECTOR, "AUDLMD_FAULT_CALLS": str(folder / "calls")})
            if outcome.returncode != 0:
                sys.exit(outcome.stderr)
            wholes.append({output: reported(output, (folder / output).read_bytes()) for output in outputs})
            if not swapped:
                calls = {kind: int(number) for kind, number in map(str.split, (folder / "calls").open())}
    return [functools.partial(attempt, words, outputs, wholes, fault) for fault in faults(calls)]


def full_disk(words, outputs, wholes, size):
    """A disk that takes `size` bytes of a file."""
    def limited():
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        fill(folder, outputs)
        outcome = run(folder, words, before=limited)
        wrong = verdict(outcome, contents(folder), outputs, wholes) or ("succeeded" if outcome.returncode == 0 else "")
        return f"{words.split()[0]}, {size} bytes of disk", wrong, "refused"


def full_disks():
    others = [(f"render a.wav -o out.{kind}", [f"out.{kind}"]) for kind in ("aiff", "raw")]
    for words, outputs in (JOBS["render"], JOBS["convert"], JOBS["plot"], *others):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            fill(folder)
            run(folder, words)
            wholes = [{output: (folder / output).read_bytes() for output in outputs}]
        sizes = range(len(wholes[0][outputs[0]]))
        for size in random.Random(SEED).sample(sizes, COUNT) if 0 < COUNT < len(sizes) else sizes:
            yield functools.partial(full_disk, words, outputs, wholes, size)


def redirected(words, how, status):
    """The job with its standard streams changed by the shell, without any change of its output."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        fill(folder)
        whole = run(folder, words.replace("-o -", "-o out.wav"))
        before = contents(folder)
        line = f"'{COMMAND}' {words} {how}; exit ${{PIPESTATUS[0]}}"
        outcome = subprocess.run(["bash", "-c", line], cwd=folder, capture_output=True, text=True, timeout=TIME_LIMIT)
        wrong = "" if outcome.returncode == status and contents(folder) == before and whole.returncode == 0 else (
            f"status {outcome.returncode}: {outcome.stderr!r}; {[k for k, v in contents(folder).items() if v != before.get(k)]}")
        if status != 0 and "2>" not in how:
            wrong = wrong or lines_wrong(outcome)
        return f"{words} {how}", wrong, "succeeded" if status == 0 else "refused"


def two_writers():
    """The output is that of one of them."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        fill(folder)
        jobs = [subprocess.Popen([COMMAND, "render", sound, "-o", "out.wav"], cwd=folder, stdout=subprocess.DEVNULL)
                for sound in ("a.wav", "b.wav")]
        statuses = [job.wait() for job in jobs]
        both = contents(folder).get("out.wav")
        wholes = []
        for sound in ("a.wav", "b.wav"):
            run(folder, f"render {sound} -o out.wav")
            wholes.append((folder / "out.wav").read_bytes())
        left = sorted(set(contents(folder)) - {"a.wav", "b.wav", "t.json", "out.wav"})
        fine = statuses == [0, 0] and both in wholes and not left
        return "two writers", "" if fine else f"{statuses}, left {left}, whole: {both in wholes}", "succeeded"


def few_descriptors():
    """Thirty media, one after the other, and sixteen descriptors."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        strips = [{"name": str(n), "media": f"{n}.wav", "at": f"{n}s", "from": 0, "to": "0.05s"} for n in range(30)]
        for n in range(30):
            write_sound(folder / f"{n}.wav", n)
        (folder / "t.json").write_text(json.dumps({"audlmd": 1, "name": "t", "sampleRate": 48000, "channels": 2, "tracks": [
            {"name": strip["name"], "strips": [strip]} for strip in strips]}))
        run(folder, "mix t.json -o many.wav")
        outcome = run(folder, "mix t.json -o few.wav", before=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (16, 16)))
        same = outcome.returncode == 0 and (folder / "few.wav").read_bytes() == (folder / "many.wav").read_bytes()
        return "few descriptors", "" if same else outcome.stderr, "succeeded"


def surroundings():
    yield from full_disks()
    for words, how, status in [
            ("render a.wav -o -", "| true", 5), ("render a.wav -o -", "> /dev/full", 5), ("render a.wav -o out.wav", "> /dev/full", 5),
            ("render a.wav -o out.wav", "<&- >&- 2>&-", 5), ("mix t.json -o out.wav", "<&- >&-", 5),
            ("mix t.json -o out.wav", "2>&-", 0), ("--help", "> /dev/full", 5)]:
        yield functools.partial(redirected, words, how, status)
    yield from [two_writers] * 10 + [few_descriptors]


def side_by_side(tries):
    """Runs tries, each of which says what was tried, what is wrong and how it ended. Exits with the number of wrong ones."""
    ends, wrong = {}, []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for tried, problem, end in pool.map(lambda make: make(), tries):
            ends[end] = ends.get(end, 0) + 1
            if problem:
                wrong.append(f"{tried}: {problem}")
                print(wrong[-1], flush=True)
    print(f"{JOB}: {sum(ends.values())} faults:", ", ".join(f"{number} {end}" for end, number in ends.items()),
          f"; {len(wrong)} wrong")
    sys.exit(1 if wrong else 0)


side_by_side(surroundings() if JOB == "surroundings" else try_job(*JOBS[JOB]))
