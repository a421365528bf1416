"""Waiting for a condition, with a limit."""

import time

STOP_POLL_SECONDS = 0.02  # how often the servers of socketserver check for a stop


def wait_until(condition, what, limit_seconds=30):
    """Returns the first true value of condition(). Raises TimeoutError after the limit."""
    deadline = time.monotonic() + limit_seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {limit_seconds} s in vain: {what}")
        time.sleep(0.02)
