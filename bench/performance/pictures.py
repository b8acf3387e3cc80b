"""The pictures of the page."""

import collections
import math
import statistics

from jobs import cpu
from modes import FAMILIES, decode, family_rows, is_twin

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


def draw_jobs(results, path):
    results = {job: {program: runs for program, runs in measured["runs"].items() if "," not in program}
               for job, measured in results.items()}
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
