#!/usr/bin/env python3
"""Holds the formulas of model.py against the frames of the tool, pixel by pixel.

usage: check.py path/to/vintrel

Each case is a small frame with one of the formulas in the foreground.  The effect computes in single precision
where the model has real numbers, and the integer depths truncate; the tolerances below are for that.
"""
import os
import struct
import subprocess
import sys
import tempfile
import zlib

import model

W, H = 120, 80


def write_picture(path):
    """An opaque picture in which every channel differs from place to place, 8 bits; returns its pixels, 0 to 1."""
    rows = [[(255 - x, (5 * x + 3 * y) % 200, 2 * y) for x in range(W)] for y in range(H)]
    chunk = lambda kind, data: struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))
    raw = b''.join(b'\0' + bytes(channel for pixel in row for channel in pixel) for row in rows)
    with open(path, 'wb') as file:
        file.write(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', W, H, 8, 2, 0, 0, 0)) +
                   chunk(b'IDAT', zlib.compress(raw)) + chunk(b'IEND', b''))
    return [[(1, *(channel / 255 for channel in pixel)) for pixel in row] for row in rows]


def read_tiff(path):
    """Rows of (alpha, red, green, blue), 0 to 1, from an uncompressed TIFF of the tool."""
    data = open(path, 'rb').read()
    assert data[:4] == b'II*\0', 'a little-endian TIFF'
    ifd = struct.unpack_from('<I', data, 4)[0]
    tags = {}
    for i in range(struct.unpack_from('<H', data, ifd)[0]):
        tag, kind, count, value = struct.unpack_from('<HHII', data, ifd + 2 + 12 * i)
        form = {3: 'H', 4: 'I'}.get(kind)
        if form:
            place = ifd + 10 + 12 * i if count * struct.calcsize(form) <= 4 else value
            tags[tag] = struct.unpack_from(f'<{count}{form}', data, place)
    channels, bits = tags[277][0], tags[258][0]
    pixels = b''.join(data[start:start + size] for start, size in zip(tags[273], tags[279]))
    form, white = {8: ('B', 255), 16: ('H', 65535), 32: ('f', 1)}[bits]
    values = struct.unpack(f'<{W * H * channels}{form}', pixels)
    assert channels == 3 or tags[338][0] == 2, 'straight alpha'
    pixel = lambda i: (values[i + 3] / white if channels == 4 else 1, *(v / white for v in values[i:i + 3]))
    return [[pixel((y * W + x) * channels) for x in range(W)] for y in range(H)]


def reduced(picture):
    """The copy that lights the flakes, a tenth as wide and high; both sizes divide here."""
    mean = lambda x, y, c: sum(picture[10 * y + j][10 * x + i][c] for j in range(10) for i in range(10)) / 100
    return [[tuple(mean(x, y, c) for c in range(4)) for x in range(W // 10)] for y in range(H // 10)]


def sample(copy, x, y):
    """Between the four pixels around a place; whole numbers fall on their middles."""
    x = min(max(x, 0), len(copy[0]) - 1)
    y = min(max(y, 0), len(copy) - 1)
    i, j = min(int(x), len(copy[0]) - 2), min(int(y), len(copy) - 2)
    u, v = x - i, y - j
    line = lambda row, c: copy[row][i][c] * (1 - u) + copy[row][i + 1][c] * u
    return [line(j, c) * (1 - v) + line(j + 1, c) * v for c in range(4)]


def render(frame, picture):
    """The whole frame by the model."""
    at = lambda name: frame.at(name, frame.number)
    copy = reduced(picture) if picture and at('influence') else None
    result = [row[:] for row in picture] if picture else [[(0, 0, 0, 0)] * W for _ in range(H)]
    for flake in frame.flakes():
        color = at('color')
        (x0, y0), (x1, y1) = flake['start'], flake['end']
        if copy:
            jx, jy = flake['jitter']
            u = ((x0 + x1) / 2 + flake['scale'] * at('spread_width') * jx) / 10
            v = ((y0 + y1) / 2 + flake['scale'] * at('spread_height') * jy) / 10
            light = sample(copy, u, v)
            weight = light[0] * at('influence') / 100
            color = [own + weight * (lit - own) for own, lit in zip(color, light[1:])]
        operator = model.lighten if at('lighten') else model.composite
        reach = max(flake['radius'], 1) + 1
        for y in range(max(0, int(min(y0, y1) - reach)), min(H, int(max(y0, y1) + reach) + 2)):
            for x in range(max(0, int(min(x0, x1) - reach)), min(W, int(max(x0, x1) + reach) + 2)):
                part = model.coverage(flake['start'], flake['end'], flake['radius'], x, y)
                if part > 0:
                    top = (part * at('opacity') / 100, *color)
                    if flake['behind']:
                        result[y][x] = model.composite(result[y][x], top)
                    else:
                        result[y][x] = operator(top, result[y][x])
    return result


NAMES = dict(size_variation='variation-size', depth='scene-depth', speed_variation='variation-speed',
             wind_variation='variation-wind', amount_variation='variation-amount',
             frequency_variation='variation-frequency', stochastic='stochastic-wiggle', flatness='flake-flatness',
             spread_width='spread-width', spread_height='spread-height', ground='ground-level', embed='embed-depth',
             seed='random-seed')


def arguments(parameters):
    for name, value in parameters.items():
        slug = NAMES.get(name, name)
        if name == 'lighten':
            slug, value = 'transfer-mode', 'lighten' if value else 'composite'
        elif name == 'stochastic':
            value = 'on' if value else 'off'
        elif name == 'color':
            value = '#' + ''.join(f'{round(255 * v):02x}' for v in value)
        if isinstance(value, dict):
            text = lambda v: ';'.join(map(str, v)) if isinstance(v, tuple) else str(v)
            yield from ('--key', f'{slug}@' + ','.join(f'{f}={text(v)}' for f, v in value.items()))
        else:
            yield from ('--set', f'{slug}={value}')


def course(parameters):
    """A parameter at a layer frame: constant, or on straight lines from key to key."""
    mix = lambda a, b, t: tuple(map(mix, a, b, (t, t))) if isinstance(a, tuple) else a + (b - a) * t

    def at(name, frame):
        value = parameters.get(name, model.DEFAULTS[name])
        if not isinstance(value, dict):
            return value
        keys = sorted(value.items())
        for (f0, v0), (f1, v1) in zip(keys, keys[1:]):
            if frame < f1:
                return mix(v0, v1, max(0, frame - f0) / (f1 - f0))
        return keys[-1][1]

    return at


BASE = dict(flakes=400, size=6, depth=400, influence=0, opacity=80, lighten=False)
CASES = [
    ('field and perspective', dict(amount=0, flatness=0, spread=0, wind=0), 24, 180, False),
    ('spread, wind and variations',
     dict(amount=0, flatness=0, spread=60, wind=300, wind_variation=70, size_variation=80), 37, 360, False),
    ('keys of motion', dict(amount=0, flatness=0, speed={0: 100, 20: 700}, wind={5: -200, 15: 200}), 30, 720, False),
    ('offset that pans', dict(amount=0, flatness=0, offset={0: (50, 50), 20: (90, 20)}), 7, 360, False),
    ('even swing', dict(stochastic=False, amount={0: 10, 20: 60}, amount_variation=40, flatness=80), 11, 360, False),
    ('noise', dict(amount=30, amount_variation=50, frequency=3, flatness=70, seed=9), 19, 360, False),
    ('ground', dict(ground=10, spread=0), 4, 360, False),
    ('light', dict(influence=70, spread_width=40, spread_height=25, color=(.2, .4, 1)), 3, 180, True),
    ('lighten, and behind the layer', dict(influence=40, lighten=True, embed=50, color=(.6, .8, .4)), 3, 180, True),
    ('lighten on transparent ground', dict(lighten=True, color=(.6, .8, .4)), 3, 180, False),
]
# The depths differ in the color and the operators alone.
IN_ALL_DEPTHS = ('light', 'lighten, and behind the layer', 'lighten on transparent ground')

# The mean and the largest difference that are allowed, in fractions of white.
TOLERANCES = {'float': (2e-6, 8e-5), '16': (4e-5, 6e-4), '8': (3e-3, 2e-2)}


def difference(ours, theirs):
    """Mean and largest, of alpha and of color times alpha: what is transparent has no color to compare."""
    flat = [abs(a - b) for row, other in zip(ours, theirs) for p, q in zip(row, other)
            for a, b in zip((p[0], *(p[0] * c for c in p[1:])), (q[0], *(q[0] * c for c in q[1:])))]
    return sum(flat) / len(flat), max(flat)


def main():
    tool = sys.argv[1]
    failed = False
    with tempfile.TemporaryDirectory() as folder:
        plate, out = os.path.join(folder, 'plate.png'), os.path.join(folder, 'snow.tif')
        picture = write_picture(plate)
        for name, own, number, shutter, on_picture in CASES:
            parameters = BASE | own
            source = [plate] if on_picture else ['--blank', f'{W}x{H}']
            frame = model.Frame(W, H, number, 24, shutter, course(parameters))
            ours = render(frame, picture if on_picture else None)
            for depth in ['float'] if name not in IN_ALL_DEPTHS else TOLERANCES:
                mean, most = TOLERANCES[depth]
                subprocess.run([tool, 'render', *source, '-o', out, '-q', '--frames', str(number), '--depth', depth,
                                '--compression', 'none', '--shutter', str(shutter), *arguments(parameters)], check=True)
                found_mean, found_most = difference(ours, read_tiff(out))
                bad = found_mean > mean or found_most > most
                failed |= bad
                print(f'{name:32} {depth:>5}: mean {found_mean:.1e}, largest {found_most:.1e}', 'WRONG' if bad else '')
    sys.exit(failed)


main()
