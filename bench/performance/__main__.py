"""performance BUILD PAGE [SECTION...]: measures, and writes figures and pictures into the page.

Sections: modes calls load size instructions build, jobs mix, inlined, live; all of them where none is named. The figures are
kept in BUILD/bench/performance.json, so that the page can be made again from old and new ones. What needs a section
without figures there stays as it is in the page. Four groups are written each as a whole, with the machine and the day:
the library (modes to build), whole jobs (jobs and mix), inlined, and live.
"""

import json
import pathlib
import re
import sys

import measure
from inlined import inlined_tables, measure_inlined
from jobs import measure_jobs
from live import live_tables, measure_live
from lookup import lookup_page
from mix import measure_mix
from pictures import draw_families, draw_jobs, draw_modes
from tables import family_table, goal_table, job_goal_table, job_table, machine_line


def with_pictures(content, **pictures):
    return content + "".join(f"\n\n![{text}](images/performance-{name}.svg)" for name, text in pictures.items())


def write_blocks(page, blocks):
    text = page.read_text()
    for name, content in blocks.items():
        pattern = re.compile(rf"(<!-- {name}: written by scripts/performance -->\n).*?(\n?<!-- end -->)", re.S)
        assert pattern.search(text), f"{page} has no place for {name}"
        text = pattern.sub(lambda match, c=content: match[1] + c + "\n" + match[2].lstrip(), text)
    page.write_text(text)


def write_library(figures, page, _):
    write_blocks(page, {
        "machine": machine_line(figures["machine"]),
        "goals": with_pictures(goal_table(figures), modes="Nanoseconds per output sample of every render function",
                               families="Time per output sample as a multiple of the floor"),
        "families": family_table(figures)})
    images = page.parent / "images"
    draw_modes(figures["modes"]["all"], images / "performance-modes.svg")
    draw_families(figures["modes"]["families"], images / "performance-families.svg")


def write_jobs(figures, page, _):
    write_blocks(page, {"jobs": "\n\n".join([
        machine_line(figures["jobsMachine"]), job_goal_table(figures),
        with_pictures(job_table(figures), jobs="CPU seconds of whole jobs")])})
    draw_jobs(figures["jobs"], page.parent / "images/performance-jobs.svg")


def write_live(figures, page, _):
    write_blocks(page, {"live": live_tables(figures["live"])})


def write_inlined(figures, page, build):
    write_blocks(page, {"inlined": inlined_tables(figures["inlined"])})
    lookup = build / "bench/performance-modes.html"
    lookup.write_text(lookup_page(figures["inlined"]))
    print(f"performance: {lookup} looks up any mode", file=sys.stderr)


LIBRARY_SECTIONS = {"modes": measure.measure_modes, "calls": measure.measure_calls, "load": measure.measure_load,
                    "size": measure.measure_size, "instructions": measure.measure_instructions,
                    "build": measure.measure_build}
JOB_SECTIONS = {"jobs": measure_jobs, "mix": measure_mix}
SECTIONS = {**LIBRARY_SECTIONS, **JOB_SECTIONS, "inlined": measure_inlined, "live": measure_live}


def main():
    build, page = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    store = build / "bench/performance.json"
    figures = json.loads(store.read_text()) if store.exists() else {}
    chosen = sys.argv[3:] or list(SECTIONS)
    if unknown := set(chosen) - set(SECTIONS):
        sys.exit(f"performance: no such section: {', '.join(sorted(unknown))}; there are {', '.join(SECTIONS)}")
    for section in chosen:
        print(f"performance: {section}", file=sys.stderr, flush=True)
        figures[section] = SECTIONS[section](build)
        if section in LIBRARY_SECTIONS:
            figures["machine"] = measure.machine()
        if section in JOB_SECTIONS:
            figures["jobsMachine"] = measure.machine()
        store.write_text(json.dumps(figures))
    missing = []
    for sections, write in ((LIBRARY_SECTIONS, write_library), (JOB_SECTIONS, write_jobs), (["inlined"], write_inlined),
                            (["live"], write_live)):
        if not set(sections).isdisjoint(chosen):
            without_figures = [section for section in sections if section not in figures]
            missing += without_figures
            if not without_figures:
                write(figures, page, build)
    if missing:
        sys.exit("performance: not measured yet, so that their part of the page is left as it is: " + ", ".join(missing))


main()
