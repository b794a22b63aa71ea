#!/usr/bin/env python3
"""Draws the road of a frame, for docs/architecture.md, beside this file.

usage: draw.py
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, '../model'))
sys.dont_write_bytecode = True
from svg import BLUE, INK, RED, SOFT, Canvas  # noqa: E402

WIDTH, HEIGHT = 760, 690
PAPER, HOST, EFFECT, RECORD = '#fff', '#fbf3e4', '#eef3fa', '#dfe9f5'
canvas = Canvas(WIDTH, HEIGHT)


def box(x, y, width, height, title, *lines, fill=PAPER, stroke=INK):
    canvas.box(x, y, width, height, fill, stroke, rx=5)
    top = y + (height - 16 * len(lines)) / 2 + 5
    canvas.text(x + width / 2, top, title, 'middle')
    for number, line in enumerate(lines, 1):
        canvas.text(x + width / 2, top + 16 * number, line, 'middle', '#555', 11.5)


def down(x, y0, y1, color=INK):
    canvas.arrow((x, y0), (x, y1), color)


def draw_hosts():
    for x, title, line in ((20, 'tool', 'cli/'), (165, 'page', 'web/'), (310, 'plug-ins', 'bindings/'),
                           (455, 'your program', 'examples/embed.cpp')):
        box(x, 16, 130, 44, title, line, fill=HOST)
        down(x + 65, 60, 86)
    box(20, 86, 565, 48, 'minihost', 'Effect, Instance, Frame; call/: one command on its way; the ledger of what is lent',
        fill=HOST)
    box(605, 16, 135, 118, 'any other host', 'that speaks hostapi', fill=HOST)
    box(20, 162, 720, 30, 'hostapi: records, callbacks, suites; nothing passes but by these', fill='#f2f2f2', stroke=SOFT)
    down(150, 134, 162)
    down(672, 134, 162)


def draw_way_in():
    canvas.box(20, 216, 720, 428, EFFECT, BLUE, rx=8)
    canvas.text(34, 236, 'effect/', color=BLUE)
    down(150, 192, 250)
    box(40, 250, 210, 52, 'MainEntry', 'entry/: which command?')
    canvas.arrow((250, 276), (274, 276))
    box(274, 250, 230, 52, 'PreRender, then SmartRender', 'host/: picture and output, on loan')
    canvas.arrow((504, 276), (528, 276))
    box(528, 250, 172, 52, 'RenderSmart', 'host/: which pixel type?')
    down(614, 302, 332)
    box(40, 332, 660, 62, 'the frame record, FrameSetup<T>',
        'render/frame: parameters at both ends of the shutter, extent, background, geometry, color,',
        'sums of Speed, Wind and Frequency, seeds, the reduced copy that lights, wiggle', fill=RECORD)
    down(130, 394, 424)


def draw_loops():
    canvas.text(142, 414, 'read only from here on: fast where CanDrawFast, else plain', color='#555', size=11.5)
    names = ('field', 'shading', 'rasterizer', 'blend')
    rows = ((424, 'plain', ('NextFlake', 'ShadeFlake', 'DrawDroppyMB', 'TransferFunc')),
            (528, 'fast', ('NextBatch', 'ShadeBatch', 'SetStrokeTerms, ListCoverage', 'BlendList')))
    lefts, widths = (40, 190, 340, 566), (130, 130, 206, 134)
    for y, title, functions in rows:
        for left, width, name, function in zip(lefts, widths, names, functions):
            box(left, y, width, 48, f'{title} {name}', function)
        for left, width, following in zip(lefts, widths, lefts[1:]):
            canvas.arrow((left + width, y + 24), (following, y + 24))
    for left, width in zip(lefts, widths):
        canvas.line([(left + width / 2, 472), (left + width / 2, 528)], RED, 1.2, '4 3')
    canvas.box(245, 490, 270, 20, EFFECT, 'none')
    canvas.text(WIDTH / 2, 505, 'the same bytes, held by a test for each stage', 'middle', RED, 11.5)
    for left, width, question in zip(lefts, widths, ('where is it?', 'what color?', 'which pixels, how much?',
                                                     'over what is there')):
        canvas.text(left + width / 2, 596, question, 'middle', '#555', 11.5)
    canvas.text(40, 628, 'render/plain, pixel/  |  render/fast, pixel/fast', color='#555', size=11.5)
    # The other way in, and back to the host.
    canvas.line([(40, 363), (29, 363), (29, 552), (32, 552)])
    canvas.arrow((29, 552), (40, 552))
    canvas.line([(700, 448), (720, 448), (720, 552)])
    canvas.line([(700, 552), (720, 552), (720, 668), (4, 668), (4, 110), (12, 110)])
    canvas.arrow((8, 110), (20, 110))
    canvas.text(WIDTH / 2, 662, 'the output belongs to the host, and is drawn in place', 'middle')


draw_hosts()
draw_way_in()
draw_loops()
canvas.save(os.path.join(HERE, 'road.svg'))
