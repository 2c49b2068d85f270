#!/usr/bin/env python3
"""Test lines against code lines: non-blank, non-comment lines of the tracked
C++, Python and shell sources (tests/ also counts its CMake files).
`--by-folder` breaks the test side down."""
import re
import subprocess
import sys
from collections import Counter

def sloc(path):
    text = open(path, encoding="utf-8", errors="replace").read()
    if path.endswith((".cpp", ".h")):
        text = re.sub(r"/\*.*?\*/", lambda m: "\n" * m.group(0).count("\n"), text, flags=re.S)
        comment = "//"
    else:
        comment = "#"
    return sum(1 for line in text.splitlines()
               if line.strip() and not line.strip().startswith(comment))

files = subprocess.run(["git", "ls-files"], capture_output=True, text=True, check=True).stdout.split()
tests, code, folders = 0, 0, Counter()
for f in files:
    if f.startswith("tests/"):
        if f.endswith((".cpp", ".h", ".cmake", ".py", ".sh")) or f.endswith("CMakeLists.txt"):
            n = sloc(f)
            tests += n
            folders["/".join(f.split("/")[:2])] += n
    elif f.endswith((".cpp", ".h", ".py", ".sh")):
        code += sloc(f)
print(f"tests {tests}  code {code}  ratio {tests / code:.3f}")
if "--by-folder" in sys.argv:
    for folder, n in sorted(folders.items()):
        print(f"  {n:6d}  {folder}")
