# SPDX-License-Identifier: GPL-2.0-or-later
"""What a command does to the board, call by call, in the words of a list that a test writes down.

"take", "raise REASON", "open", "lower", "close", "give"; "R REG" of the CPLD; "select CHANNEL", "end"; module memory
as "ADDR:REG", with "+N" when N bytes come in one transaction, and as "ADDR:REG=HEX" when written.  ADDR is in hex.
"""

_PLAIN = {"misc_cpld_i2c_open": "open", "lower": "lower", "misc_cpld_i2c_close": "close",
          "misc_cpld_channel_select_end": "end"}
PON_PRESENCE, GE_PRESENCE = 11, 12
FIRST, SECOND = (0x50, 0x51), (0x58, 0x59)


def _word(call):
    values = call.values
    match call.op:
        case "semaphore_p" | "semaphore_v":
            return {"p": "take", "v": "give"}[call.op[-1]] if values["id"] == "board" else None
        case "raise":
            return f"raise {values['reason']}"
        case "misc_cpld_i2c_read_byte":
            return f"R {values['reg']}"
        case "misc_cpld_channel_select":
            return f"select {values['channel']}"
        case "misc_i2c_read":
            return f"{int(values['addr'], 0):x}:{values['reg']}" + ("" if values["len"] == "1" else f"+{values['len']}")
        case "misc_i2c_write":
            return f"{int(values['addr'], 0):x}:{values['reg']}={values['data']}"
    # Whatever else is called of the board's libraries stands as it is, so that no list is equal to it.
    return _PLAIN.get(call.op, str(call) if call.op.startswith("misc_") else None)


def accesses(calls):
    """The accesses among the main thread's calls."""
    return [word for word in map(_word, (call for call in calls if call.thread == "main")) if word]


def run(olt, command, node="config"):
    """Text, return code and accesses of a command; the OLT must be traced."""
    with olt.vty(node) as session:
        before = len(olt.trace())
        text, rc = session.run(command)
        return text, rc, accesses(olt.trace()[before:])


def bracket(reason, *work):
    """The work, with what every command does that gets at the board."""
    return ["take", f"raise {reason}", "open", "lower", *work, "close", "give"]


def refused(reason):
    """The calls of a reader of modules that finds no CPLD."""
    return ["take", f"raise {reason}", "open", "lower", "give"]


def socket(kind, port, *work):
    """Looking into a port's socket and working on the module in it; no work: nothing is in it."""
    register, first_channel = (GE_PRESENCE, 8) if kind == "ge" else (PON_PRESENCE, 0)
    return [f"R {register}", *([f"select {first_channel + port - 1}", *work, "end"] if work else [])]


def block(address, first, last):
    """A block, which is read byte by byte."""
    return [f"{address:x}:{register}" for register in range(first, last + 1)]


def word(address, register):
    """Two bytes in one transaction."""
    return [f"{address:x}:{register}+2"]


def fields(address, *registers):
    """Two-byte fields, read byte by byte."""
    return [byte for register in registers for byte in block(address, register, register + 1)]


def readout(id_address, diagnostics, calibration):
    """What the readout of one path takes.  calibration: internal, external, or None."""
    values = {"internal": block(diagnostics, 96, 105), "external": block(diagnostics, 76, 105),
              None: fields(id_address, 22, 26, 42, 50, 34)}
    return [*block(id_address, 0, 0), *word(id_address, 60), *block(id_address, 92, 92), *values[calibration]]
