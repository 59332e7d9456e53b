"""The history on disk, read beside the running program and never written."""

import os
import shutil
import sqlite3
from collections import namedtuple
from contextlib import closing, contextmanager

from .waiting import TIMEOUT, wait_until

Clip = namedtuple(
    "Clip", "id created_at last_used_at kind preview search_text plain_text rtf html image_png "
    "file_urls source_app_name source_bundle_id content_hash is_pinned pin_order copy_count")


class History:
    def __init__(self, folder):
        self.folder = folder
        self.path = os.path.join(folder, "history.sqlite")

    def clips(self):
        """Every entry, in the order of the panel; none while there is no database yet."""
        if not os.path.exists(self.path):
            return []
        try:
            with closing(sqlite3.connect(f"file:{self.path}?mode=ro", uri=True,
                                         timeout=5)) as connection:
                rows = connection.execute(
                    f"SELECT {', '.join(Clip._fields)} FROM clips ORDER BY is_pinned DESC, "
                    "CASE WHEN is_pinned = 1 THEN pin_order END DESC, last_used_at DESC").fetchall()
        except sqlite3.OperationalError as error:
            if "no such table" in str(error):
                return []  # just being created
            raise
        return [Clip(*row) for row in rows]

    @contextmanager
    def held(self):
        """Nobody can write to it meanwhile."""
        with closing(sqlite3.connect(self.path, isolation_level=None, timeout=5)) as connection:
            connection.execute("BEGIN IMMEDIATE")
            yield
            connection.execute("ROLLBACK")

    def contains(self, text):
        """Whether there is an entry of this plain text, however many others there are."""
        return self._number("SELECT EXISTS (SELECT 1 FROM clips WHERE plain_text = ?)", text) == 1

    def count(self):
        return self._number("SELECT count(*) FROM clips")

    def _number(self, query, *values):
        with closing(sqlite3.connect(f"file:{self.path}?mode=ro", uri=True,
                                     timeout=5)) as connection:
            return connection.execute(query, values).fetchone()[0]

    def find(self, text):
        """The entry with this plain text, or None."""
        return next((clip for clip in self.clips() if clip.plain_text == text), None)

    def wait_for_text(self, text, timeout=TIMEOUT):
        return wait_until(lambda: self.find(text), f"“{text[:60]}” is recorded", timeout)

    def wait_for_kind(self, kind, timeout=TIMEOUT):
        """The newest entry, once it is of this kind."""
        return wait_until(
            lambda: next((clip for clip in self.clips()[:1] if clip.kind == kind), None),
            f"an entry of kind {kind} is recorded", timeout)

    def problems(self, scratch):
        """What SQLite finds wrong with the history and with its index, on a copy in `scratch`.

        The copy includes the write-ahead log, so it opens as the program would after a crash.
        """
        os.makedirs(scratch, exist_ok=True)
        copy = os.path.join(scratch, "history.sqlite")
        for suffix in ("", "-wal"):
            if os.path.exists(copy + suffix):
                os.remove(copy + suffix)
            if os.path.exists(self.path + suffix):
                shutil.copyfile(self.path + suffix, copy + suffix)
        found = []
        with closing(sqlite3.connect(copy)) as connection:
            found += [row[0] for row in connection.execute("PRAGMA integrity_check")
                      if row[0] != "ok"]
            try:
                connection.execute(
                    "INSERT INTO clips_fts(clips_fts, rank) VALUES ('integrity-check', 1)")
            except sqlite3.DatabaseError as error:
                # Of a program in a root with a later SQLite than this one.
                if "file format (found 5, expected 4)" not in str(error):
                    found.append(f"index: {error}")
        return found
