# SPDX-License-Identifier: GPL-2.0-or-later
"""What `show transceiver` says of each interface, in text and in JSON."""

import json

from vty import SUCCESS

PON_PORTS, GE_PORTS = range(1, 9), range(1, 5)
INTERFACES = [("gpon", port) for port in PON_PORTS] + [("ge", port) for port in GE_PORTS]
NAME_WIDTH = 14


def text_name(kind, port):
    return f"{'GE' if kind == 'ge' else 'GPON'} 0/{port}"


def text_rows(session):
    """The values of each interface's rows, by interface name; no values is an empty list."""
    text, status = session.run("show transceiver")
    assert status == SUCCESS
    names = {f"{text_name(*interface):<{NAME_WIDTH}}": text_name(*interface) for interface in INTERFACES}
    rows = {name: [] for name in names.values()}
    for line in text.split("\r\n"):
        name = names.get(line[:NAME_WIDTH])
        if name:
            rows[name].append(line[NAME_WIDTH:].split())
    assert all(rows.values()), text
    return rows


def json_objects(session):
    """The object of each interface, by the interface name of the text."""
    text, status = session.run("show transceiver json")
    assert status == SUCCESS
    found = json.loads(text.encode("latin-1").decode("utf-8"))
    assert list(found) == [text_name(*interface).replace("GPON", "PON") for interface in INTERFACES]
    objects = {}
    for interface, (name, (only,)) in zip(INTERFACES, found.items()):
        assert only["interfaceName"] == name
        objects[text_name(*interface)] = only
    return objects


def show_detail(session):
    text, status = session.run("show transceiver detail")
    assert status == SUCCESS and text.startswith("\r\nTransceiver monitoring is disabled")
    return text
