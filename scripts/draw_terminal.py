#!/usr/bin/env python3
"""Draws a terminal in which commands really run, as an SVG picture.

    scripts/draw_terminal.py [--width COLUMNS] COMMAND... >picture.svg

Each COMMAND is a line of a shell, run on a terminal of its own, one after the other in one picture.
"""
import argparse
import os
import pty
import sys
from itertools import groupby
from xml.sax.saxutils import escape

import pyte

CELL_WIDTH, CELL_HEIGHT, MARGIN, FONT_SIZE = 8.4, 19, 16, 14
BACKGROUND, TEXT = "#1e2127", "#d7dae0"
COLOURS = {"default": TEXT, "red": "#e06c75", "green": "#98c379", "brown": "#d19a66", "blue": "#61afef"}
FIXED_BLANK = "\u00a0"  # a browser makes one of several plain ones, and then stretches the line
PROMPT = "\x1b[32m$\x1b[0m "


def output_of(command):
    """What a command writes to its terminal."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execvpe("bash", ["bash", "-c", command], {**os.environ, "TERM": "xterm"})
    output = b""
    try:
        while part := os.read(terminal, 4096):
            output += part
    except OSError:  # the other end is closed
        pass
    os.close(terminal)
    if status := os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]):
        sys.exit(f"{command}: exit status {status}\n{output.decode()}")
    return output.decode()


def screen_of(commands, width):
    """The cells of every line that was written."""
    screen = pyte.Screen(width, 200)
    stream = pyte.Stream(screen)
    for command in commands:
        stream.feed(PROMPT + command.replace("\n", "\r\n") + "\r\n" + without_links(output_of(command)))
    return [[screen.buffer[y][x] for x in range(width)] for y in range(screen.cursor.y)]


def without_links(text):
    """The emulator does not know them."""
    parts = text.split("\x1b]8;;")
    return parts[0] + "".join(part.split("\x1b\\", 1)[1] for part in parts[1:])


def draw_line(cells, y):
    x = 0
    for style, group in groupby(cells, key=lambda cell: (cell.fg, cell.bold)):
        text = "".join(cell.data for cell in group)
        if words := text.strip():
            start = x + len(text) - len(text.lstrip())
            weight = ' font-weight="bold"' if style[1] else ""
            yield (f'<text x="{MARGIN + start * CELL_WIDTH:.1f}" y="{y}" fill="{COLOURS.get(style[0], TEXT)}"{weight} '
                   f'textLength="{len(words) * CELL_WIDTH:.1f}">{escape(words).replace(" ", FIXED_BLANK)}</text>')
        x += len(text)


def draw(lines, width):
    picture_width = round(2 * MARGIN + width * CELL_WIDTH)
    picture_height = 2 * MARGIN + len(lines) * CELL_HEIGHT
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" width="{picture_width}" height="{picture_height}" '
           f'font-family="ui-monospace, Menlo, Consolas, \'DejaVu Sans Mono\', monospace" font-size="{FONT_SIZE}">')
    yield f'<rect width="100%" height="100%" rx="8" fill="{BACKGROUND}"/>'
    for number, cells in enumerate(lines):
        yield from draw_line(cells, MARGIN + number * CELL_HEIGHT + FONT_SIZE)
    yield "</svg>"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--width", type=int, default=100, metavar="COLUMNS", help="of the terminal (default 100)")
    parser.add_argument("command", nargs="+", metavar="COMMAND")
    options = parser.parse_args()
    print("\n".join(draw(screen_of(options.command, options.width), options.width)))


if __name__ == "__main__":
    main()
