# SPDX-License-Identifier: GPL-2.0-or-later
"""What the PHY and I2C commands do, in words."""
from calls import of

def _number(values, name):
    return int(values[name], 0)


def _transfer(values):
    text = f"{_number(values, 'addr'):#x} {_number(values, 'reg'):#x} {values['len']} {values['zero']}"
    return text + (f" = {values['data']}" if values.get("data") else "")


def step(call):
    """A call in words, None when it is none of these libraries' nor a change of privileges."""
    values = call.values
    if call.op == "raise":
        return f"raise {values['reason']}"
    if call.op == "lower":
        return "lower"
    unit, _, operation = call.op.removeprefix("misc_").partition("_")
    if unit == "phy" and operation in ("read", "write", "info", "reset"):
        assert values["if"] == "aux", call
        text = f"{operation} {values['phy']}"
        if operation in ("read", "write"):
            text += f" {_number(values, 'reg'):#x}"
        if operation == "read" and "val" in values:
            text += f" = {_number(values, 'val'):#x}"
        return text + (f" {_number(values, 'val'):#x}" if operation == "write" else "")
    if unit == "i2c" and operation == "device_init":
        return f"open {values['bus']}"
    if unit == "i2c" and operation in ("read", "write"):
        return f"{operation} {_transfer(values)}"
    if unit in ("phy", "i2c") and operation == "debug_set":
        return f"debug {values['on']}"
    return None


def _calls(olt, command, node):
    """Text and return code of a command, and what the main thread called while it ran."""
    with olt.vty(node) as session:
        before = len(olt.trace())
        text, rc = session.run(command)
        return text, rc, [call for call in olt.trace()[before:] if call.thread == "main"]


def run(olt, command, node="diagnose"):
    """Text, return code and steps of a command."""
    text, rc, calls = _calls(olt, command, node)
    return text, rc, [word for word in map(step, calls) if word]


def board_semaphore_calls(olt, command, node="diagnose"):
    """What a command does with the board's semaphore."""
    return [call for call in of(_calls(olt, command, node)[2], "semaphore_[pv]") if call.values["id"] == "board"]
