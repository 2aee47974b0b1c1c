# SPDX-License-Identifier: GPL-2.0-or-later
"""The shared alarm store of a box, read and written by its layout, without the platform library.

A header of four 32-bit words (oldest slot, newest slot, count, the library's) and 4096 slots of 200 bytes.
Tests put chains into it that no library would make, and look at what the library made.
"""
import mmap
import struct
from dataclasses import dataclass

NONE = 0xFFFFFFFF
CAPACITY = 4096
SLOT_SIZE = 200
SLOT_BASE = 16
LEVELS = ["debug", "info", "notice", "warning", "major", "critical", "alert", "emerg"]

_HEADER = struct.Struct("=III")
_LINKS = struct.Struct("=BBHII")  # valid, level, alarm id, prev, next
_LIBRARY_AT = 12  # four bytes of the library, zero in a free slot
_TIME = struct.Struct("=6i")  # second, minute, hour, day, month, year, as they are printed
_TIME_AT = 16
_MESSAGE_AT = 72
_MESSAGE_SIZE = 128


@dataclass(frozen=True)
class Record:
    message: str | bytes
    level: int = 4
    alarm_id: int = 77
    time: tuple[int, int, int, int, int, int] = (2026, 3, 2, 9, 41, 17)  # year .. second
    valid: bool = True


class AlarmStore:
    """The store of the box in which process `pid` lives."""

    def __init__(self, pid: int):
        with open(f"/proc/{pid}/root/dev/shm/tq_alarm_log", "r+b") as file:
            self._map = mmap.mmap(file.fileno(), SLOT_BASE + CAPACITY * SLOT_SIZE)

    def close(self) -> None:
        self._map.close()

    @property
    def header(self) -> tuple[int, int, int]:
        """Oldest slot, newest slot, count."""
        return _HEADER.unpack_from(self._map, 0)

    @header.setter
    def header(self, words: tuple[int, int, int]) -> None:
        _HEADER.pack_into(self._map, 0, *words)

    def empty(self) -> None:
        self.header = (NONE, NONE, 0)
        for index in range(CAPACITY):
            at = SLOT_BASE + index * SLOT_SIZE
            _LINKS.pack_into(self._map, at, 0, 0, 0, NONE, NONE)
            self._map[at + _LIBRARY_AT : at + _LIBRARY_AT + 4] = bytes(4)

    def put(self, index: int, record: Record, prev: int, next_: int) -> None:
        at = SLOT_BASE + index * SLOT_SIZE
        message = record.message if isinstance(record.message, bytes) else record.message.encode()
        _LINKS.pack_into(self._map, at, int(record.valid), record.level, record.alarm_id, prev, next_)
        _TIME.pack_into(self._map, at + _TIME_AT, *reversed(record.time))
        text = message[:_MESSAGE_SIZE].ljust(_MESSAGE_SIZE, b"\0")
        self._map[at + _MESSAGE_AT : at + _MESSAGE_AT + _MESSAGE_SIZE] = text

    def chain(self, records: list[Record], slots: list[int] | None = None) -> None:
        """Makes the records, oldest first, the whole content; `slots` says where each one lies."""
        self.empty()
        places = slots if slots is not None else list(range(len(records)))
        for place, record in enumerate(records):
            prev = places[place - 1] if place else NONE
            next_ = places[place + 1] if place + 1 < len(records) else NONE
            self.put(places[place], record, prev, next_)
        if records:
            self.header = (places[0], places[-1], len(records))

    def set_link(self, index: int, *, prev: int | None = None, next_: int | None = None) -> None:
        at = SLOT_BASE + index * SLOT_SIZE
        valid, level, alarm_id, old_prev, old_next = _LINKS.unpack_from(self._map, at)
        _LINKS.pack_into(self._map, at, valid, level, alarm_id,
                         old_prev if prev is None else prev, old_next if next_ is None else next_)

    def record(self, index: int) -> Record:
        at = SLOT_BASE + index * SLOT_SIZE
        valid, level, alarm_id, _, _ = _LINKS.unpack_from(self._map, at)
        time = tuple(reversed(_TIME.unpack_from(self._map, at + _TIME_AT)))
        text = self._map[at + _MESSAGE_AT : at + _MESSAGE_AT + _MESSAGE_SIZE].split(b"\0")[0]
        return Record(text.decode(errors="replace"), level, alarm_id, time, bool(valid))

    def raw_message(self, index: int) -> bytes:
        at = SLOT_BASE + index * SLOT_SIZE + _MESSAGE_AT
        return self._map[at : at + _MESSAGE_SIZE].split(b"\0")[0]

    def places(self) -> list[int]:
        """Slots of the chain, oldest first.  Fails on a chain that is not sound in both directions."""
        head, tail, count = self.header
        places: list[int] = []
        prev, index = NONE, head
        while index != NONE:
            assert index < CAPACITY, f"slot {prev} leads out of the store, to {index}"
            assert len(places) < CAPACITY, "the chain has no end"
            _, _, _, back, next_ = _LINKS.unpack_from(self._map, SLOT_BASE + index * SLOT_SIZE)
            assert back == prev, f"slot {index} says that {back} is before it, not {prev}"
            places.append(index)
            prev, index = index, next_
        assert tail == prev, f"the newest is {tail}, the chain ends with {prev}"
        assert count == len(places), f"the count is {count}, the chain has {len(places)}"
        return places

    def records(self) -> list[Record]:
        return [self.record(index) for index in self.places()]

    def messages(self) -> list[str]:
        return [record.message for record in self.records()]


def line(record: Record, description: str) -> str:
    """The record as the show commands print it."""
    year, month, day, hour, minute, second = record.time
    when = f"[{year:4d}/{month:02d}/{day:02d} {hour:02d}:{minute:02d}:{second:02d}]"
    return f"{when}  {description}    {record.message}\n"
