#!/usr/bin/env python3
# check_arrows.py TABLE SOURCES   checks every #include "..." below the folder SOURCES against the table of allowed arrows.
import fnmatch
import re
import sys
from pathlib import Path

table, sources = Path(sys.argv[1]), Path(sys.argv[2])
patterns, allowed, fitted, faults = {}, {}, set(), []
for line in table.read_text().splitlines():
    if line.strip() and not line.startswith("#"):
        (name,), patterns_of_row, below = (part.split() for part in line.split("|"))
        faults += [f"{table.name}: {name} may include {row}, which is no row above it" for row in below if row not in patterns]
        patterns[name], allowed[name] = patterns_of_row, {name, *below}


def row_of(file):
    fitting = [name for name in patterns if any(fnmatch.fnmatchcase(file, pattern) for pattern in patterns[name])]
    return fitting[-1] if fitting else None


for path in sorted(p for p in sources.rglob("*") if p.suffix in (".h", ".cpp")):
    file = path.relative_to(sources).as_posix()
    row = row_of(file)
    fitted.add(row)
    for included in re.findall(r'^\s*#\s*include\s*"([^"]+)"', path.read_text(encoding="utf-8"), re.MULTILINE):
        if row is None or row_of(included) not in allowed[row]:
            faults.append(f"{file} (row {row}) may not include {included} (row {row_of(included)})")
faults += [f"{table.name}: no file is in the row {name}" for name in patterns if name not in fitted]
sys.exit("\n".join(faults) or 0)
