#!/usr/bin/env python3
"""What ran of the effect: a table by folder, and what did not run.

usage: table.py REPORT    gcovr's JSON, made in the repository's root
"""
import collections
import json
import os
import sys

folders = collections.defaultdict(lambda: [0, 0, 0, 0])
left = []
with open(sys.argv[1], encoding="utf-8") as report:
    files = json.load(report)["files"]
for file in files:
    name = file["file"]
    with open(name, encoding="utf-8") as source:
        text = source.read().split("\n")
    for line in file["lines"]:
        if line["gcovr/noncode"] or line["gcovr/excluded"]:
            continue
        branches = [branch["count"] > 0 for branch in line["branches"]]
        for counts in (folders[os.path.dirname(name)], folders["all"]):
            for i, more in enumerate((1, line["count"] > 0, len(branches), sum(branches))):
                counts[i] += more
        if line["count"] == 0 or not all(branches):
            untaken = f"{len(branches) - sum(branches)} of {len(branches)}" if line["count"] else "no run"
            number = line["line_number"]
            left.append(f"{untaken:>9}  {name}:{number}  {text[number - 1].strip()}")

print(f"{'folder':<22} {'lines':>6} {'run':>6} {'':>8} {'branches':>9} {'taken':>6}")
for folder, (lines, run, branches, taken) in sorted(folders.items(), key=lambda item: item[0] == "all"):
    print(f"{folder:<22} {lines:>6} {run:>6} {run / lines:>8.2%} {branches:>9} {taken:>6}"
          f" {taken / branches if branches else 1:>8.2%}")
print("\nBranches not taken, of those of the line:")
print("\n".join(left) or "none")
