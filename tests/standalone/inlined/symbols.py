"""symbols.py ARCHIVE HOST: inlined render functions bind in the program that links to them, and define no operation of the
host. Otherwise a symbol of the program could take the place of a library's, or the other way round."""

import subprocess
import sys

archive, host = sys.argv[1:]


def lines_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()


# Number, value, size, type, binding, visibility, section, name.
rows = [line.split() for line in lines_of("readelf", "-sW", archive)]
symbols = [row for row in rows if len(row) == 8 and row[4] in ("GLOBAL", "WEAK") and row[6] not in ("UND", "Ndx")]
exported = {line.split()[-1] for line in lines_of("nm", "-D", "--defined-only", host)}
problems = [f"{row[7]} is visible outside the program" for row in symbols if row[5] != "HIDDEN"]
problems += [f"{row[7]} is defined a second time" for row in symbols if row[7] in exported and row[4] == "GLOBAL"]
perSample = ["SampleCacheSegment6status", "SampleCacheSegment8pSamples", "SampleCacheSegment6length", "Biquad"]
for row in rows:
    problems += [f"{row[-1]} is called" for name in perSample if len(row) == 8 and name in row[7] and "MultiBand" not in row[7]]
if len(symbols) < 100:
    problems.append(f"the archive defines {len(symbols)} symbols only")
print("\n".join(problems))
sys.exit(bool(problems))
