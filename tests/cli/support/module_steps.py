# SPDX-License-Identifier: GPL-2.0-or-later
"""What a command does to the board to reach modules, in words."""

import cpld

FIRST, SECOND = (0x50, 0x51), (0x58, 0x59)  # the addresses of an SFP's paths


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
    return cpld.board_session(reason, f"R({register})", f"CH({channel})", *work, "CHE")


def absent(reason, register):
    return cpld.board_session(reason, f"R({register})")


def refused(reason):
    """The steps of a reader of modules that finds no CPLD."""
    return ["take", f"raise {reason}", "open", "lower", "give"]


def in_cage(kind, port, *work):
    """Looking into a port's cage, and working on the module in it; without work, there is none."""
    register, first_channel = (12, 8) if kind == "ge" else (11, 0)
    return [f"R({register})", *([f"CH({first_channel + port - 1})", *work, "CHE"] if work else [])]


def word(address, register):
    """A number of two bytes, in one transaction."""
    return [f"I({address:#x},{register},2)"]


def fields(address, *registers):
    """Fields of two bytes, read byte by byte."""
    return [byte for register in registers for byte in reads(address, register, register + 1)]


def readout(address, diagnostics, calibration):
    """What the readout of one path takes.  calibration: internal, external, or None."""
    values = {"internal": reads(diagnostics, 96, 105), "external": reads(diagnostics, 76, 105),
              None: fields(address, 22, 26, 42, 50, 34)}
    return [*reads(address, 0, 0), *word(address, 60), *reads(address, 92, 92), *values[calibration]]
