"""Who gets into the page of 'qvpctl web', and who does not.

pytest itself runs inside the virtual LAN:
  virtual-camera/virtual-camera run -n 0 -- /usr/bin/python3 -m pytest tests/qvpctl/web_security_test.py
"""
import http.client
import os
import select
import signal
import socket
import subprocess
import tempfile
import time
from pathlib import Path

import pytest
from cameras import TOOL, mac
from support.waiting import wait_until
from web_page import Page, is_closed, opened_words, opener, wait_until_closed


@pytest.fixture(scope="module")
def server():
    page = Page()
    yield page
    assert page.stop() == 0


@pytest.fixture(scope="module")
def page(server):
    return server.enter()


def refused(answer, code="forbidden", status=403):
    assert (answer.status, answer.code) == (status, code), answer


def test_nobody_gets_in_without_the_token(server):
    own = server.cookie
    server.cookie = None
    for token in ("", "0", "0" * len(server.token), server.token[:-1], server.token + "0", server.token.upper() + "g"):
        answer = server.ask("GET", f"/?token={token}")
        assert answer.status == 403 and "Set-Cookie" not in answer.headers, token
        assert b"qvpctl web" in answer.body, "the page says what to do"
    for path in ("/", "/page.css", "/main.js", "/nothing"):
        answer = server.ask("GET", path)
        assert (answer.status, answer.headers["Content-Type"]) == (403, "text/html; charset=utf-8")
    for path in ("/api/session", "/api/events", "/api/settings", "/api/export.csv", "/api/nothing"):
        refused(server.ask("GET", path))
    refused(server.ask("POST", "/api/search", {}))
    server.cookie = own


def test_the_token_works_once():
    page = Page().enter()
    assert page.ask("GET", "/").status == 200
    cookie, page.cookie = page.cookie, None
    assert page.ask("GET", f"/?token={page.token}").status == 403
    page.cookie = cookie
    assert page.ask("GET", f"/?token={page.token}").status == 200, "who is in already is let in again"
    assert page.stop() == 0


def test_the_cookie_of_another_server_is_none_here(page):
    other = Page().enter()
    value = other.cookie.split("=")[1]
    for cookie in (other.cookie, f"qvpctl_{page.port}={value}", f"qvpctl_{page.port}=", f"qvpctl_{page.port}"):
        refused(page.ask("GET", "/api/session", Cookie=cookie))
    assert other.stop() == 0


def test_the_token_is_in_no_file_of_the_page(page):
    for path in ("/", "/main.js", "/page.css", "/api/session"):
        body = page.ask("GET", path).body
        assert page.token.encode() not in body and page.cookie.split("=")[1].encode() not in body


@pytest.mark.parametrize("host", ["evil.example", "evil.example:{port}", "127.0.0.1", "127.0.0.1:1", "localhost", "[::1]:{port}",
                                  "127.0.0.1.evil.example:{port}", "127.0.0.2:{port}", "localhost:{port}.evil.example", "", None,
                                  ["127.0.0.1:{port}", "evil.example"], ["evil.example", "127.0.0.1:{port}"]])
def test_other_names_of_this_machine_are_foreign(page, host):
    """A name that somebody's server has made 127.0.0.1 shows in Host; there is no answer, whatever the cookie."""
    fill = lambda text: text.format(port=page.port)  # noqa: E731
    given = None if host is None else [fill(one) for one in host] if isinstance(host, list) else fill(host)
    for path in ("/api/session", "/", f"/?token={page.token}"):
        answer = page.ask("GET", path, Host=given) if given is not None else raw_answer(page, f"GET {path} HTTP/1.1\r\nCookie: {page.cookie}\r\n")
        assert answer.status in (400, 403), answer
        assert "Set-Cookie" not in answer.headers


class RawAnswer:
    def __init__(self, connection):
        response = http.client.HTTPResponse(connection)
        response.begin()
        self.status, self.headers, self.body = response.status, response.headers, response.read()


def raw_answer(page, request):
    return RawAnswer(page.raw(request.encode() + b"\r\n"))


def test_the_names_of_this_machine_are_ours(page):
    for host in (f"127.0.0.1:{page.port}", f"localhost:{page.port}"):
        assert page.ask("GET", "/api/session", Host=host, Origin=f"http://{host}").status == 200


@pytest.mark.parametrize("origin", ["http://evil.example", "null", "https://127.0.0.1:{port}", "http://127.0.0.1", "http://127.0.0.1:1",
                                    "http://localhost:{port}.evil.example", "file://", ""])
def test_other_pages_are_foreign(page, origin):
    given = origin.format(port=page.port)
    refused(page.ask("GET", "/api/session", Origin=given))
    refused(page.ask("POST", "/api/search", {}, Origin=given))
    assert page.ask("GET", f"/?token={page.token}", Origin=given).status == 403


@pytest.mark.parametrize("site, status", [("cross-site", 403), ("same-site", 403), ("", 403), ("same-origin", 200), ("none", 200)])
def test_what_the_browser_says_of_a_request_counts(page, site, status):
    """Another port of this machine is the same site, and still another page."""
    assert page.ask("GET", "/api/session", Sec_Fetch_Site=site).status == status
    assert page.ask("GET", f"/?token={page.token}", Sec_Fetch_Site=site).status == status


@pytest.mark.parametrize("site", ["cross-site", "none"])
def test_the_file_that_the_browser_was_opened_with_is_another_page(site):
    """So the token alone counts; what it leads to is asked for by a page of this server, which the cookie goes with."""
    page = Page()
    assert page.ask("GET", f"/?token={page.token[::-1]}", Sec_Fetch_Site=site).status == 403
    answer = page.ask("GET", f"/?token={page.token}", Sec_Fetch_Site=site)
    assert (answer.status, "Location" in answer.headers) == (200, False)
    page.cookie = answer.headers["Set-Cookie"].partition(";")[0]
    assert page.ask("GET", "/", Sec_Fetch_Site="same-origin").status == 200
    assert page.ask("GET", "/", Sec_Fetch_Site="cross-site").status == 403
    assert page.stop() == 0


@pytest.mark.parametrize("variable", ["XDG_RUNTIME_DIR", "TMPDIR"])
def test_nobody_reads_the_token_in_the_list_of_processes(tmp_path, variable):
    """The browser is opened with a file of this user's alone, which is gone with the server."""
    (tmp_path / "place").mkdir(mode=0o755)
    others = {"XDG_RUNTIME_DIR": None, "TMPDIR": "/nowhere", variable: str(tmp_path / "place")}
    page = Page("-i", "lo", look=(), QVP_LAN=None, PATH=opener(tmp_path), **others)
    words = opened_words(tmp_path)
    assert page.token.encode() not in page.process_list()
    file = Path(words[0])
    assert len(words) == 1 and file.is_relative_to(tmp_path / "place")
    assert (file.stat().st_mode & 0o777, file.parent.stat().st_mode & 0o777) == (0o600, 0o700)
    assert f'content="0; url={page.url}"' in file.read_text()
    assert page.stop() == 0
    assert list((tmp_path / "place").iterdir()) == []


def test_a_browser_that_cannot_be_opened_is_told(tmp_path):
    (tmp_path / "xdg-open").touch()  # which nobody can start
    for place, path, words in ((tmp_path, tmp_path, "there is no xdg-open"), ("/proc/self", opener(tmp_path), "cannot make /proc/self/")):
        page = Page("-i", "lo", look=(), QVP_LAN=None, PATH=str(path), XDG_RUNTIME_DIR=str(place)).enter()
        assert page.stop() == 0
        assert words in page.errors() and "open the address in a browser of this machine" in page.errors()


def test_what_changes_something_needs_what_no_form_can_send(page):
    for headers in ({"X_Qvpctl": None}, {"X_Qvpctl": "0"}, {"X_Qvpctl": ""}, {"Content_Type": None}, {"Content_Type": "text/plain"},
                    {"Content_Type": "application/x-www-form-urlencoded"}, {"Content_Type": "application/jsonp"}):
        for method, path in (("POST", "/api/search"), ("POST", "/api/login"), ("DELETE", "/api/login")):
            refused(page.ask(method, path, {}, **headers))
    assert page.ask("POST", "/api/search", {}, Content_Type="application/json; charset=utf-8").status == 202


@pytest.mark.parametrize("method", ["OPTIONS", "PUT", "PATCH", "TRACE", "CONNECT", "PROPFIND", "GETT", "get"])
def test_other_methods_are_refused(page, method):
    answer = page.ask(method, "/api/search", {}, Access_Control_Request_Method="POST", Origin=f"http://127.0.0.1:{page.port}")
    refused(answer, "method", 405)
    assert not [name for name in answer.headers if name.lower().startswith("access-control")]


def test_head_tells_the_header_alone(page):
    answer = page.ask("HEAD", "/")
    assert (answer.status, answer.body, answer.headers["Content-Type"]) == (200, b"", "text/html; charset=utf-8")
    assert page.ask("HEAD", "/api/events").status == 404


@pytest.mark.parametrize("path", ["/../../etc/passwd", "/..%2f..%2fetc/passwd", "/%2e%2e/etc/passwd", "//etc/passwd", "/etc/passwd", "/page.css/",
                                  "/page.css%00.js", "/languages/../page.css", "/languages", "/languages/", "/./page.css", "/page.CSS", "/index.html/..",
                                  "/page/page.css", "http://evil.example/page.css", "/api/cameras/../session", "/api/cameras/x", "/api/cameras/",
                                  "/api/cameras/02:51:56:50:00:01/../../session", "*"])
def test_only_the_files_of_the_page_are_served(page, path):
    assert raw_answer(page, f"GET {path} HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\n").status == 404


def test_the_files_of_the_page_are_served_as_what_they_are(page):
    for path, kind in (("/", "text/html"), ("/page.css", "text/css"), ("/main.js", "text/javascript")):
        answer = page.ask("GET", path)
        assert (answer.status, answer.headers["Content-Type"]) == (200, f"{kind}; charset=utf-8")
        assert len(answer.body) == int(answer.headers["Content-Length"]) > 0


def test_a_body_without_end_is_not_read(page):
    head = (f"POST /api/fleet/plan HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\nX-Qvpctl: 1\r\n"
            "Content-Type: application/json\r\n")
    for length, status in (("1048577", 413), ("99999999999999", 413), ("-1", 400), ("1048577x", 400)):
        answer = raw_answer(page, f"{head}Content-Length: {length}\r\n")
        assert answer.status in (status, 413), (length, answer.status)
    assert raw_answer(page, f"{head}Transfer-Encoding: chunked\r\n").status == 411
    whole = page.ask("POST", "/api/fleet/plan", b'{"csv":"' + b"a" * (1048576 - 10) + b'"}')
    assert (whole.status, whole.code) == (400, "bad-value"), "one that is just short enough is looked at"
    assert page.ask("GET", "/api/session").status == 200


@pytest.mark.parametrize("body", [b"", b"[]", b"{", b"null", b'"MARKED-secret"', b'{"csv": MARKED-secret}', b"[" * 100000, b'{"a":' * 100000 + b"1",
                                  b'{"csv":[[[[[[[[[[1]]]]]]]]]]}', b"\xff\xfe", b"\0"])
def test_a_body_that_is_no_request(page, body):
    answer = page.ask("POST", "/api/fleet/plan", body)
    assert (answer.status, answer.code) == (400, "bad-value"), answer
    assert b"MARKED" not in answer.body, "nothing of it is repeated"


def test_a_flood_of_headers_is_bounded(page):
    request = f"GET /api/session HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\n" + "X-Header: value\r\n" * 20000
    connection = page.raw()
    try:
        connection.sendall(request.encode())
        assert RawAnswer(connection).status in (400, 413, 431)
    except (ConnectionError, http.client.BadStatusLine):
        pass  # it did not even listen to the end
    assert page.ask("GET", "/api/session").status == 200


def test_what_is_worked_on_at_once_is_bounded(lan):
    """Each of these waits for a camera that stands still until the last one is refused."""
    camera = lan.camera()
    page = Page(password="admin", patience=["--wait", "0.5", "--retries", "100"]).enter()
    page.find(camera)
    body = f'{{"csv":"mac,upnp\\n{mac(camera)},on\\n"}}'
    request = (f"POST /api/fleet/plan HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\nX-Qvpctl: 1\r\n"
               f"Content-Type: application/json\r\nContent-Length: {len(body)}\r\n\r\n{body}")
    camera.signal(signal.SIGSTOP)
    try:
        connections = [page.raw(request.encode()) for _ in range(60)]
        wait_until(lambda: len(select.select(connections, [], [], 0)[0]) >= 12, "twelve refusals")
    finally:
        camera.signal(signal.SIGCONT)
    statuses = [RawAnswer(connection).status for connection in connections]
    assert (statuses.count(200), statuses.count(429)) == (48, 12)
    assert page.ask("POST", "/api/fleet/plan", body.encode()).status == 200
    assert page.stop() == 0


def test_a_thousand_half_open_connections(page):
    connections = []
    for number in range(1000):
        connections.append(page.raw(b"GET /api/session HTTP/1.1\r\nHo" if number % 2 else b""))
        if number % 100 == 0:
            assert page.ask("GET", "/").status == 200
    assert page.ask("GET", "/api/session").status == 200
    with open(f"/proc/{page.process.pid}/status") as status:
        resident = next(int(line.split()[1]) for line in status if line.startswith("VmRSS"))
    assert resident < 200 * 1024, "kilobytes"
    assert len(os.listdir(f"/proc/{page.process.pid}/fd")) < 200, "the oldest were closed"
    for connection in connections:
        connection.close()


def test_streams_are_counted_and_end_with_their_browser():
    page = Page().enter()
    streams = [page.events() for _ in range(16)]
    assert [stream.next()[0] for stream in streams] == ["snapshot"] * 16
    assert page.events().status == 429
    assert page.ask("GET", "/api/session").status == 200
    streams.pop().close()
    wait_until(lambda: one_more(page, streams), "room for another")
    assert page.stop() == 0, "open streams do not keep it"


def one_more(page, streams):
    streams.append(page.events())
    return streams[-1].status == 200


def test_streams_go_on_where_they_were_cut(page):
    first = page.events()
    name, data = first.next()
    assert name == "snapshot" and set(data) == {"cameras", "search", "changes", "run"}
    page.post("/api/search")
    first.until("search", lambda search: search["running"])
    middle = first.last
    first.until("search", lambda search: not search["running"])
    again = page.events(str(middle))
    assert again.next() == next(event for event in reversed(first.seen) if event[0] == "search"), "what came meanwhile, and no snapshot"
    assert again.last == middle + 1
    for lost in ("99999999999", "-1", "x", "18446744073709551615", str(2**64)):
        stream = page.events(lost)
        assert stream.next()[0] == "snapshot", lost
        stream.close()
    first.close()
    again.close()


def test_what_time_does_to_connections(page):
    """A request of which nothing more comes is cut off, and one of which there is no end, and who takes no answers; a stream
    on which nothing happens has a heartbeat."""
    stream = page.events()
    deaf = who_takes_no_answers(page)
    dripping = page.raw(b"GET / HTTP/1.1\r\nX-Header: ")
    trickle = page.raw(f"POST /api/search HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\nX-Qvpctl: 1\r\n"
                       "Content-Type: application/json\r\nContent-Length: 10\r\n\r\n{".encode())
    while stream.comments == 0:
        stream.comments += stream.line().startswith(":")
    hang_up = select.poll()
    hang_up.register(deaf, 0)
    wait_until(lambda: drip(dripping) or is_closed(trickle), "the end of a request that stands still")
    wait_until(lambda: drip(dripping) or hang_up.poll(0), "the end of who takes no answers")
    wait_until(lambda: drip(dripping) or is_closed(dripping), "the end of an endless header")
    stream.close()


def who_takes_no_answers(page):
    """A connection that asks for as much as anybody lets it, and reads nothing."""
    connection = page.raw()
    connection.setblocking(False)
    request = f"GET /page.css HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\n\r\n".encode()
    writable = select.poll()
    writable.register(connection, select.POLLOUT)
    while writable.poll(1000):
        connection.send(request * 100)
    return connection


def drip(connection):
    """A little more of the request; never true."""
    time.sleep(0.2)
    try:
        connection.sendall(b"x")
    except ConnectionError:
        pass


def test_who_does_not_read_holds_up_nobody():
    page = Page().enter()
    sleeper = page.raw()
    sleeper.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1024)
    sleeper.sendall(f"GET /api/events HTTP/1.1\r\nHost: 127.0.0.1:{page.port}\r\nCookie: {page.cookie}\r\n\r\n".encode())
    reader = page.events()
    for _ in range(5):
        page.post("/api/search")
        reader.until("search", lambda search: search["running"])
    assert page.stop() == 0


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_a_signal_ends_it_with_all_that_is_open(number):
    page = Page().enter()
    stream = page.events()
    stream.next()
    half = page.raw(b"GET / HT")
    assert page.stop(number) == 0
    wait_until_closed(half)
    assert page.errors().replace(SAID_ON_A_VIRTUAL_LAN, "") == ""


SAID_ON_A_VIRTUAL_LAN = ("qvpctl: this page can be reached on the virtual LAN alone; qvpctl web --virtual-cameras makes one beside "
                         "it\n")


def test_it_listens_on_this_machine_alone(page):
    for address in ("198.18.0.1", "127.0.0.2"):
        with pytest.raises(ConnectionRefusedError):
            socket.create_connection((address, page.port), timeout=10)


def test_a_port_that_is_taken_is_told(page):
    done = subprocess.run([TOOL, "web", "--print", "--port", str(page.port)], capture_output=True, text=True, timeout=60)
    assert (done.returncode, done.stdout) == (3, "")
    assert "cannot listen on 127.0.0.1" in done.stderr


def test_what_is_left_by_somebody_else_is_not_taken():
    """A server that should take over, and finds no socket that listens on this machine, serves nothing."""
    done = subprocess.run([TOOL, "web", "--print"], capture_output=True, text=True, timeout=60, stdin=subprocess.DEVNULL,
                          env={**os.environ, "LISTEN_FDS": "1", "QVPCTL_WEB_SESSION": "4"})
    assert (done.returncode, done.stdout) == (3, "")
    assert "nothing is served" in done.stderr


def test_a_socket_that_others_reach_is_not_taken():
    with socket.create_server(("0.0.0.0", 0)) as server, tempfile.TemporaryFile() as secrets:
        secrets.write(b'{"token": "", "cookie": "known", "next": 1, "doorway": ""}')
        secrets.flush()
        done = subprocess.run(["bash", "-c", f'exec 13<&{server.fileno()} 14<&{secrets.fileno()} && exec 3<&13 4<&14 && exec "$@"', "bash",
                               TOOL, "web", "--print"], capture_output=True, text=True, timeout=60, stdin=subprocess.DEVNULL,
                              pass_fds=(server.fileno(), secrets.fileno()),
                              env={**os.environ, "LISTEN_FDS": "1", "QVPCTL_WEB_SESSION": "4"})
    assert (done.returncode, done.stdout) == (3, "")
    assert "nothing is served" in done.stderr
