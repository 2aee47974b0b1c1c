# SPDX-License-Identifier: GPL-2.0-or-later
"""What the tests of every command share: the commands of a running daemon, and lines of each to type.

Nothing here names a command that is merely to be tested: `find` tells them.  The tables hold what a machine cannot
know, and why."""
import re
from collections import Counter

from syntax import examples, typed

# As `find` names a node: where a session starts, the command that leads there, and the one that undoes it.
NODES = {
    "view": ("view", None, None),
    "enable": ("enable", None, None),
    "config": ("config", None, None),
    "extended": ("config", "log extended-syslog lab", "no log extended-syslog lab"),
    "vty": ("config", "line vty", None),
    "gpon": ("config", "interface gpon 0/1", None),
    "xgpon": ("config", "interface xgpon 0/4", None),
    "diagnose": ("diagnose", None, None),
}

# Words to type for a placeholder, where only a certain one leads somewhere: pattern of the syntax, placeholder, words.
SPECIAL_WORDS = [
    (r"configuration name|alarm.event> name", "WORD", ["fan"]),
    (r"enable WORD WORD", "WORD", ["40.5"]),  # a threshold to raise and one to clear: equal ones suit high and low
    (r"hostname", "WORD", ["olt"]),
    (r"show yang module", "WORD", ["frr-interface"]),
    (r"log .*file", "FILENAME", ["/var/log/every-command"]),
    (r"banner", "FILE", ["/etc/frr/diagd.conf"]),
    (r"thread cpu", "FILTER", ["RW"]),
    (r"frr defaults", "PROFILE", ["traditional"]),
    (r"unique-id", "UID", ["A1B2C-D3E4F"]),
    (r"operational-data", "XPATH", ["/frr-interface:lib"]),
]

WORDS = {
    "A.B.C.D": ["192.0.2.9"],
    "A.B.C.D/M": ["192.0.2.0/24"],
    "X:X::X:X": ["2001:db8::9"],
    "X:X::X:X/M": ["2001:db8::/32"],
    "X:X:X:X:X:X": ["02:00:5e:10:00:01"],
    "MAC": ["02:00:5e:10:00:01"],
    "S/P": ["0/1", "0/3", "0/4", "0/5", "0/8", "1/9"],  # modules of several kinds, none, no such port
    "PATH": ["/var/log/every-command"],
    "FILENAME": ["every-command"],
    "PERMS": ["0600"],
    "REGEX": ["show"],
}

# Words that do not fit a placeholder; those of ranges are found by counting.
WRONG_WORDS = {
    "A.B.C.D": ["192.0.2.256", "192.0.2"],
    "X:X::X:X": ["2001:db8::g", "2001:db8::1::2"],
    "S/P": ["0", "0/", "0/x", "/1", "0/1/1"],
}

# Lines that take their time: pattern, seconds, why.
SLOW = [
    (r"show sys cpu-usage", 3, "mpstat looks at the processor for three seconds"),
    (r"system gpio reset", 2, "the operator is given two seconds to read that the box goes down"),
]

# Lines that are right and refused: pattern, why.
REFUSED = [
    (r"cpld restore", "the box has no backup of the CPLD's logic"),
    (r"no service (cputime|walltime)-warning", "libfrr refuses the short form of its own"),
    (r"unique-id", "there is no log record of that id"),
    (r"yang|translate", "the daemon has no YANG modules and no translators"),
    (r"access-class", "taking away a list that is not the one in force"),
]

# Lines of libfrr at which a sanitizer stops; they are left out where one looks on: pattern, why.
NOT_SANITIZED = [
    (r"clear thread cpu.*", "the counts of threads are forgotten, not freed"),
    (r"no banner motd", "the text is forgotten, not freed"),
    (r"(no )?destination fd envvar .*", "the descriptor of a variable that is not set, -1, is shifted by"),
]

# Lines after which a descriptor stays open on purpose: pattern, what it leads to, why.
LEAVES_OPEN = [
    (r"pon reset|system gpio reset", "/dev/tq_gpio_cfg", "the reset line is held until the board goes down"),
]


def bounds(placeholder):
    """The numbers of a range such as (1-8)."""
    return [int(number) for number in re.fullmatch(r"\((-?\d+) ?- ?(-?\d+)\)", placeholder).groups()]


def words_for(syntax, placeholder):
    for pattern, name, words in SPECIAL_WORDS:
        if name == placeholder and re.search(pattern, syntax):
            return words
    if placeholder in WORDS:
        return WORDS[placeholder]
    if placeholder.startswith("("):
        lowest, highest = bounds(placeholder)
        return [str(number) for number in sorted({lowest, highest})]
    if re.search(r"_HEX$|^DEVAD$", placeholder):
        return ["0x1"]
    if placeholder.endswith("_DEC"):
        return ["16"]
    return ["lab"]


def commands(olt):
    """The syntax of every command that the running daemon has, hidden ones included, by node."""
    text, status = olt.run("find .")
    assert status == 0
    found = {}
    for line in text.splitlines():
        node, syntax = re.fullmatch(r"  \((\S+)\)  (.+)", line).groups()
        found.setdefault(node, []).append(syntax)
    return found


def descriptors(olt):
    """What the daemon's descriptors lead to, by count; without the numbers of sockets and of the process."""
    return Counter(re.sub(r":\[\d+\]$|\.\d+(?=/)", "", target) for target in olt.fds().values())


def lines_of(syntax):
    """Lines to type for a command, as lists of words."""
    return examples(syntax, lambda placeholder: words_for(syntax, placeholder))


def wrong_lines_of(syntax):
    """Lines in which one word does not fit its placeholder."""
    for words in lines_of(syntax):
        for place, word in enumerate(words):
            wrong = WRONG_WORDS.get(word.shown, [])
            if word.shown.startswith("("):
                lowest, highest = bounds(word.shown)
                wrong = [str(lowest - 1), str(highest + 1), f"{lowest}x"]
            for text in wrong:
                yield " ".join([typed(words[:place]), text, typed(words[place + 1 :])]).strip()
