"""The daemon and a second reading of its documents, asked the same random requests: the replies, the store behind each
request, and what the board was asked to do, are the same.

Every run draws another seed, which a difference prints with the command that shows it again. A run is a row of
episodes: in each, a daemon is started on a camera in a random state, asked a few hundred requests, and stopped.

  QVP_MODEL_SEED      the seed to take instead
  QVP_MODEL_EPISODE   only this episode
  QVP_MODEL_ROUNDS    how many requests are asked in all

What is compared: every byte that comes back, with the clock standing still; that nothing comes back where nothing has
to; the presence reports at the start and in between; the settings in the store's file, and its comments; each command's
text as it is given to the shell, the clock's settings, the wait for the NTP client, and their order; the exit status.

What is not: traces on standard error; the addresses of the interface, which stay as they are, as no script of the board
runs; what the commands do; how long anything takes, and what a signal or a second request does meanwhile; values in the
store that no type of its keys has; rules of daylight saving that no calendar knows; an administrator's name with
characters that a shell takes apart; the upgrade worker, which no request starts. The time zone shows in the local times
of the replies only."""
import os
import random
import shlex

import random_cameras
from camera import Board, Camera
from clock import Zones
from random_requests import Requests
from settings import Settings, parsed

SEED = os.environ.get("QVP_MODEL_SEED") or os.urandom(6).hex()
EPISODE = os.environ.get("QVP_MODEL_EPISODE")
ROUNDS = int(os.environ.get("QVP_MODEL_ROUNDS") or os.environ.get("QVP_MODEL_USUAL_ROUNDS") or 2000)
ROUNDS_OF_AN_EPISODE = 250
ZONES = Zones()


def differing(expected, found):
    """The stretches of two replies that differ, by their offsets."""
    if expected is None or found is None or len(expected) != len(found):
        return []
    at = [index for index in range(len(expected)) if expected[index] != found[index]]
    starts = [index for index in at if index - 1 not in at]
    ends = [index + 1 for index in at if index + 1 not in at]
    return [f"  at {start}: {expected[start:end].hex(' ')} expected, {found[start:end].hex(' ')} found"
            for start, end in zip(starts, ends)]


def shown(data):
    return "none" if data is None else f"{len(data)} bytes: {data.hex()}"


def store_differences(expected, found):
    """The keys with values that differ."""
    names = {(section, key) for store in (expected, found) for section in store for key in store[section]}
    values = ((name, *(store.get(name[0], {}).get(name[1]) for store in (expected, found))) for name in sorted(names))
    return [f"  {'/'.join(name)}: {one!r} expected, {other!r} found" for name, one, other in values if one != other]


def comments(content):
    return [line for line in content.split(b"\n") if line[:1] in (b"#", b";")]


class Episode:
    """A daemon's run beside its model."""

    def __init__(self, daemon, number):
        self.daemon = daemon
        self.number = number
        self.random = random.Random(f"{SEED}:{number}")
        own = daemon.camera
        address = bytes(int(part) for part in own.address.split("."))
        board = Board(mac=own.mac, address=address, mask=b"\xff\xfe\0\0", gateway=bytes((198, 18, 0, 1)))
        random_cameras.change(self.random, board)
        settings = Settings(random_cameras.settings(self.random, ZONES))
        self.camera = Camera(board, settings, ZONES, time=self.random.randrange(2**32))
        self.requests = Requests(self.random, self.camera)
        self.round = 0

    def run(self, rounds):
        daemon, camera = self.daemon, self.camera
        daemon.put_clock(camera.time)
        self.put_store()
        daemon.put_board(camera.board)
        daemon.start()
        self.expect("the first presence report", camera.presence_report(), daemon.report())
        for self.round in range(rounds):
            if self.random.random() < 0.01:
                self.change_by_others()
            if self.random.random() < 0.005:
                self.expect("a presence report", camera.presence_report(), daemon.ask_for_report())
            self.ask(self.requests.next())
        daemon.stop()

    def change_by_others(self):
        """Which is in the answer to the next request."""
        random_cameras.change(self.random, self.camera.board)
        self.daemon.put_board(self.camera.board)
        if self.random.random() < 0.5:
            self.camera.settings = Settings(random_cameras.settings(self.random, ZONES))
            self.put_store()

    def put_store(self):
        self.daemon.put_store(self.camera.settings.sections)
        self.content = self.daemon.store_content()

    def ask(self, datagram):
        to = "255.255.255.255" if self.random.random() < 0.1 else self.daemon.camera.address
        self.camera.settings.written = False
        try:
            replies, events = self.daemon.ask(datagram, to), self.daemon.events()
        except TimeoutError:
            self.differ(datagram, ["the daemon answers no more", self.daemon.run.trace()[-2000:]])
        clock = next((int(event.split()[1]) for event in events if event.startswith("clock ")), None)
        reply, expected_events = self.camera.answer(datagram, clock)
        found = replies[0] if replies else None
        if (found, replies[1:], events) != (reply, [], expected_events):
            self.differ(datagram, differing(reply, found) + [
                f"expected reply: {shown(reply)}", *(f"found reply: {shown(data)}" for data in replies or [None]),
                f"expected of the board: {expected_events}", f"found: {events}"])
        self.compare_store(datagram)

    def compare_store(self, datagram):
        content = self.daemon.store_content()
        if content == self.content and not self.camera.settings.written:
            return
        expected, found = self.camera.settings.sections, parsed(content)
        differences = [] if expected == found else store_differences(expected, found)
        if comments(content) != comments(self.content):
            differences.append("  its comments have changed")
        if differences:
            self.differ(datagram, ["the store differs:", *differences])
        self.content = content

    def expect(self, what, expected, found):
        if expected != found:
            self.differ(b"", [f"{what} differs:", *differing(expected, found), shown(expected), shown(found)])

    def differ(self, datagram, lines):
        again = f"QVP_MODEL_SEED={shlex.quote(SEED)} QVP_MODEL_EPISODE={self.number} ./test -R model.differential"
        raise AssertionError("\n".join([
            f"the daemon and the model differ: seed {SEED}, episode {self.number}, round {self.round}",
            f"to see it again: {again}", f"request: {shown(datagram)}", *lines]))  # fmt: skip


def test_the_daemon_answers_as_its_documents_say(daemon):
    print(f"seed {SEED}, {ROUNDS} rounds")
    if EPISODE is not None:
        Episode(daemon, int(EPISODE)).run(ROUNDS_OF_AN_EPISODE)
        return
    for number, first in enumerate(range(0, ROUNDS, ROUNDS_OF_AN_EPISODE)):
        Episode(daemon, number).run(min(ROUNDS_OF_AN_EPISODE, ROUNDS - first))
