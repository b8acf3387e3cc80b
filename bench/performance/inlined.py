"""Measuring both packagings of the render functions on the stand-alone host: the library's tables, and inlined."""

import re

from commands import run
from measure import machine
from modes import encode
from tables import table

PROCESSES = 3
PAIR = re.compile(r"(.+?) +(tables|by sample) +([\d.]+) ns +(?:inlined|by block) +([\d.]+) ns")
FIELD = re.compile(r"  bits? [\d-]+ +(\w+) +(\d+) +(.+)")


def measure_pairs(build):
    """The seconds of a pair beside the firsts: strips by their names, conversions by their output types."""
    pairs = {"tables": {}, "by sample": {}}
    for name, kind, first, second in PAIR.findall(run([build / "bench/audlmd-bench-inlined"])):
        pairs[kind][name] = [float(first), float(second)]
    return {"strips": pairs["tables"], "conversions": pairs["by sample"]}


def measure_every_mode(build):
    """For each code, by the headings of the program: the least of several processes."""
    least = {}
    for _ in range(PROCESSES):
        head, *lines = (line.split() for line in run([build / "bench/audlmd-bench-every-mode"]).splitlines())
        for code, *times in lines:
            known = least.setdefault(int(code), {})
            for name, time in zip(head[1:], map(float, times)):
                known[name] = min(time, known.get(name, time))
    return [{"code": code, **times} for code, times in least.items()]


def words_of_fields(build):
    """For each field, its values in the words of the command. Twelve codes have all values of all fields."""
    words = {}
    for i in range(12):
        code = encode(i % 2, level=i % 3, filter=i % 2, conversion=i % 3, envelope=i, walk=i // 3 % 2)
        for field, value, text in FIELD.findall(run([build / "audlmd", "modes", code])):
            if not text.startswith("without effect"):
                words.setdefault(field, {})[int(value)] = text
    return {field: [texts[value] for value in sorted(texts)] for field, texts in words.items()}


def measure_inlined(build):
    listed = (line.split(maxsplit=2) for line in run([build / "audlmd", "modes"]).splitlines())
    chains = {int(code): chain for code, _, chain in listed}
    return {"machine": machine(), **measure_pairs(build), "modes": measure_every_mode(build), "chains": chains,
            "words": words_of_fields(build)}


def measured_on(figures):
    m = figures["machine"]
    return f"{m['date']}: {m['cpu']}, {m['cores']} virtual cores; {m['compiler']}"


def inlined_tables(figures):
    strips = [[name, f"{tables:.2f}", f"{inlined:.2f}", f"{inlined / tables:.2f}"]
              for name, (tables, inlined) in figures["strips"].items()]
    conversions = [[name, *(f"{time:.2f}" for kind in ("", "Sum") for time in figures["conversions"][kind + name])]
                   for name in figures["conversions"] if not name.startswith("Sum")]
    return "\n\n".join([
        f"Measured on {measured_on(figures)}, `-O2`, baseline x86-64.",
        table(["strip, to 32-bit floats", "tables, ns", "inlined, ns", "part"], strips),
        table(["conversion", "written by sample, ns", "by block, ns", "summed by sample, ns", "by block, ns"], conversions)])
