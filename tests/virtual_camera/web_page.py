"""Asks for a web page until its server is there; prints the status, and the page.

web_page.py URL [USER PASSWORD]
"""
import base64
import sys
import time
import urllib.error
import urllib.request

PATIENCE = 60


def main(url, *login):
    request = urllib.request.Request(url)
    if login:
        request.add_header("Authorization", "Basic " + base64.b64encode(":".join(login).encode()).decode())
    deadline = time.monotonic() + PATIENCE
    while True:
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE) as page:
                print(page.status, page.read().decode())
            return
        except urllib.error.HTTPError as refusal:
            print(refusal.status, refusal.headers["WWW-Authenticate"])
            return
        except OSError:
            if time.monotonic() >= deadline:
                raise
            time.sleep(0.02)


main(*sys.argv[1:])
