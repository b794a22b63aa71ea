#!/usr/bin/env python3
"""Renders the strips of docs/parameters.md beside this file: for each parameter a few pictures that differ in it alone.

usage: strips.py path/to/vintrel [SLUG...]

Needs ffmpeg, which cuts out the part that is shown and puts the pictures side by side.
"""
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, '../../..')

# Parts of the picture: width, height, left, top.
WHOLE = (1920, 1080, 0, 0)
HALF = (960, 540, 480, 300)
THIRD = (640, 360, 640, 420)
LAMP = (640, 360, 800, 380)

# Slug, scene, what else is set, the part that is shown, and the values from low to high, the default among them.
STRIPS = [
    ('flakes', 'street', {'size': 9}, HALF, (1000, 10000, 100000)),
    ('size', 'street', {}, THIRD, (1, 3, 12)),
    ('variation-size', 'near', {'flakes': 500, 'scene-depth': 300}, HALF, (0, 25, 100)),
    ('scene-depth', 'street', {}, HALF, (1000, 5000, 20000)),
    ('speed', 'paths', {}, THIRD, (50, 250, 1000)),
    ('variation-speed', 'paths', {}, THIRD, (0, 50, 100)),
    ('wind', 'paths', {}, THIRD, (-1000, 0, 1000)),
    ('variation-wind', 'paths', {'wind': 500, 'speed': 200}, THIRD, (0, 50, 100)),
    ('spread', 'paths', {}, THIRD, (0, 15, 90)),
    ('amount', 'paths', {}, THIRD, (0, 20, 200)),
    ('variation-amount', 'paths', {'amount': 200}, THIRD, (0, 50, 100)),
    ('frequency', 'paths', {'amount': 60, 'variation-frequency': 0}, THIRD, (0, 1, 4)),
    ('variation-frequency', 'paths', {'amount': 60, 'frequency': 4}, THIRD, (0, 75, 100)),
    ('stochastic-wiggle', 'paths', {'amount': 200, 'speed': 300}, THIRD, ('off', 'on')),
    ('flake-flatness', 'near', {}, HALF, (0, 50, 100)),
    ('color', 'near', {'transfer-mode': 'composite'}, HALF, ('#20140c', '#ffffff', '#ff9040')),
    ('opacity', 'near', {}, HALF, (10, 50, 100)),
    ('influence', 'light', {}, LAMP, (0, 80, 100)),
    ('spread-width', 'light', {'spread-height': 0}, LAMP, (0, 150, 1000)),
    ('spread-height', 'light', {'spread-width': 0}, LAMP, (0, 50, 1000)),
    ('transfer-mode', 'near', {'color': '#705030'}, HALF, ('composite', 'lighten')),
    ('composite-with-original', 'near', {}, HALF, ('off', 'on')),
    ('offset', 'near', {'flakes': 400, 'scene-depth': 600}, HALF, ('45%,50%', '50%,50%', '55%,50%')),
    ('ground-level', 'street', {'size': 12, 'flakes': 60000}, WHOLE, (0, 20, 100)),
    ('embed-depth', 'window', {}, WHOLE, (0, 10, 100)),
    ('random-seed', 'near', {}, HALF, (0, 1, 2)),
]


def draw(tool, slug, scene, settings, part, values, folder):
    pictures = []
    for index, value in enumerate(values):
        path = os.path.join(folder, f'{index}.png')
        choices = [word for name, setting in ({**settings, slug: value}).items() for word in ('--set', f'{name}={setting}')]
        subprocess.run([tool, 'render', '--scene', os.path.join(HERE, f'{scene}.toml'), '-q', '-o', path,
                        '--compression', 'zip:1', *choices], check=True, cwd=ROOT)
        pictures += ['-i', path]
    # What is transparent lies over a blue as of the evening sky.
    cut = ';'.join(
        f'color=0x1c2740:s=1920x1080,format=rgba[s{i}];[s{i}][{i}]overlay=shortest=1:format=rgb,crop={":".join(map(str, part))},'
        f'scale=316:178:flags=area,pad=320:178:0:0:white[p{i}]' for i in range(len(values)))
    row = ''.join(f'[p{i}]' for i in range(len(values))) + f'hstack=inputs={len(values)}'
    subprocess.run(['ffmpeg', '-nostdin', '-v', 'error', '-y', *pictures, '-filter_complex', f'{cut};{row}',
                    '-frames:v', '1', '-q:v', '3', '-pix_fmt', 'yuvj444p', os.path.join(HERE, f'{slug}.jpg')], check=True)


def main():
    tool, *wanted = sys.argv[1:]
    tool = os.path.abspath(tool)
    with tempfile.TemporaryDirectory() as folder:
        for slug, *strip in STRIPS:
            if not wanted or slug in wanted:
                draw(tool, slug, *strip, folder)
                print(f'![{slug}: {", ".join(map(str, strip[-1]))}](pictures/strips/{slug}.jpg)', flush=True)


main()
