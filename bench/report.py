# SPDX-License-Identifier: MIT
"""The results as tables, and the growth curves as a picture."""

import html
import math

from growth import GOAL

WIDTH, HEIGHT, MARGIN = 720, 460, 64
# Distinct without colour vision, on white and on black.
COLOURS = ("#0072b2", "#d55e00", "#009e73", "#cc79a7", "#b58900", "#56b4e9", "#666666")


def laid_out(rows):
    """Rows of texts as a table of Markdown."""
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    rows = [rows[0], tuple("-" * width for width in widths), *rows[1:]]
    return "\n".join("| %s |" % " | ".join(cell.ljust(width) for cell, width in zip(row, widths))
                     for row in rows)


def shown(value, unit):
    if value is None:
        return "-"
    if unit:
        return "%.1f %s" % (value, unit)
    return "%.3f" % value if 0.98 < value < 1.02 else "%.2f" % value


def figures_table(figures):
    rows = [("work", "peer", "figure", "on one processor", "at most", "stretch", "reached")]
    for figure in figures:
        stretch = "-" if figure.goal.stretch is None else "%g" % figure.goal.stretch
        rows.append((figure.work, figure.peer, shown(figure.value, figure.unit),
                     shown(figure.one, figure.unit), str(figure.goal), stretch, figure.verdict()))
    return laid_out(rows)


def curves_table(curves, goal, of):
    rows = [("work", "sizes", "slope of time", "at most", "reached", "slope of memory",
             "memory for each " + of)]
    for curve in curves:
        slope = curve.slope(curve.seconds)
        rows.append((curve.work, "%d to %d" % (curve.sizes[-1] // 10, curve.sizes[-1]),
                     "%.2f" % slope, "%.2f" % goal, "yes" if slope <= goal else "NO",
                     "%.2f" % curve.slope(curve.memory), "%.0f bytes" % curve.memory_each()))
    return laid_out(rows)


def markdown(results):
    """Every table, and how it came about."""
    here = results.settings
    parts = ["%s: %s, %d of its processors, %s; %d rounds. %s." % (
        here["date"], here["processor"], here["processors"], here["system"], here["rounds"],
        here["peers"])]
    if results.rows:
        parts.append(figures_table(results.figures()))
    for what, title in (("file", "Files:"), ("record", "Records of a document:")):
        if what in results.curves:
            parts += [title, curves_table(results.curves[what], GOAL, what)]
    return "\n\n".join(parts) + "\n"


def put_between(text, begin, end, new):
    """Replaces what stands between two lines of a text."""
    before, rest = text.split(begin + "\n", 1)
    after = rest.split(end + "\n", 1)[1]
    return before + begin + "\n" + new + end + "\n" + after


class Axis:
    """A logarithmic scale of whole decades, from `low` to `high` on the paper."""

    def __init__(self, values, low, high):
        self.first = math.floor(math.log10(min(values)))
        self.last = max(math.ceil(math.log10(max(values))), self.first + 1)
        self.low, self.high = low, high

    def place(self, value):
        share = (math.log10(value) - self.first) / (self.last - self.first)
        return self.low + share * (self.high - self.low)

    def decades(self):
        return [10.0 ** power for power in range(self.first, self.last + 1)]


def growth_svg(curves):
    """Seconds over files, both logarithmic: proportional growth is a line of slope one."""
    across = Axis([size for curve in curves for size in curve.sizes], MARGIN, WIDTH - 130)
    up = Axis([value for curve in curves for value in curve.seconds], HEIGHT - MARGIN, 24)
    parts = ['<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" '
             'font-family="sans-serif" font-size="12">' % (WIDTH, HEIGHT),
             '<title>Time by number of files</title>',
             '<rect width="100%" height="100%" fill="white"/>']
    parts += [grid_line(across.place(value), 24, across.place(value), HEIGHT - MARGIN,
                        across.place(value), HEIGHT - MARGIN + 18, "middle",
                        format(int(value), ",")) for value in across.decades()]
    parts += [grid_line(MARGIN, up.place(value), WIDTH - 130, up.place(value), MARGIN - 6,
                        up.place(value) + 4, "end", "%g s" % value) for value in up.decades()]
    parts.append('<text x="%d" y="%d" text-anchor="middle">files</text>'
                 % ((MARGIN + WIDTH - 130) // 2, HEIGHT - 18))
    for curve, colour in zip(curves, COLOURS):
        parts += curve_svg(curve, colour, across, up)
    return "\n".join([*parts, "</svg>", ""])


def grid_line(x1, y1, x2, y2, text_x, text_y, anchor, text):
    return ('<line x1="%.1f" y1="%.1f" x2="%.1f" y2="%.1f" stroke="#ccc"/>'
            '<text x="%.1f" y="%.1f" text-anchor="%s" fill="#444">%s</text>'
            % (x1, y1, x2, y2, text_x, text_y, anchor, html.escape(text)))


def curve_svg(curve, colour, across, up):
    points = [(across.place(size), up.place(value))
              for size, value in zip(curve.sizes, curve.seconds)]
    yield ('<polyline fill="none" stroke="%s" stroke-width="2" points="%s"/>'
           % (colour, " ".join("%.1f,%.1f" % point for point in points)))
    for x, y in points:
        yield '<circle cx="%.1f" cy="%.1f" r="3" fill="%s"/>' % (x, y, colour)
    yield ('<text x="%.1f" y="%.1f" fill="%s">%s (slope %.2f)</text>'
           % (points[-1][0] + 8, points[-1][1] + 4, colour, html.escape(curve.work),
              curve.slope(curve.seconds)))
