"""Running programs: their output, and their cost."""

import json
import shlex
import subprocess
import sys


def run(command, **options):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True, **options).stdout


# A process counts the memory of whoever has started it as its own, up to that moment: so a small one starts it.
WATCH = """
import json, os, sys, time
start = time.monotonic()
quiet = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
_, status, usage = os.wait4(os.posix_spawnp(sys.argv[1], sys.argv[1:], os.environ, file_actions=quiet), 0)
print(json.dumps({"user": usage.ru_utime, "system": usage.ru_stime, "wall": time.monotonic() - start,
                  "memory": usage.ru_maxrss / 1000}))
sys.exit(os.waitstatus_to_exitcode(status) != 0)
"""


def cost(command, **options):
    """User and system CPU seconds, wall seconds and peak memory in MB."""
    process = subprocess.run([sys.executable, "-S", "-c", WATCH, *map(str, command)], stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, text=True, **options)
    if process.returncode != 0:
        sys.exit(f"performance: {shlex.join(map(str, command))} failed:\n{process.stderr}")
    return json.loads(process.stdout)
