"""headers.py ROOT COMPILER FLAG...: compiles every header of the library and of the host alone."""

import concurrent.futures
import pathlib
import subprocess
import sys

root, compiler, *flags = sys.argv[1:]
folders = ["contract", "ole", "loop_modes", "host"]
chief_headers = ["ole/Aud/Aud__RenderIterators", "ole/Orv/OrvModeMeta"]


def compile_alone(header):
    command = [compiler, *flags, "-fsyntax-only", "-Werror", "-x", "c++", "-"]
    include = f'#include "{header}"\n'
    # Twice, because a header may be included twice.
    result = subprocess.run(command, cwd=root, input=include * 2, text=True, capture_output=True)
    return header, result.returncode, result.stderr


headers = chief_headers + sorted(
    str(path.relative_to(root)) for folder in folders for path in pathlib.Path(root, folder).rglob("*.hpp")
)
assert len(headers) > 40, headers
with concurrent.futures.ThreadPoolExecutor(2) as pool:
    failed = [result for result in pool.map(compile_alone, headers) if result[1] != 0]
for header, _, errors in failed:
    print(f"{header} does not compile alone:\n{errors}")
print(f"{len(headers)} headers, {len(failed)} failed")
sys.exit(bool(failed))
