"""The tables of the page."""

import statistics

from jobs import GOALS, cpu
from modes import FAMILIES, REVERSE_GOALS, family_rows


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def ratio_range(rows):
    ratios = sorted(r["minimum"] / r["floorMinimum"] for r in rows)
    return ratios[0], statistics.median(ratios), ratios[-1]


class GoalTable:
    """Rows of what was to be reached and what was; what was missed is bold."""

    def __init__(self):
        self.rows = []

    def add(self, what, goal, reached, spread, met):
        self.rows.append([what, goal, f"{reached}" if met else f"**{reached}**", spread])

    def text(self):
        return table(["what", "goal, at most", "reached", "spread"], self.rows)


def goal_table(figures):
    goals = GoalTable()
    add = goals.add

    for family in FAMILIES:
        name, _, _, goal = family
        reverse_goal = REVERSE_GOALS.get(name)
        low, middle, high = ratio_range(family_rows(figures["modes"]["families"], family, 1))
        reverse_low, reverse, reverse_high = ratio_range(family_rows(figures["modes"]["families"], family, 0))
        add(f"{name} / floor", f"{goal:.2f}", f"{middle:.2f}", f"{low:.2f} to {high:.2f} over the output types"
            + ("" if reverse_goal else f"; reverse {reverse:.2f}"), middle <= goal + 0.005)
        if reverse_goal:
            add(f"{name}, reverse / floor", f"{reverse_goal:.2f}", f"{reverse:.2f}",
                f"{reverse_low:.2f} to {reverse_high:.2f} over the output types", reverse <= reverse_goal + 0.005)
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
    add("own-symbol lookups at load; dynamic relocations", "1; 120", f"{size['ownLookups']}; {size['relocations']}",
        f"{size['exported']:,} symbols exported, {size['imported']} imported",
        size["ownLookups"] <= 1 and size["relocations"] <= 120)
    units = figures["build"]
    total = sum(u["user"] + u["system"] for u in units)
    most = max(u["memory"] for u in units)
    add("full build of the library, CPU; peak memory of a unit", "180 s; 550 MB", f"{total:.0f} s; {most:.0f} MB",
        f"{len(units)} units, one at a time", total <= 180 and most <= 550)
    return goals.text()


def job_goal_table(figures):
    goals = GoalTable()
    add = goals.add
    for job, measured in figures["jobs"].items():
        spent = {p: [r["user"] + r["system"] for r in runs] for p, runs in measured["runs"].items()}
        peer = min((p for p in ("ffmpeg", "sox") if p in spent), key=lambda p: min(spent[p]))
        ratio = min(spent["audlmd"]) / min(spent[peer])
        add(f"job: {job} / {peer}", f"{GOALS[job]:.2f}", f"{ratio:.2f}",
            f"{min(spent['audlmd']):.2f} to {max(spent['audlmd']):.2f} s against {min(spent[peer]):.2f} to "
            f"{max(spent[peer]):.2f} s", ratio <= GOALS[job] + 0.005)
    mix = figures["mix"]
    ratio = mix["together"] / mix["alone"]
    add("mix of 2,016 clips on 24 tracks / its strips alone", "1.10", f"{ratio:.2f}",
        f"{mix['together']:.2f} s against {mix['alone']:.2f} s", ratio <= 1.105)
    memory = list(mix["memory"].values())
    add("memory of a mix: 16 times the length / once", "1.10", f"{memory[-1] / memory[0]:.2f}",
        " and ".join(f"{value:.1f} MB" for value in memory) + " for 1.5, 6 and 24 minutes", memory[-1] <= 1.105 * memory[0])
    return goals.text()


def family_table(figures):
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


def job_table(figures):
    rows = []
    programs = list(next(iter(figures["jobs"].values()))["runs"])
    for job, measured in figures["jobs"].items():
        row = [job]
        for program in programs:
            if program not in measured["runs"]:
                row.append("")
                continue
            runs = measured["runs"][program]
            best = cpu(runs)
            row.append(f"{best['user']:.2f} + {best['system']:.2f} = {best['user'] + best['system']:.2f}; "
                       f"{min(r['wall'] for r in runs):.2f}")
        copies, arithmetic = measured["limit"]["copies"], measured["limit"]["arithmetic"]
        rows.append([*row, f"{copies:.2f} + {arithmetic:.2f} = {copies + arithmetic:.2f}"])
    return table(["job", *programs, "copies + arithmetic"], rows)


def machine_line(m):
    return (f"Measured on {m['date']}: {m['cpu']}, {m['cores']} virtual cores; {m['compiler']}, `-O2`, baseline x86-64; "
            f"ffmpeg {m['ffmpeg']}, sox {m['sox']}.")
