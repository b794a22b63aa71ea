"""The effect's formulas in plain Python, as docs/model.md states them: real numbers where the effect has floats.

draw.py makes the drawings with them, and check.py holds them against the frames of the tool.
"""
import math

TURN = 2 * math.pi


class Stream:
    """A random stream: ISO C's example generator, read as 15 bits."""

    def __init__(self, seed):
        self.state = seed & 0xFFFFFFFF

    def draw(self):
        self.state = (self.state * 1103515245 + 12345) & 0xFFFFFFFF
        return self.state >> 16 & 0x7FFF

    def unit(self):
        return self.draw() / 32767

    def signed(self):
        return 2 * self.unit() - 1


def smooth_step(t):
    t = min(max(t, 0), 1)
    return t * t * (3 - 2 * t)


class Noise:
    """1024 values, read through a uniform cubic B-spline."""

    def __init__(self, seed):
        keys = (seed - 128, seed, seed + 128, seed + 256)
        streams = [Stream((key & 0xFFFFFFFF) ^ 0x0AB1CEA9) for key in keys]
        blend = Stream(137789)
        self.table = []
        for _ in range(1024):
            values = [stream.signed() for stream in streams]
            t = blend.signed()
            low = 1
            if t < 0:
                t, low = t + 1, 0
            self.table.append(values[low] + smooth_step(t) * (values[low + 1] - values[low]))

    def entry(self, n):
        block = int(n / 23)  # towards zero
        return self.table[((n + 89 * block) ^ block) & 1023]

    def at(self, x):
        n = math.floor(x)
        f = x - n
        weights = ((1 - f) ** 3, 3 * f**3 - 6 * f**2 + 4, -3 * f**3 + 3 * f**2 + 3 * f + 1, f**3)
        return sum(w * self.entry(n + k - 1) for k, w in enumerate(weights)) / 6


DEFAULTS = dict(flakes=10000, size=3, size_variation=25, depth=5000, speed=250, speed_variation=50, wind=0,
                wind_variation=0, spread=15, amount=20, amount_variation=0, frequency=1, frequency_variation=75,
                stochastic=True, flatness=50, color=(1, 1, 1), opacity=50, influence=80, spread_width=150,
                spread_height=50, lighten=True, offset=(50, 50), ground=100, embed=100, seed=0)


class Frame:
    """One frame of `width` by `height` scene units.  `at(name, frame)` gives a parameter at a layer frame."""

    def __init__(self, width, height, number, fps, shutter_degrees, at):
        self.at, self.number, self.fps = at, number, fps
        self.w, self.h, self.m = width, height, max(width, height)
        now = lambda name: at(name, number)
        self.open = shutter_degrees / 360
        # Whole frames are the ticks of time here, so the shutter closes on a whole one.
        self.close = number + int(self.open)
        self.depth = now('depth')
        self.field_w = self.w * (self.m + self.depth) / self.m
        self.field_h = self.h * (self.m + self.depth) / self.m
        travel = lambda name: sum(at(name, i) for i in range(number + 1)) / fps
        blur = lambda name: at(name, self.close) / fps * self.open
        self.fall, self.wind, self.phase = travel('speed'), travel('wind'), travel('frequency')
        self.fall_blur, self.wind_blur, self.phase_blur = blur('speed'), blur('wind'), blur('frequency')
        self.amounts = [now('amount'), at('amount', self.close)]
        self.stochastic = now('stochastic')
        self.wiggles = any(amount > 0 for amount in self.amounts) or now('flatness') > 0
        if self.stochastic:
            self.noise = Noise(now('seed') ^ 0x701)
            self.amounts = [2 * amount for amount in self.amounts]
        turn = 2 if self.stochastic else TURN
        self.phase, self.phase_blur = self.phase * turn, self.phase_blur * turn
        self.ground_y = now('ground') / 100 * self.field_h / 2
        self.embed_distance = self.m + now('embed') / 100 * self.depth

    def offset(self, number):
        x, y = self.at('offset', number)
        return x / 100 * self.w, y / 100 * self.h

    def wave(self, phase):
        return self.noise.at(phase) if self.stochastic else math.cos(phase)

    def flakes(self):
        """Every flake above the ground, as a dictionary; lengths are scene units of the picture."""
        at = lambda name: self.at(name, self.number)
        seed = at('seed')
        flake, light, wiggle = Stream(seed ^ 0x2DB), Stream(seed ^ 0xC6B), Stream(seed ^ 0x701)
        spread = math.tan(math.radians(min(at('spread'), 89.9)) / 2)
        (ox, oy), (ox1, oy1) = self.offset(self.number), self.offset(self.close)
        for _ in range(int(at('flakes'))):
            x = flake.unit() * self.field_w
            y = flake.unit() * self.field_h
            z = flake.unit() * self.depth
            speed = 1 + at('speed_variation') / 100 * flake.signed()
            slope = spread * flake.signed()
            drift = 1 + at('wind_variation') / 100 * flake.signed()
            x += slope * self.fall * speed + self.wind * drift
            y += self.fall * speed
            dy = self.fall_blur * speed
            dx = dy * slope + self.wind_blur * drift

            value, shift, shift_end = 0, (0, 0), (0, 0)
            if self.wiggles:
                phase = wiggle.signed() * (100 if self.stochastic else TURN)
                pace = 1 - at('frequency_variation') / 100 * wiggle.unit()
                reach = 1 - at('amount_variation') / 100 * wiggle.unit()
                normal = (1, 0)
                if self.stochastic:
                    length = math.sqrt(dx * dx + dy * dy + 1e-5)
                    normal = (dy / length, -dx / length)
                value = self.wave(self.phase * pace + phase)
                end = self.wave((self.phase + self.phase_blur) * pace + phase)
                shift = [n * self.amounts[0] * reach * value for n in normal]
                shift_end = [n * self.amounts[1] * reach * end for n in normal]

            start = [(x + shift[0] + ox) % self.field_w - self.field_w / 2,
                     (y + shift[1] + oy) % self.field_h - self.field_h / 2]
            size = 1 + at('size_variation') / 100 * flake.signed()
            jitter = None
            if start[1] > self.ground_y or at('influence') > 0:
                jitter = (light.signed(), light.signed())
            if start[1] > self.ground_y:
                continue
            end = [start[0] + dx + shift_end[0] - shift[0] + ox1 - ox,
                   start[1] + dy + shift_end[1] - shift[1] + oy1 - oy]
            if end[1] > self.ground_y:
                t = (self.ground_y - start[1]) / (end[1] - start[1])
                end = [a + (b - a) * t for a, b in zip(start, end)]

            scale = self.m / (self.m + z)
            radius = size * scale * at('size')
            if self.wiggles:
                radius *= 1 - at('flatness') / 100 * (1 - abs(value))
            seen = lambda p: (p[0] * scale + self.w / 2, p[1] * scale + self.h / 2)
            yield dict(start=seen(start), end=seen(end), z=z, scale=scale, radius=radius, jitter=jitter,
                       behind=self.m + z > self.embed_distance)


def coverage(start, end, radius, x, y):
    """How much of the pixel whose corner is (x, y) a flake of `radius` covers on its way: 0 to 1."""
    peak = min(radius, 1)
    radius = max(radius, 1)
    (x0, y0), (x1, y1) = start, end
    if abs(y1 - y0) < 0.1:
        y1 = y0 + 0.1
    dx, dy = x1 - x0, y1 - y0
    t = ((x - x0) * dx + (y - y0) * dy) / (dx * dx + dy * dy)
    t = min(max(t, 0), 1)
    squared = ((x - x0 - t * dx) ** 2 + (y - y0 - t * dy) ** 2) / radius**2
    return max(0, 1 - squared) * peak


def composite(top, bottom):
    """Top over bottom; pixels are (alpha, red, green, blue), straight."""
    if bottom[0] <= 0:
        return top
    if top[0] <= 0:
        return bottom
    under = (1 - top[0]) * bottom[0]
    alpha = top[0] + under
    return (alpha, *((top[0] * t + under * b) / alpha for t, b in zip(top[1:], bottom[1:])))


def lighten(top, bottom):
    """Bottom raised towards top where top is lighter."""
    if bottom[0] <= 0:
        return top
    if top[0] <= 0:
        return bottom
    alpha = top[0] + bottom[0] - top[0] * bottom[0]
    base = [bottom[0] * b / alpha if alpha < 1 else b for b in bottom[1:]]
    return (alpha, *(b + max(0, t - b) * top[0] / alpha for t, b in zip(top[1:], base)))
