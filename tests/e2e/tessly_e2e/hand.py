"""How fast a person does one thing after another."""

import time

# From one key to the next.
BETWEEN_KEYS = 0.35


def pause(seconds):
    """What a hand does between two actions."""
    time.sleep(seconds)


def pace(seconds, count):
    """The numbers up to `count`, at least so many seconds apart, and hardly more: what comes late on
    a busy machine is not caught up with."""
    due = time.monotonic()
    for number in range(count):
        time.sleep(max(0.0, due - time.monotonic()))
        due = time.monotonic() + seconds
        yield number
