"""programs.py ROOT COMPILER...: compiles every C++ program of the documents that is not marked as a part of one.

A part stands below a line <!-- part: ... -->. What is installed is searched first; the headers that are for programs built
from source come from the tree.
"""

import pathlib
import re
import subprocess
import sys

root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2:]
fence = re.compile(r"(<!-- part: .* -->\n+)?```cpp\n(.*?)```", re.S)
programs = failures = 0
for page in [root / "README.md", root / "CONTRIBUTING.md", *sorted(root.glob("docs/*.md"))]:
    for part, program in fence.findall(page.read_text()):
        if part:
            continue
        programs += 1
        done = subprocess.run([*compiler, f"-I{root}", "-fsyntax-only", "-x", "c++", "-"], input=program, text=True,
                              capture_output=True)
        if done.returncode != 0:
            failures += 1
            print(f"{page}: this does not compile:\n{program}\n{done.stderr}")
print(f"{programs} programs, {failures} failures")
sys.exit(failures != 0 or programs < 4)
