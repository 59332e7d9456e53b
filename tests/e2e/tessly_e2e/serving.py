"""A thread that serves one connection to a desktop, and does on it what the test asks for."""

import os
import queue
import select
import threading
from concurrent.futures import Future

_TIMEOUT = 10


class ServingThread:
    """Calls `dispatch` whenever something can be read from `source`, anything with a fileno."""

    def __init__(self, source, dispatch):
        self._source = source
        self._dispatch = dispatch
        self._jobs = queue.SimpleQueue()
        self._reading, self._writing = os.pipe()
        self._is_ending = False
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def do(self, action):
        """Does something between two events, and returns what came of it."""
        outcome = Future()
        self._jobs.put((action, outcome))
        os.write(self._writing, b"x")
        return outcome.result(_TIMEOUT)

    def end(self):
        self.do(lambda: setattr(self, "_is_ending", True))
        self._thread.join(_TIMEOUT)
        os.close(self._reading)
        os.close(self._writing)

    def _run(self):
        while not self._is_ending:
            if self._reading in select.select([self._source, self._reading], [], [])[0]:
                os.read(self._reading, 1)
                action, outcome = self._jobs.get()
                try:
                    outcome.set_result(action())
                except BaseException as error:  # noqa: BLE001 - it belongs to who asked
                    outcome.set_exception(error)
            if not self._is_ending:
                self._dispatch()
