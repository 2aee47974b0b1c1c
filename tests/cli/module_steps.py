# SPDX-License-Identifier: GPL-2.0-or-later
"""What a command does to the board to reach modules, in words."""

import cpld


def step(call):
    """A call in words, None when it is no access to the board."""
    values = call.values
    if call.op == "misc_cpld_channel_select":
        return f"CH({values['channel']})"
    if call.op == "misc_cpld_channel_select_end":
        return "CHE"
    if call.op in ("misc_i2c_read", "misc_i2c_write"):
        where = f"({int(values['addr'], 0):#x},{values['reg']},{values['len']})"
        return f"I{where}" if call.op.endswith("read") else f"O{where}={values['data']}"
    return cpld.step(call)


def run(olt, command, node="config"):
    """Text, return code and the main thread's steps of a command."""
    with olt.vty(node) as session:
        before = len(olt.trace())
        text, rc = session.run(command)
        calls = [call for call in olt.trace()[before:] if call.thread == "main"]
    return text, rc, [word for word in map(step, calls) if word]


def reads(address, first, last):
    """Reads of single bytes."""
    return [f"I({address:#x},{register},1)" for register in range(first, last + 1)]


def reached(reason, register, channel, *work):
    """The steps of a command that gets at a module."""
    return cpld.bracket(reason, f"R({register})", f"CH({channel})", *work, "CHE")


def absent(reason, register):
    return cpld.bracket(reason, f"R({register})")
