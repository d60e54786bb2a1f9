"""How soon the page of `qvpctl web` shows itself and answers. Started by bench/page.

For each number of cameras, this program runs itself once more on a virtual LAN of its own.
"""
import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile
from dataclasses import asdict, dataclass, fields

import report
from lab import BUILD, TREE

sys.path.insert(0, str(TREE / "tests/web"))

CAMERAS, TIMES = [3, 50, 200], 7
# Does something, and calls back with the browser's times of that and of when what was asked for has been painted.
PAINTED = """
const [begin, isThere, done] = [new Function(arguments[0]), new Function('return ' + arguments[1]), arguments[2]];
const start = performance.now();
begin();
const frame = () => {
    if (!isThere()) return requestAnimationFrame(frame);
    requestAnimationFrame(() => setTimeout(() => done([start, performance.now()])));
};
frame();
"""
ROWS = "document.querySelectorAll('#camera-table tbody tr').length"
OPEN = "document.querySelector('#camera-table tbody a.name').click()"
IS_OPEN = "!document.querySelector('#detail').hidden && document.querySelector('#detail h2')"
SEARCH = "const box = document.querySelector('#search'); box.value = '{}'; box.dispatchEvent(new Event('input'))"


@dataclass
class Times:
    """Milliseconds, each a median."""
    cameras: int
    first_paint: float
    all_cameras: float
    click: float
    search: float


class Measured:
    def __init__(self, page, count):
        self.page, self.count = page, count

    def painted(self, begin, is_there):
        return self.page.driver.execute_async_script(PAINTED, begin, is_there)

    def took(self, begin, is_there):
        start, end = self.painted(begin, is_there)
        return end - start

    def once(self):
        self.page.driver.refresh()
        _, everybody = self.painted("", f"{ROWS} === {self.count}")  # since the navigation began
        paint = self.page.script("return performance.getEntriesByName('first-contentful-paint')[0].startTime")
        click = self.took(OPEN, IS_OPEN)
        self.painted("location.hash = ''", "document.querySelector('#detail').hidden")
        search = self.took(SEARCH.format("02:51:56:50:00:02"), f"{ROWS} === 1")
        return paint, everybody, click, search


def measure_here(count):
    """On a LAN that has so many cameras."""
    from cameras import end  # pylint: disable=import-outside-toplevel
    from chromium import Page, start_tool  # pylint: disable=import-outside-toplevel

    tool, address = start_tool()
    with tempfile.TemporaryDirectory() as folder:
        page = Page(folder, address)
        try:
            page.driver.set_script_timeout(60)
            measured = Measured(page, count)
            measured.once()
            times = zip(*(measured.once() for _ in range(TIMES)))
            print(json.dumps(asdict(Times(count, *map(statistics.median, times)))))
        finally:
            page.close()
            end(tool)


def measure(count):
    """On a LAN of its own."""
    command = [TREE / "virtual-camera/virtual-camera", "run", "-n", str(count), "--daemon", BUILD / "qvp", "--",
               sys.executable, "-B", os.path.abspath(__file__), "--here", "--cameras", str(count)]
    environment = os.environ | {"QVPCTL": str(BUILD / "qvpctl")}
    done = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=False, env=environment)
    if done.returncode != 0:
        sys.exit(done.returncode)
    return Times(**json.loads(done.stdout))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--cameras", type=int, nargs="+", default=CAMERAS)
    parser.add_argument("--here", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.here:
        return measure_here(options.cameras[0])
    rows = [[f"{value:.0f}" for value in asdict(measure(count)).values()] for count in options.cameras]
    print(report.table([field.name.replace("_", " ") for field in fields(Times)], rows))
    print(report.machine())


if __name__ == "__main__":
    main()
