"""A browser's part of 'qvpctl web', without a browser: requests as it sends them, and others that it never would."""
import http.client
import json
import os
import re
import select
import signal
import socket
import subprocess
import tempfile
import time

from cameras import TOOL, mac
from fleet_files import PATIENCE as ASKED_OFTEN
from support.waiting import PATIENCE, wait_until

LONGEST = 5 * PATIENCE  # that a test waits for events
HEADERS = {
    "Content-Security-Policy": "default-src 'self'; frame-ancestors 'none'; base-uri 'none'; form-action 'self'",
    "X-Content-Type-Options": "nosniff", "Referrer-Policy": "no-referrer", "Cache-Control": "no-store",
    "Cross-Origin-Resource-Policy": "same-origin"}


class Answer:
    def __init__(self, response):
        self.status, self.headers = response.status, response.headers
        self.body = response.read()
        for name, value in HEADERS.items():
            assert response.headers[name] == value, (name, response.headers)

    @property
    def json(self):
        assert self.headers["Content-Type"] == "application/json", self
        self.body.decode("ascii")
        return json.loads(self.body)

    @property
    def code(self):
        return self.json["error"]["code"]

    def __repr__(self):
        return f"{self.status} {self.body[:2000]!r}"


class Stream:
    """An open stream of events."""

    def __init__(self, page, last=None):
        self.connection = page.connect()
        self.connection.request("GET", "/api/events", headers=page.headers(**({"Last-Event-ID": last} if last else {})))
        self.response = self.connection.getresponse()
        self.status = self.response.status
        self.comments, self.last, self.seen = 0, None, []
        self.end = time.monotonic() + LONGEST

    def line(self):
        assert time.monotonic() < self.end, self.seen[-20:]  # heartbeats would keep whoever waits in vain
        line = self.response.readline().decode("ascii")
        assert line, "the stream has ended"
        return line.removesuffix("\n")

    def next(self):
        """The next event, (its name, its data)."""
        fields = {}
        while True:
            line = self.line()
            if line.startswith(":"):
                self.comments += 1
            elif line:
                name, value = line.split(": ", 1)
                assert name not in fields
                fields[name] = value
            elif "event" in fields:
                break
            else:
                fields = {}
        number = int(fields["id"])
        assert self.last is None or number == self.last + 1, "no event is left out"
        self.last = number
        event = (fields["event"], json.loads(fields["data"]))
        self.seen.append(event)
        return event

    def until(self, name, condition=lambda data: True):
        """The data of the first event of that name for which it is true."""
        while True:
            event, data = self.next()
            if event == name and condition(data):
                return data

    def close(self):
        self.connection.close()


class Page:
    """A server of its own, and a browser that it knows."""

    def __init__(self, *options, password=None, look=("--print",), patience=ASKED_OFTEN, **environment):
        given = {**os.environ, "QVPCTL_PASSWORD": password, **environment}
        variables = {name: value for name, value in given.items() if value is not None}
        self.log = tempfile.TemporaryFile()
        self.process = subprocess.Popen([TOOL, "web", *look, *patience, *options], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=self.log, env=variables, text=True, start_new_session=True)
        self.url = self.process.stdout.readline().strip()
        match = re.fullmatch(r"http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{32,})", self.url)
        assert match, (self.url, self.errors())
        self.port, self.token, self.cookie = int(match[1]), match[2], None
        self.answers = []

    def errors(self):
        self.log.seek(0)
        return self.log.read().decode()

    def connect(self):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=PATIENCE)

    def raw(self, data=b""):
        connection = socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE)
        connection.sendall(data)
        return connection

    def enter(self):
        answer = self.ask("GET", f"/?token={self.token}")
        assert answer.status == 200 and b'content="0; url=/"' in answer.body, answer
        match = re.fullmatch(rf"(qvpctl_{self.port}=[0-9a-f]{{32,}}); HttpOnly; SameSite=Strict; Path=/",
                             answer.headers["Set-Cookie"])
        self.cookie = match[1]
        return self

    def headers(self, **others):
        known = {"Host": f"127.0.0.1:{self.port}"}
        if self.cookie:
            known["Cookie"] = self.cookie
        return {name: value for name, value in {**known, **others}.items() if value is not None}

    def ask(self, method, path, body=None, **headers):
        """A request as the page's own code makes it; a header that is None is left out."""
        own = {} if method in ("GET", "HEAD") else {"X-Qvpctl": "1", "Content-Type": "application/json"}
        connection = self.connect()
        connection.putrequest(method, path, skip_host=True, skip_accept_encoding=True)
        content = b"" if body is None else body if isinstance(body, bytes) else json.dumps(body).encode()
        length = {} if method in ("GET", "HEAD") else {"Content-Length": str(len(content))}
        for name, value in self.headers(**{**own, **length, **{key.replace("_", "-"): text for key, text in headers.items()}}).items():
            for one in value if isinstance(value, list) else [value]:
                connection.putheader(name, one)
        connection.endheaders(content or None)
        answer = Answer(connection.getresponse())
        connection.close()
        self.answers.append(answer)
        return answer

    def get(self, path):
        answer = self.ask("GET", path)
        assert answer.status == 200, (path, answer)
        return answer.json

    def post(self, path, body=None, status=202):
        answer = self.ask("POST", path, {} if body is None else body)
        assert answer.status == status, (path, answer)
        return answer.json if answer.body else None

    def log_in(self, password="admin", camera=None):
        self.post("/api/login", {"mac": mac(camera) if camera else None, "user": "admin", "password": password}, status=204)

    def events(self, last=None):
        return Stream(self, last)

    def find(self, *cameras):
        """Searches until all of them are there; their records."""
        stream = self.events()
        self.post("/api/search")
        known = {}
        wanted = [mac(camera) for camera in cameras]
        while not all(known.get(name, {}).get("answered") for name in wanted):
            event, data = stream.next()
            for record in data["cameras"] if event == "snapshot" else [data] if event == "camera" else []:
                known[record["mac"]] = record
            if event == "search" and not data["running"]:
                self.post("/api/search")
        stream.close()
        return known

    def path(self, camera, what=""):
        return f"/api/cameras/{mac(camera)}{what}"

    def values(self, camera):
        return {one["key"]: one["value"] for one in self.get(self.path(camera))["settings"]}

    def change(self, camera, what, body, stages=("verified",)):
        """Begins a change and waits for its end; the stages it went through."""
        stream = self.events()
        begun = self.post(self.path(camera, what), body)["id"]
        seen = []
        end = stream.until("change", lambda data: data["id"] == begun and (
            seen.append((data["stage"], data["what"])) or data["stage"] in ("verified", "failed", "unverified")))
        stream.close()
        assert end["stage"] in stages, end
        return seen, end

    def stop(self, number=signal.SIGTERM):
        if self.process.poll() is None:
            os.killpg(self.process.pid, number)  # as a terminal does it
        status = self.process.wait(timeout=PATIENCE)
        self.process.stdout.close()
        return status

    def process_list(self):
        """The words and the environment of every process that can be seen."""
        text = b""
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                text += open(f"/proc/{process}/cmdline", "rb").read()
            except OSError:
                continue
        return text


def opener(folder):
    """A PATH with an xdg-open that writes down what it is asked to open."""
    program = folder / "bin/xdg-open"
    program.parent.mkdir(exist_ok=True)
    program.write_text(f'#!/bin/sh\nprintf "%s\\n" "$@" >"{folder}/words" && mv "{folder}/words" "{folder}/opened"\n')
    program.chmod(0o755)
    return f"{program.parent}:/usr/bin:/bin"


def opened_words(folder):
    wait_until((folder / "opened").exists, "a browser")
    return (folder / "opened").read_text().splitlines()


def is_closed(connection):
    """The server has ended that connection."""
    readable, _, _ = select.select([connection], [], [], 0)
    try:
        return bool(readable) and connection.recv(65536) == b""
    except ConnectionResetError:
        return True


def wait_until_closed(connection):
    wait_until(lambda: is_closed(connection), "the end of a connection")
