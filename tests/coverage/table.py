#!/usr/bin/env python3
"""What ran of the effect: a table by folder, and what did not run.  In the repository's root.

usage: table.py BUILD_FOLDER

From gcov itself, whose text, which gcovr reads, leaves out the branches of templates.
"""
import collections
import json
import os
import subprocess
import sys


def counted(build):
    """Of each line of the effect: how often it ran, and the counts of its branches by where they are compiled."""
    found = [os.path.join(folder, name) for folder, _, names in os.walk(build) for name in names
             if name.endswith(".gcda")]
    text = subprocess.run(["gcov", "--json-format", "--stdout", "--branch-probabilities", *map(os.path.abspath, found)],
                          capture_output=True, check=True, text=True).stdout
    lines = collections.defaultdict(lambda: [0, {}])
    for unit in map(json.loads, text.splitlines()):
        for file in unit["files"]:
            name = os.path.relpath(file["file"])
            for line in file["lines"] if name.startswith("effect/") else []:
                entry = lines[name, line["line_number"]]
                entry[0] += line["count"]
                counts = [branch["count"] for branch in line["branches"] if not branch["throw"]]
                # A function of its own has the same branches in all units; what is inlined is as it is in one.
                function = line.get("function_name")
                place = (function, len(counts)) if function else (unit["data_file"], len(counts))
                before = entry[1].get(place, [0] * len(counts))
                entry[1][place] = [a + b for a, b in zip(before, counts)]
    return lines


def merged(places):
    """Which branches are taken.  Instances of a template count as one."""
    taken, templates = [], collections.defaultdict(list)
    for (place, length), counts in places.items():
        if place.startswith("_Z"):
            templates[length].append(counts)
        else:
            taken += [count > 0 for count in counts]
    for instances in templates.values():
        taken += [any(counts) for counts in zip(*instances)]
    return taken


folders = collections.defaultdict(lambda: [0, 0, 0, 0])
left = []
for (name, number), (runs, places) in sorted(counted(sys.argv[1]).items()):
    branches = merged(places)
    for counts in (folders[os.path.dirname(name)], folders["all"]):
        for i, more in enumerate((1, runs > 0, len(branches), sum(branches))):
            counts[i] += more
    if runs == 0 or not all(branches):
        with open(name, encoding="utf-8") as source:
            text = source.read().split("\n")[number - 1].strip()
        untaken = f"{len(branches) - sum(branches)} of {len(branches)}" if runs else "no run"
        left.append(f"{untaken:>9}  {name}:{number}  {text}")

print(f"{'folder':<20} {'lines':>6} {'run':>6} {'':>8} {'branches':>9} {'taken':>6}")
for folder, (lines, run, branches, taken) in sorted(folders.items(), key=lambda item: item[0] == "all"):
    print(f"{folder:<20} {lines:>6} {run:>6} {run / lines:>8.2%} {branches:>9} {taken:>6}"
          f" {taken / branches if branches else 1:>8.2%}")
print("\nBranches not taken, of those of the line:")
print("\n".join(left) or "none")
