# SPDX-License-Identifier: GPL-2.0-or-later
"""What a command does to the CPLD, in words, and boards with records of the test's own."""

ACCESS = {"misc_cpld_i2c_read_byte": "R", "misc_cpld_i2c_set_byte": "W"}
BOARD_CALLS = {
    "semaphore_p": "take",
    "semaphore_v": "give",
    "lower": "lower",
    "misc_cpld_i2c_close": "close",
    "misc_cpld_i2c_power_state_get": "power state",
    "misc_cpld_i2c_logic_version_get": "logic version",
    "misc_cpld_i2c_device_type_get": "device type",
}


def step(call):
    """A call in words, None when it is no access to the board."""
    values = call.values
    if call.op == "raise":
        return f"raise {values['reason']}"
    if call.op == "misc_cpld_i2c_open":
        return "open"
    if call.op in ACCESS:
        text = f"{ACCESS[call.op]}({int(values['reg'], 0)}"
        return text + (f",{int(values['val'], 0):#x})" if call.op.endswith("set_byte") else ")")
    if call.op.startswith("semaphore") and values.get("id") != "board":
        return None
    return BOARD_CALLS.get(call.op)


def steps(calls, thread="main"):
    return [word for word in map(step, (call for call in calls if call.thread == thread)) if word]


def run(olt, command, node="diagnose"):
    """Text, return code and steps of a command."""
    with olt.vty(node) as session:
        before = len(olt.trace())
        text, rc = session.run(command)
        return text, rc, steps(olt.trace()[before:])


def board_session(reason, *work):
    """The steps of a command that gets at the board."""
    return ["take", f"raise {reason}", "open", "lower", *work, "close", "give"]


def refused(reason):
    """The steps of a command that finds no CPLD."""
    return ["take", f"raise {reason}", "open", "give", "lower"]


def record(index, capability, word8=0, word108=6, **tables):
    """A board record; tables: pon1, pon2, sfp with port numbers, or with whole entries."""
    return {"index": index, "word8": word8, "word108": word108, "capability": capability,
            **{name: [port if isinstance(port, dict) else {"port": port} for port in ports]
               for name, ports in tables.items()}}


PON, SFP = 0x08, 0x10
