"""Just enough of SVG for the drawings: a canvas that takes shapes in pixels, and plots with axes of their own."""
from html import escape

INK, SOFT, BLUE, RED = '#222', '#999', '#2166ac', '#b2182b'


class Canvas:
    def __init__(self, width, height):
        self.parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
                      f'height="{height}" font-family="sans-serif" font-size="13">',
                      f'<rect width="{width}" height="{height}" fill="#fff"/>']

    def add(self, kind, **attributes):
        text = ''.join(f' {name.replace("_", "-")}="{number(value)}"' for name, value in attributes.items())
        self.parts.append(f'<{kind}{text}/>')

    def line(self, points, color=INK, width=1.2, dash='', **more):
        path = ' '.join(f'{number(x)},{number(y)}' for x, y in points)
        more |= {'stroke_dasharray': dash} if dash else {}
        self.add('polyline', points=path, fill='none', stroke=color, stroke_width=width, **more)

    def arrow(self, start, end, color=INK):
        (x0, y0), (x1, y1) = start, end
        length = ((x1 - x0) ** 2 + (y1 - y0) ** 2) ** 0.5
        ux, uy = (x1 - x0) / length, (y1 - y0) / length
        self.line([start, end], color)
        wings = [(x1 - 8 * ux + s * 3.5 * uy, y1 - 8 * uy - s * 3.5 * ux) for s in (1, -1)]
        self.add('polygon', points=' '.join(f'{number(x)},{number(y)}' for x, y in [end, *wings]), fill=color)

    def dot(self, x, y, radius=3.0, color=INK, **more):
        self.add('circle', cx=x, cy=y, r=radius, fill=color, **more)

    def box(self, x, y, width, height, fill='none', stroke=INK, **more):
        self.add('rect', x=x, y=y, width=width, height=height, fill=fill, stroke=stroke, **more)

    def text(self, x, y, words, anchor='start', color=INK, size=13):
        self.parts.append(f'<text x="{number(x)}" y="{number(y)}" text-anchor="{anchor}" fill="{color}" '
                          f'font-size="{size}">{escape(words)}</text>')

    def save(self, path):
        with open(path, 'w') as file:
            file.write('\n'.join([*self.parts, '</svg>', '']))


class Plot:
    """Axes in a box of the canvas; `x` and `y` are the ranges shown."""

    def __init__(self, canvas, box, x, y, labels=('', '')):
        self.canvas, self.box, self.x, self.y = canvas, box, x, y
        left, top, width, height = box
        canvas.box(left, top, width, height, stroke=SOFT)
        canvas.text(left + width / 2, top + height + 32, labels[0], 'middle')
        canvas.text(left, top - 8, labels[1])

    def at(self, x, y):
        left, top, width, height = self.box
        return (left + (x - self.x[0]) / (self.x[1] - self.x[0]) * width,
                top + height - (y - self.y[0]) / (self.y[1] - self.y[0]) * height)

    def ticks(self, xs=(), ys=()):
        for x in xs:
            px, py = self.at(x, self.y[0])
            self.canvas.text(px, py + 16, f'{x:g}', 'middle', SOFT, 11)
        for y in ys:
            px, py = self.at(self.x[0], y)
            self.canvas.text(px - 6, py + 4, f'{y:g}', 'end', SOFT, 11)

    def curve(self, points, color, width=1.8, dash=''):
        self.canvas.line([self.at(x, y) for x, y in points], color, width, dash)


def number(value):
    return value if isinstance(value, str) else f'{value:.2f}'.rstrip('0').rstrip('.')
