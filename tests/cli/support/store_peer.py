# SPDX-License-Identifier: GPL-2.0-or-later
"""Another process of the box that uses the alarm store through the platform library, as the other daemons do.

    store_peer.py LIBRARIES describe ID...        description of each alarm, a line each
    store_peer.py LIBRARIES catalogue             the catalogue, a line of JSON each: name, description, level, type,
                                                  class, group, actions
    store_peer.py LIBRARIES add ID COUNT PREFIX [WIDTH]
                                                  files COUNT alarms "PREFIX-n"; prints n, in as many columns, when it is filed
    store_peer.py LIBRARIES add-apart ID COUNT PREFIX [WIDTH]
                                                  the same by the catalogue's switches, without the database
    store_peer.py LIBRARIES delete-oldest         deletes oldest records until its input closes
    store_peer.py LIBRARIES hold                  takes the semaphore, prints "held", keeps it until its input closes

LIBRARIES is the folder of the platform libraries.  Prints "ready" on a line of its own before add,
add-apart and delete-oldest begin.
"""
import ctypes
import itertools
import json
import os
import struct
import sys

from alarm_words import ALARM_COUNT

ENTRY_SIZE, DESCRIPTION_AT, DESCRIPTION_SIZE = 88, 34, 32
ENTRY = struct.Struct("=H32s32sxxIIIII")  # id, name, description, level, type, actions, class, group
NONE = 0xFFFFFFFF


def say(text: str) -> None:
    os.write(1, text.encode() + b"\n")


class Platform:
    def __init__(self, folder: str):
        self.database_library = ctypes.CDLL(f"{folder}/libtqdatabase.so", mode=ctypes.RTLD_GLOBAL)
        self.api = ctypes.CDLL(f"{folder}/libtqapi.so", mode=ctypes.RTLD_GLOBAL)
        self.database = (ctypes.c_void_p * 16)()

    def open_store(self) -> int:
        """Attaches the store and returns the id of its semaphore."""
        if self.api.tq_alarm_log_init() < 0:
            raise SystemExit("tq_alarm_log_init failed")
        return ctypes.c_int.in_dll(self.api, "alarm_log_sem_id").value

    def describe(self, alarm_id: int) -> str:
        table = (ctypes.c_char * (ALARM_COUNT * ENTRY_SIZE)).in_dll(self.api, "tq_alarm_log_info")
        at = alarm_id * ENTRY_SIZE + DESCRIPTION_AT
        return table.raw[at : at + DESCRIPTION_SIZE].split(b"\0")[0].decode()

    def catalogue(self) -> None:
        def names(table: str, size: int, count: int) -> list[str]:
            raw = (ctypes.c_char * (size * count)).in_dll(self.api, table).raw
            return [text_of(raw[size * n : size * (n + 1)]) for n in range(count)]

        def text_of(field: bytes) -> str:
            return field.split(b"\0")[0].decode()

        levels = names("tq_alarm_log_level", 16, 8)
        types = names("tq_alarm_log_type", 16, 4)
        classes = names("tq_alarm_log_class", 8, 2)
        raw = (ctypes.c_char * (ALARM_COUNT * ENTRY_SIZE)).in_dll(self.api, "tq_alarm_log_info").raw
        for number, name, description, level, type_, actions, class_, group in ENTRY.iter_unpack(raw):
            say(json.dumps({"id": number, "name": text_of(name), "description": text_of(description),
                            "level": levels[level], "type": types[type_], "class": classes[class_], "group": group,
                            "actions": actions}))

    def add(self, *how) -> None:
        if self.database_library.database_init(self.database) < 0:
            raise SystemExit("database_init failed")
        self.file(self.database, *how)

    def file(self, database, alarm_id: str, count: str, prefix: str, width: str = "0") -> None:
        self.open_store()
        say("ready")
        request = bytearray(32)
        request[0:2] = int(alarm_id).to_bytes(2, sys.byteorder)
        for n in range(int(count)) if int(count) else itertools.count():
            buffer = (ctypes.c_char * 32).from_buffer(request)
            result = self.api.cli_log(database, buffer, b"%s", os.fsencode(f"{prefix}-{n}"))
            if result != 0:
                raise SystemExit(f"cli_log returned {result}")
            say(str(n).rjust(int(width)))

    def delete_oldest(self) -> None:
        semaphore = self.open_store()
        self.api.tq_alarm_log_get_shm_pointer.restype = ctypes.c_void_p
        store = self.api.tq_alarm_log_get_shm_pointer()
        slot0 = store + 16
        say("ready")
        os.set_blocking(0, False)
        while self.input_open():
            self.api.semaphore_p(semaphore)
            head = ctypes.c_uint32.from_address(store).value
            if head != NONE:
                self.api.tq_alarm_log_delete_by_index(
                    ctypes.c_void_p(store), ctypes.c_void_p(slot0), ctypes.c_void_p(slot0 + 200 * head))
            self.api.semaphore_v(semaphore)

    def hold(self) -> None:
        semaphore = self.open_store()
        self.api.semaphore_p(semaphore)
        say("held")
        sys.stdin.read()
        self.api.semaphore_v(semaphore)

    @staticmethod
    def input_open() -> bool:
        try:
            return os.read(0, 1) != b""
        except BlockingIOError:
            return True


def main() -> None:
    folder, verb, *words = sys.argv[1:]
    platform = Platform(folder)
    if verb == "describe":
        for word in words:
            say(platform.describe(int(word)))
    elif verb == "catalogue":
        platform.catalogue()
    elif verb == "add":
        platform.add(*words)
    elif verb == "add-apart":
        platform.file(None, *words)
    elif verb == "delete-oldest":
        platform.delete_oldest()
    elif verb == "hold":
        platform.hold()
    else:
        raise SystemExit(f"unknown verb {verb}")


main()
