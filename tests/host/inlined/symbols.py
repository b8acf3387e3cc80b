"""symbols.py ARCHIVE HOST: inlined render functions bind in the program that links to them, define no operation of the
host, and call none for a sample. A visible or second definition could take the place of a library's, or the other way
round."""

import subprocess
import sys

archive, host = sys.argv[1:]


def rows_of(*command):
    return [line.split() for line in subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()]


# Number, value, size, type, binding, visibility, section, name.
symbols = [row for row in rows_of("readelf", "-sW", archive) if len(row) == 8 and row[4] in ("GLOBAL", "WEAK")]
defined = [row for row in symbols if row[6] != "UND"]
# The host's weak symbols are inline functions, which every library has.
operations = {row[-1] for row in rows_of("nm", "-D", "--defined-only", host) if row[-2] in "TDBR"}
per_sample = ("_ZNK3Aud18SampleCacheSegment6", "_ZNK3Aud18SampleCacheSegment8pSamples", "_ZN3Aud6Filter6Biquad")

# The same in every library: the types of functions, which clang++'s sanitizer describes, and templates of the standard
# library, which are visible by its own wish.
same_everywhere = ("_ZTIF", "_ZTSF", "_ZSt", "_ZNSt", "_ZNKSt", "_ZN9__gnu_cxx")
visible = [row for row in defined if row[5] != "HIDDEN" and not row[7].startswith(same_everywhere)]
problems = {f"{row[7]} is visible outside the program" for row in visible}
problems |= {f"{row[7]} is defined a second time" for row in defined if row[7] in operations}
problems |= {f"{row[7]} is called" for row in symbols if row[7].startswith(per_sample)}
if len(defined) < 50 or len(operations) < 50:
    problems.add(f"only {len(defined)} symbols and {len(operations)} operations were found")
print("\n".join(sorted(problems)))
sys.exit(bool(problems))
