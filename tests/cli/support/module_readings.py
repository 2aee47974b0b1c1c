# SPDX-License-Identifier: GPL-2.0-or-later
"""What a module measures, reckoned from the bytes of its memory apart from the daemon: exactly, in fractions, with the
bounds between which a display that reckons in single precision may round.

Byte numbers are those of SFF-8472 and SFF-8636.  Of external calibration the displays take each constant by a rule of
their own (constant()), and the received power's from bytes 92 to 95."""

import math
from dataclasses import dataclass
from fractions import Fraction

# Each step of single precision is off by 2**-24 of its result at most; there are five, units included.
OFF = Fraction(5, 2**24)
PLAIN_NM, DOUBLE_NM, PON_NM = (850, 1310, 1311, 1490, 1535), (1577, 1791), (1490, 1535)


def constant(word):
    """A calibration constant: a signed byte, and sixteenths of the upper half of the next; with bit 7 of that one set,
    the negative of what the two's complement says."""
    def parts(number):
        high, low = divmod(number, 256)
        return (high - 256 if high > 127 else high) + Fraction(low >> 4, 16)

    return -parts(-word & 0xFFFF) if word & 0x80 else parts(word)


@dataclass(frozen=True)
class Quantity:
    """A number between two bounds, shown with three decimals."""
    lowest: Fraction
    highest: Fraction

    @classmethod
    def of(cls, *terms, scale=1):
        """Their sum, times scale; what single precision may be off by goes with the largest of them."""
        exact, off = sum(terms, Fraction(0)) * scale, OFF * max(map(abs, terms)) * abs(Fraction(scale))
        return cls(exact - off, exact + off)

    def shows(self, text):
        half = Fraction(1, 2000)
        return text not in ("inf", "-inf", "nan", "-nan") and self.lowest - half <= Fraction(text) <= self.highest + half


@dataclass(frozen=True)
class Power:
    """A power in milliwatts between two bounds, shown in dBm with three decimals; nothing is -inf, less is no number."""
    milliwatts: Quantity

    def shows(self, text):
        lowest, highest = self.milliwatts.lowest, self.milliwatts.highest
        if text == "-inf":
            return lowest <= 0 <= highest
        if text in ("nan", "-nan"):
            return lowest < 0
        if highest <= 0:
            return False
        least = -math.inf if lowest <= 0 else 10 * math.log10(lowest) - 0.000501
        return least <= float(text) <= 10 * math.log10(highest) + 0.000501


def sfp_path(word, wavelength, monitoring, is_first):
    """Temperature, voltage, bias, transmitted and received power of a path of an SFP; None without calibration.
    word(register): a word of its diagnostics."""
    double = 2 if wavelength in DOUBLE_NM or (wavelength in PON_NM and not is_first) else 1
    scales = {96: Fraction(1, 256), 98: Fraction(1, 10000), 100: Fraction(2 * double, 1000), 102: Fraction(double, 10000),
              104: Fraction(1, 10000)}
    slopes = {96: 84, 98: 88, 100: 76, 102: 80, 104: 92}
    if not monitoring & 0x30:
        return None
    found = []
    for register, scale in scales.items():
        raw = word(register)
        if register == 96:
            raw = min(raw, 0x10000 - raw)  # below zero as above
        if monitoring & 0x20:
            terms = [Fraction(raw)]
        else:
            terms = [raw * constant(word(slopes[register])), constant(word(slopes[register] + 2))]
        found.append(Quantity.of(*terms, scale=scale))
    return [*found[:3], Power(found[3]), Power(found[4])]


def qsfp(word):
    """The fourteen values of an SFF-8636 module: temperature, voltage, and of four lanes each bias, transmitted and
    received power.  word(register): a word of its lower memory."""
    temperature = word(22)
    return [Quantity.of(Fraction(min(temperature, 0x10000 - temperature)), scale=Fraction(1, 256)),
            Quantity.of(Fraction(word(26)), scale=Fraction(1, 10000)),
            *(Quantity.of(Fraction(2 * word(register)), scale=Fraction(1, 1000)) for register in (42, 44, 46, 48)),
            *(Power(Quantity.of(Fraction(word(register)), scale=Fraction(1, 10000)))
              for register in (50, 52, 54, 56, 34, 36, 38, 40))]
