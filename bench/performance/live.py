"""Measuring live playback: from an order to the changed sound, the share of a processor, the most strips in real time."""

import json
import pathlib
import shutil
import tempfile

from commands import run
from measure import machine
from tables import table


def measure_live(build):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="audlmd-bench-", dir="/dev/shm"))
    try:
        return {"machine": machine(), **json.loads(run([build / "bench/audlmd-bench-live", folder]))}
    finally:
        shutil.rmtree(folder)


def live_tables(figures):
    shares = {}
    for share in figures["shares"]:
        shares.setdefault(share["what"], []).append(f"{100 * share['share']:.1f} %")
    blocks = [row["block"] for row in figures["latency"]]
    rows = [["from an order to its first sample, median", *(f"{row['median']:.1f} ms" for row in figures["latency"])],
            [f"the same, the longest of {figures['latency'][0]['jumps']}",
             *(f"{row['largest']:.1f} ms" for row in figures["latency"])],
            *([f"processor time of {what}", *values] for what, values in shares.items())]
    return "\n\n".join([
        f"Measured on {figures['machine']['date']}: {figures['machine']['cpu']}, {figures['machine']['cores']} virtual cores.",
        table(["", *(f"blocks of {block}" for block in blocks)], rows),
        f"With equaliser, fade and automation in all strips, one processor plays **{figures['strips']} stereo strips** in real "
        "time before the first underrun."])
