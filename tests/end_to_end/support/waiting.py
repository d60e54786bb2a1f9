"""Waiting for something to become true, with a bound that only a broken daemon reaches."""
import time

PATIENCE = 60  # seconds; an emulated or sanitized daemon on a busy machine is slow


def wait_until(condition, what, patience=PATIENCE):
    """Returns the first true value of condition()."""
    end = time.monotonic() + patience
    while not (value := condition()):
        assert time.monotonic() < end, f"waited in vain for {what}"
        time.sleep(0.005)
    return value
