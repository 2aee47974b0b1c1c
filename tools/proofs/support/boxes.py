# SPDX-License-Identifier: GPL-2.0-or-later
"""OLTs for a proof, each in a box of its own, all gone at the end."""
import itertools

from olt import Olt, prepared_database


class Boxes:
    def __init__(self, folder):
        """folder: where the state folders go, whatever is in them gone when the proof ends."""
        self._folder = folder
        self._numbers = itertools.count()
        self._made = []

    def make(self, **how):
        """A box with its board; the daemon is not started yet.  how: as Olt takes it."""
        self._made.append(Olt(self._folder / str(next(self._numbers)), template=prepared_database(), **how))
        return self._made[-1]

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        errors = []
        for olt in self._made:
            try:
                olt.close()
            except AssertionError as error:  # what a sanitizer found
                errors.append(error)
        assert kind or not errors, errors
