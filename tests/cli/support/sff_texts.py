# SPDX-License-Identifier: GPL-2.0-or-later
"""What code bytes of module memory are called in displays, and the display of a module's identification made
from its memory: written from the standards' byte numbers and the displays' texts, independent of the daemon."""

IDENTIFIERS = {1: "GBIC", 2: "SOLDERED", 3: "SFP", 12: "QSFP", 13: "QSFP+", 17: "QSFP28"}
CONNECTORS = {
    1: "SC (Subscriber Connector)",
    2: "Fibre Channel Style 1 copper connector",
    3: "Fibre Channel Style 2 copper connector",
    4: "BNC/TNC (Bayonet/Threaded Neill-Concelman)",
    5: "Fibre Channel coax headers",
    6: "Fiber Jack",
    7: "LC (Lucent Connector)",
    8: "MT-RJ (Mechanical Transfer \N{EN DASH} Registered Jack)",
    9: "MU (Multiple Optical)",
    10: "SG",
    11: "Optical Pigtail",
    12: "MPO12 (1X12, Multifiber Parallel Optic)",
    13: "MPO16 (2X16)",
    32: "HSSDC II (High Speed Serial Data Connector)",
    33: "Copper pigtail",
    34: "RJ45",
    35: "No separable connector",
    36: "MXC 2X16",
    37: "CS optical connector",
    38: "SN (previously Mini CS) optical connector",
    39: "MPO12 (2X12)",
    40: "MPO16 (1X16)",
}
SFP_ENCODINGS = dict(enumerate(["Unspecified", "8B/10B", "4B/5B", "NRZ", "Manchester", "SONET Scrambled", "64B/66B",
                                "256B/257B", "PAM4"]))
QSFP_ENCODINGS = SFP_ENCODINGS | {4: "SONET Scrambled", 5: "64B/66B", 6: "Manchester"}
TEN_GIGABIT = {0x10: "10GBASE-SR", 0x20: "10GBASE-LR", 0x40: "10GBASE-LRM", 0x80: "10GBASE-ER"}
GIGABIT = {0x01: "1000BASE-SX", 0x02: "1000BASE-LX", 0x04: "1000BASE-CX", 0x08: "1000BASE-T", 0x10: "100BASE-LX",
           0x20: "100BASE-FX", 0x40: "BASE-BX10", 0x80: "BASE-PX"}
QSFP_TYPES = {0x01: "40G Active Cable (XLPPI)", 0x02: "40GBASE-LR4", 0x04: "40GBASE-SR4", 0x08: "40GBASE-CR4",
              0x10: "10GBASE-SR", 0x20: "10GBASE-LR", 0x40: "10GBASE-LRM"}
EXTENDED_TYPES = {1: "100G AOC", 2: "100GBASE-SR4", 3: "100GBASE-LR4", 4: "100GBASE-ER4", 6: "100G CWDM4)",
                  7: "100G PSM4 Parallel SMR", 8: "100G ACC", 11: "100GBASE-CR4", 23: "100G CLR4"}

SFP, QSFP = (0x00, 0x03), (0x02, 0x0C, 0x0D, 0x11)


def name(table, code):
    return table.get(code, f"N/A ({code})")


def sfp_type(byte3, byte6, byte36):
    if byte36:
        return f"N/A ({byte3})"  # no 25G name is ever given
    upper = byte3 & 0xF0
    return TEN_GIGABIT.get(upper, f"N/A ({byte3})") if upper else name(GIGABIT, byte6)


def qsfp_type(byte131, byte192):
    return name(EXTENDED_TYPES, byte192) if byte131 == 0x80 else name(QSFP_TYPES, byte131)


def line(label, value):
    return f"{label:<31}:    {value}"


def hexes(data):
    return " ".join(f"0x{byte:02x}" for byte in data)


def dump(data):
    return [f"{row:03x} :  " + "".join(f"{byte:02x} " for byte in data[row * 10 : row * 10 + 10])
            for row in range(len(data) // 10)]


BLOCK_RULE, DUMP_RULE = 53 * "-", 43 * "="


def on_terminal(field):
    """A module's text as a session gets it: "?" for each character that a terminal would obey."""
    def obeyed(character):
        code = ord(character)
        alone = code - 0xDC00 if 0xDC80 <= code <= 0xDCFF else None  # a byte that is no UTF-8
        return (code < 0x20 and character != "\t") or 0x7F <= code <= 0x9F or alone in (*range(0x80, 0xA0), 0xFF)

    text = field.decode("utf-8", "surrogateescape")
    return "".join("?" if obeyed(character) else character for character in text).encode(
        "utf-8", "surrogateescape").decode("latin-1")


def idprom(memory, block=None):
    """The display as it arrives at a session, of a module whose memory(address, register) is a byte.
    block: "vendor" or "manufacture" alone."""

    def some(first, last, address=0x50):
        return bytes(memory(address, register) for register in range(first, last + 1))

    def text(first, last):
        return on_terminal(some(first, last).split(b"\0")[0])

    def code(register):
        return memory(0x50, register)

    if code(0) in SFP:
        names, oui = {"vendor": (20, 35), "part": (40, 55), "revision": (56, 59), "serial": (68, 83), "date": (84, 91)}, (37, 39)
        general = [line("Identifier", name(IDENTIFIERS, code(0))), line("Connector", name(CONNECTORS, code(2))),
                   line("Wavelength(nm)", int.from_bytes(some(60, 61), "big")),
                   line("Transceiver Type", sfp_type(code(3), code(6), code(36))),
                   line("Transfer Distance(m)", hexes(some(14, 19))),
                   line("Digital Diagnostic Monitoring", hexes(some(92, 92))), line("Transceiver", hexes(some(3, 10))),
                   line("Encoding", name(SFP_ENCODINGS, code(11))), line("BR_Norminal", hexes(some(12, 12)))]
        raw = ["SFF-8472 MSA EEPROM Data", DUMP_RULE, *dump(some(128, 247, 0x51)), "",
               "SFF-8472 Digital Diagnostic Monitoring Data", DUMP_RULE, ""]
    elif code(0) in QSFP:
        names = {"vendor": (148, 163), "part": (168, 183), "revision": (184, 185), "serial": (196, 211), "date": (212, 219)}
        oui = (165, 167)
        general = [line("Identifier", name(IDENTIFIERS, code(128))), line("Connector", name(CONNECTORS, code(130))),
                   line("Wavelength(nm)", int.from_bytes(some(186, 187), "big") // 20),
                   line("Transceiver Type", qsfp_type(code(131), code(192))),
                   line("Transfer Distance(m)", hexes(some(142, 146))),
                   line("Digital Diagnostic Monitoring", hexes(some(92, 92))), line("Transceiver", hexes(some(131, 138))),
                   line("Encoding", name(QSFP_ENCODINGS, code(139))), line("BR_Norminal", hexes(some(140, 140)))]
        raw = ["SFF-8636 MSA EEPROM Data", DUMP_RULE, *dump(some(128, 247))]
    else:
        return ""
    shown = {field: text(*where) for field, where in names.items()}
    vendor = [line("Vendor Name", shown["vendor"]), line("Vendor OUI", some(*oui).hex(" ")),
              line("Vendor Part Number", shown["part"]), line("Vendor Revision", shown["revision"]),
              line("Vendor Serial Number", shown["serial"])]
    manufacture = ["Manufacture Information", BLOCK_RULE, line("Manufacture Serial Number", shown["serial"]),
                   line("Manufacture Date", "20" + shown["date"]), line("Vendor Name", shown["vendor"])]
    lines = {"vendor": vendor, "manufacture": manufacture,
             None: ["General Information", BLOCK_RULE, *general, *vendor, *manufacture, *raw]}[block]
    # Names of code bytes are UTF-8, which a session's text shows byte by byte.
    return "".join(shown.replace("\N{EN DASH}", "\xe2\x80\x93") + "\r\n" for shown in lines)
