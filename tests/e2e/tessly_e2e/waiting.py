"""Waiting for another process: polling up to a deadline, never a fixed pause."""

import time

# Long enough for a loaded machine; reached only when something is wrong.
TIMEOUT = 20.0
INTERVAL = 0.02


class Timeout(AssertionError):
    """What was waited for did not happen. A failed expectation, so tests report it as one."""


def wait_until(condition, what, timeout=TIMEOUT):
    """The first true value that `condition` returns; raises Timeout naming `what` otherwise.

    `what` may be a function, called for the message only when the wait has failed.
    """
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise Timeout(f"not within {timeout:g} s: {what() if callable(what) else what}")
        time.sleep(INTERVAL)


def settled(sample, quiet, what, timeout=TIMEOUT):
    """The value of `sample` once it has stayed the same for `quiet` seconds."""
    deadline = time.monotonic() + timeout
    value = sample()
    since = time.monotonic()
    while time.monotonic() - since < quiet:
        if time.monotonic() >= deadline:
            raise Timeout(f"still changing after {timeout:g} s: {what}")
        time.sleep(INTERVAL)
        newer = sample()
        if newer != value:
            value = newer
            since = time.monotonic()
    return value


def holds_for(seconds, condition):
    """Whether the condition holds all along, for what must not happen or must not end."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            return False
        time.sleep(5 * INTERVAL)
    return True
