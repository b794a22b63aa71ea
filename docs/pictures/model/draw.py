#!/usr/bin/env python3
"""Draws the pictures of docs/model.md beside this file, out of the formulas in model.py.

usage: draw.py
"""
import os

import model
from svg import BLUE, INK, RED, SOFT, Canvas, Plot

HERE = os.path.dirname(os.path.abspath(__file__))


def constant(**own):
    values = model.DEFAULTS | own
    return lambda name, frame: values[name]


def frame_of(at, number=24, shutter=180):
    return model.Frame(1920, 1080, number, 24, shutter, at)


def draw_field():
    """The view from the side: the eye, the picture, and the field behind it."""
    canvas = Canvas(760, 400)
    frame = frame_of(constant(flakes=60, depth=5000, amount=0, flatness=0))
    unit = 0.085
    eye_x, middle = 30, 180
    plane, far = eye_x + frame.m * unit, eye_x + (frame.m + frame.depth) * unit
    top, bottom = middle - frame.field_h / 2 * unit, middle + frame.field_h / 2 * unit
    canvas.box(plane, top, far - plane, bottom - top, fill='#eef3fa', stroke=SOFT)
    for sign in (1, -1):
        canvas.line([(eye_x, middle), (far, middle + sign * frame.field_h / 2 * unit)], SOFT, 1, '4 3')
    half = frame.h / 2 * unit
    canvas.line([(plane, middle - half), (plane, middle + half)], INK, 3)
    canvas.dot(eye_x, middle, 4)
    for flake in frame.flakes():
        # Back from the picture into the field.
        y = (flake['start'][1] - frame.h / 2) / flake['scale']
        seen = abs(y * flake['scale']) <= frame.h / 2
        canvas.dot(plane + flake['z'] * unit, middle + y * unit, 2.5, BLUE if seen else '#b9c9dd')
    canvas.text(eye_x, middle + 22, 'eye', 'middle')
    canvas.text(plane - 6, middle - half - 8, 'picture, H high', 'end')
    canvas.text((eye_x + plane) / 2, bottom + 22, 'm = max(W, H)', 'middle')
    canvas.text((plane + far) / 2, bottom + 22, 'Scene Depth', 'middle')
    for a, b in ((eye_x, plane), (plane, far)):
        canvas.arrow(((a + b) / 2, bottom + 30), (a + 2, bottom + 30), SOFT)
        canvas.arrow(((a + b) / 2, bottom + 30), (b - 2, bottom + 30), SOFT)
    canvas.text(far + 8, middle - 8, 'field,')
    canvas.text(far + 8, middle + 10, 'H\u2032 high')
    canvas.save(os.path.join(HERE, 'field.svg'))


def draw_keys():
    """A key on Speed: the distance as a sum, and as speed times time."""
    canvas = Canvas(760, 300)
    speed = lambda i: 400 if i < 24 else 100
    frames = range(49)
    left = Plot(canvas, (50, 30, 290, 220), (0, 48), (0, 500), ('frame', 'Speed, units a second'))
    left.ticks((0, 24, 48), (100, 400))
    left.curve([(0, 400), (24, 400), (24, 100), (48, 100)], INK)
    right = Plot(canvas, (420, 30, 300, 220), (0, 48), (0, 600), ('frame', 'distance fallen, units'))
    right.ticks((0, 24, 48), (0, 200, 400, 600))
    right.curve([(i, speed(i) * (i + 1) / 24) for i in frames], RED, 1.4, '5 3')
    total = lambda i: sum(speed(k) for k in range(i + 1)) / 24
    right.curve([(i, total(i)) for i in frames], BLUE, 2.2)
    canvas.text(*right.at(24, 535), 'the sum: moves on', color=BLUE)
    canvas.text(*right.at(23, 60), 'speed \u00d7 time: falls back', color=RED)
    canvas.save(os.path.join(HERE, 'keys.svg'))


def draw_wiggle():
    """The two wiggles over a few turns: the cosine, and the noise with the table's entries."""
    canvas = Canvas(760, 270)
    plot = Plot(canvas, (50, 30, 680, 190), (0, 6), (-2, 2), ('cycles of Frequency', 'reach, in Amount'))
    plot.ticks(range(7), (-1, 0, 1))
    steps = [i / 100 for i in range(601)]
    noise = model.Noise(0x701)
    plot.curve([(0, 0), (6, 0)], SOFT, 0.8)
    plot.curve([(c, model.math.cos(model.TURN * c)) for c in steps], SOFT, 1.4)
    for n in range(13):
        canvas.dot(*plot.at(n / 2, noise.entry(n)), 3, '#8fb3d9')
    plot.curve([(c, 2 * noise.at(2 * c)) for c in steps], BLUE, 2.2)
    canvas.text(*plot.at(0.08, -1.85), 'gray: even swing; blue: noise, doubled; dots: entries of its table', color=INK)
    canvas.save(os.path.join(HERE, 'wiggle.svg'))


def draw_capsule():
    """One flake on its pixels, and the profile across it."""
    canvas = Canvas(760, 320)
    cell, left, top = 18, 20, 20
    start, end, radius = (5, 4), (13.5, 11), 3.6
    for y in range(16):
        for x in range(20):
            part = model.coverage(start, end, radius, x, y)
            shade = round(255 - 190 * part)
            canvas.box(left + x * cell, top + y * cell, cell, cell, f'rgb({shade},{shade},255)', '#ddd')
    place = lambda p: (left + p[0] * cell, top + p[1] * cell)
    canvas.line([place(start), place(end)], RED, 2)
    for point in (start, end):
        canvas.dot(*place(point), 4, RED)
        canvas.add('circle', cx=place(point)[0], cy=place(point)[1], r=radius * cell, fill='none', stroke=SOFT)
    canvas.text(place(start)[0] - 12, place(start)[1] - 8, 'p\u2080', 'end')
    canvas.text(place(end)[0] + 9, place(end)[1] + 14, 'p\u2081')
    plot = Plot(canvas, (440, 50, 290, 210), (-1.4, 1.4), (0, 1.1), ('distance from the path, in radii', 'coverage'))
    plot.ticks((-1, 0, 1), (0, 0.5, 1))
    across = lambda d, r: model.coverage((0, -50), (0, 50), r, d * max(r, 1), 0)
    distances = [i / 50 for i in range(-70, 71)]
    plot.curve([(d, across(d, 4)) for d in distances], BLUE, 2.2)
    plot.curve([(d, across(d, 0.5)) for d in distances], RED, 1.6, '5 3')
    canvas.text(*plot.at(0.4, 0.95), 'radius 1 or more', color=BLUE)
    canvas.text(*plot.at(-0.42, 0.26), 'radius 0.5', color=RED)
    canvas.save(os.path.join(HERE, 'capsule.svg'))


def draw_operators():
    """What a flake of one gray makes of grounds from black to white, by both operators."""
    canvas = Canvas(760, 320)
    for index, (name, operator) in enumerate((('Composite', model.composite), ('Lighten', model.lighten))):
        plot = Plot(canvas, (50 + 370 * index, 40, 300, 230), (0, 1), (0, 1),
                    ('ground', f'{name}: result for a flake of 0.7'))
        plot.ticks((0, 0.7, 1), (0, 0.7, 1))
        plot.curve([(0, 0), (1, 1)], SOFT, 0.8, '3 3')
        for alpha, color in ((0.25, '#92c5de'), (0.5, '#4393c3'), (1, '#053061')):
            result = lambda b: operator((alpha, .7, .7, .7), (1, b, b, b))[1]
            plot.curve([(i / 100, result(i / 100)) for i in range(101)], color, 2)
            canvas.text(*plot.at(0.02, result(0) - 0.07), f'alpha {alpha:g}', color=color)
    canvas.save(os.path.join(HERE, 'operators.svg'))


def main():
    draw_field()
    draw_keys()
    draw_wiggle()
    draw_capsule()
    draw_operators()


if __name__ == '__main__':
    main()
