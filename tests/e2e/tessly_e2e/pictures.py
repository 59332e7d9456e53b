"""Pictures of every window in every state, light and dark, at a scale, from the gallery:

    python3 -m tessly_e2e.pictures GALLERY FOLDER SCALE …

makes a folder for each scale in FOLDER.
"""

import os
import sys
from concurrent.futures import ThreadPoolExecutor

from .desktop import Desktop

# So that the largest scale has room for every window.
SIZE = (2560, 1600)
TIMEOUT = 180.0


def font():
    """The file of the font that texts are in, with this machine's fonts."""
    with Desktop(bus=False) as desktop:
        return os.path.basename(
            desktop.run(["fc-match", "--format=%{file}", "sans"]).stdout.decode())


def _take(gallery, folder, scale):
    with Desktop(bus=False, size=SIZE) as desktop:
        desktop.run([gallery, folder], environment={"QT_SCALE_FACTOR": scale}, timeout=TIMEOUT)


def take(gallery, folder, scales):
    """Side by side: each waits most of the time, until nothing moves any more."""
    with ThreadPoolExecutor(len(scales)) as executor:
        taken = [executor.submit(_take, gallery, os.path.join(folder, scale), scale)
                 for scale in scales]
    for future in taken:
        future.result()


if __name__ == "__main__":
    take(sys.argv[1], sys.argv[2], sys.argv[3:])
