"""How fast a person does one thing after another."""

import time

# From one key to the next.
BETWEEN_KEYS = 0.35


def pause(seconds):
    """What a hand does between two actions."""
    time.sleep(seconds)


def pace(seconds, count):
    """The numbers up to `count`, one every so many seconds, as near as the machine gets to it."""
    start = time.monotonic()
    for number in range(count):
        time.sleep(max(0.0, start + number * seconds - time.monotonic()))
        yield number
