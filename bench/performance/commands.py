"""Running programs: their output, and their cost."""

import os
import shlex
import subprocess
import sys
import time


def run(command, **options):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True, **options).stdout


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
