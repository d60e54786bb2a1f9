"""Asks for a web page until its server is there; prints the status, and the page.

web_page.py URL [USER PASSWORD]
"""
import base64
import signal
import sys
import time
import urllib.error
import urllib.request

PATIENCE = 60


def answer(request):
    try:
        with urllib.request.urlopen(request, timeout=PATIENCE) as page:
            return f"{page.status} {page.read().decode()}"
    except urllib.error.HTTPError as refusal:
        return f"{refusal.status} {refusal.headers['WWW-Authenticate']}"


def first_answer(request):
    deadline = time.monotonic() + PATIENCE
    while True:
        try:
            return answer(request)
        except OSError:
            if time.monotonic() >= deadline:
                raise
            time.sleep(0.02)


def main(url, *login):
    request = urllib.request.Request(url)
    if login:
        request.add_header("Authorization", "Basic " + base64.b64encode(":".join(login).encode()).decode())
    text = first_answer(request)
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # a reader such as `head` may have seen enough
    print(text)


main(*sys.argv[1:])
