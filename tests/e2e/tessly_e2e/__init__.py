"""Runs the built program on a desktop of its own and uses it as a person would.

The desktop is real (an X server without a screen, a window manager, a session bus); so are the
programs that copy and paste. Nothing of the machine's own session is seen or touched.
"""

from .desktop import Desktop
from .history import Clip, History
from .tessly import Tessly
from .waiting import Timeout, wait_until

__all__ = ["Clip", "Desktop", "History", "Tessly", "Timeout", "wait_until"]
