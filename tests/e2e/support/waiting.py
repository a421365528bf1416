"""Waiting for a condition, with a limit."""

import time

STOP_POLL_SECONDS = 0.02  # how often the servers of socketserver look whether they are to stop


def wait_until(condition, what, limit_seconds=30):
    """Returns the first true value of condition()."""
    deadline = time.monotonic() + limit_seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {limit_seconds} s in vain: {what}")
        time.sleep(0.02)
