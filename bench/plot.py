"""Bars over a logarithmic scale, as SVG."""
import html
import math

ROW, BAR, LEFT, WIDTH, TOP, LABELS = 34, 12, 220, 560, 70, 90
COLOURS = ("#3b75af", "#e1812c")


def _position(value, lowest, highest):
    return WIDTH * math.log(value / lowest) / math.log(highest / lowest)


def _text(x, y, text, more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" {more}>{html.escape(text)}</text>'


def _legend(title, series):
    parts = [_text(16, 26, title, 'font-size="16"')]
    for number, name in enumerate(series):
        x = LEFT + 180 * number
        parts += [f'<rect x="{x}" y="38" width="12" height="12" fill="{COLOURS[number]}"/>', _text(x + 18, 49, name)]
    return parts


def _grid(lowest, highest, height):
    parts, value = [], 10 ** math.ceil(math.log10(lowest))
    while value <= highest:
        x = LEFT + _position(value, lowest, highest)
        parts += [f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{TOP}" y2="{height - 24}" stroke="#ddd"/>',
                  _text(x, height - 8, f"{value:,g}", 'text-anchor="middle" fill="#666"')]
        value *= 10
    return parts


def bars(title, series, rows):
    """`series` names the figures; `rows` are (name, figure...), all above zero."""
    figures = [figure for row in rows for figure in row[1:]]
    lowest, highest = min(figures) / 2, max(figures)
    height = TOP + ROW * len(rows) + 30
    parts = _legend(title, series) + _grid(lowest, highest, height)
    for number, (name, *values) in enumerate(rows):
        y = TOP + ROW * number + 4
        parts.append(_text(LEFT - 8, y + ROW / 2, name, 'text-anchor="end"'))
        for place, value in enumerate(values):
            length, bar = _position(value, lowest, highest), y + place * (BAR + 1)
            label = f"{value:,.3g}" if value < 1000 else f"{value:,.0f}"
            parts += [f'<rect x="{LEFT}" y="{bar}" width="{length:.1f}" height="{BAR}" fill="{COLOURS[place]}"/>',
                      _text(LEFT + length + 4, bar + BAR - 2, label, 'font-size="10"')]
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {LEFT + WIDTH + LABELS} {height}" '
            'font-family="sans-serif" font-size="12">\n<rect width="100%" height="100%" fill="#fff"/>\n'
            + "\n".join(parts) + "\n</svg>\n")
