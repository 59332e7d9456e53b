"""Pictures of every window in every state, light and dark, at a scale, from the gallery:

    python3 -m tessly_e2e.pictures GALLERY FOLDER SCALE …

makes a folder for each scale in FOLDER.
"""

import os
import sys

from .desktop import Desktop

# So that the largest scale has room for every window.
SIZE = (2560, 1600)
TIMEOUT = 180.0


def font():
    """The file of the font that texts are in, with this machine's fonts."""
    with Desktop(bus=False) as desktop:
        return os.path.basename(
            desktop.run(["fc-match", "--format=%{file}", "sans"]).stdout.decode())


def take(gallery, folder, scale):
    with Desktop(bus=False, size=SIZE) as desktop:
        desktop.run([gallery, folder], environment={"QT_SCALE_FACTOR": scale}, timeout=TIMEOUT)


def main(gallery, folder, *scales):
    for scale in scales:
        take(gallery, os.path.join(folder, scale), scale)


if __name__ == "__main__":
    main(*sys.argv[1:])
