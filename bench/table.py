#!/usr/bin/env python3
"""Prints the tables of docs/performance.md from what the benchmark wrote down.

usage: table.py [out/bench.json]

Without an argument it reads bench/record.json, the run that the documentation speaks of.  After another one,
copy its file there and the printed tables into the document.
"""
import json
import os
import sys

RECORD = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'record.json')
DEPTHS = ('8', '16', 'float')


def triple(rows, name, field, decimals, path='avx512'):
    """One figure in the three depths: `55 / 68 / 67`."""
    found = {row['depth']: row[field] for row in rows if (row['name'], row['path']) == (name, path)}
    return ' / '.join(f'{found[depth]:.{decimals}f}' for depth in DEPTHS)


def tables(record):
    sections = {section['title']: section['rows'] for section in record['sections']}
    loop, paths = sections['Flake loop'], sections['CPU paths']
    lines = ['| case | plain | fast | ratio | drawing to floor |', '|---|---|---|---|---|']
    for name in dict.fromkeys(row['name'] for row in loop):
        figures = [triple(loop, name, *field) for field in
                   (('reference', 0), ('measured', 0), ('ratio', 1), ('drawingToFloor', 1))]
        lines.append(f'| {name} | {" | ".join(figures)} |')
    lines += ['', '| ratio by path | baseline | AVX2 | AVX-512 |', '|---|---|---|---|']
    for name in dict.fromkeys(row['name'] for row in paths):
        figures = [triple(paths, name, 'ratio', 1, path) for path in ('baseline', 'avx2', 'avx512')]
        lines.append(f'| {name} | {" | ".join(figures)} |')
    return '\n'.join(lines)


if __name__ == '__main__':
    with open(sys.argv[1] if len(sys.argv) > 1 else RECORD) as file:
        print(tables(json.load(file)))
