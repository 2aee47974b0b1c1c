#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Draws the front of an OLT as SVG, from the description of its board.

usage: draw_front.py BOARD.json [POPULATION.json] >FRONT.svg

One height unit of a 19 inch rack, about two pixels for a millimetre; a board with more cages than fit gets a wider
front.  What is drawn: the cages in two rows, odd ports above even ones, each with its LED; the LEDs of the system and
of the USB port; the reset button where the description has one; a socket for each PHY; fan trays and supplies, which
are the inventories of the I2C buses that have such a name.  With a population, as boardsim takes it, the cages hold
its modules.
"""
import json
import math
import sys
from pathlib import Path
from xml.sax.saxutils import escape, quoteattr

HEIGHT, LEAST_WIDTH, EAR = 92, 1000, 34
CAGE_WIDTH, CAGE_HEIGHT, CAGE_STEP = 30, 20, 35
TOP_ROW, BOTTOM_ROW = 23, 49
GAP = 20
LED_ON, LED_OFF = "#3ddc6a", "#5b6470"

STYLE = """
text { font-family: "DejaVu Sans", Arial, sans-serif; fill: #e8ebee; }
.name { font-size: 17px; font-weight: bold; }
.label { font-size: 8px; letter-spacing: 0.6px; fill: #aeb6bf; }
.port { font-size: 7.5px; text-anchor: middle; fill: #c9d0d6; }
.middle { text-anchor: middle; }
"""


class Drawing:
    def __init__(self):
        self.parts = []

    def add(self, tag, title="", **attributes):
        words = "".join(f" {name.rstrip('_').replace('_', '-')}={quoteattr(str(value))}" for name, value in attributes.items())
        inner = f"<title>{escape(title)}</title></{tag}>" if title else ""
        self.parts.append(f"<{tag}{words}>{inner}" if inner else f"<{tag}{words}/>")

    def rect(self, x, y, width, height, fill, radius=0, **more):
        self.add("rect", x=x, y=y, width=width, height=height, fill=fill, rx=radius, **more)

    def text(self, x, y, words, kind):
        self.parts.append(f'<text x="{x}" y="{y}" class="{kind}">{escape(words)}</text>')


def led(drawing, x, y, is_on, title):
    drawing.rect(x, y, 7, 3.5, LED_ON if is_on else LED_OFF, 1, class_="led", title=title)


def cage(drawing, x, y, name, module):
    drawing.rect(x, y, CAGE_WIDTH, CAGE_HEIGHT, "#c3c9cf", 1.5)
    title = f"{name}: {module or 'empty'}"
    drawing.rect(x + 2, y + 2, CAGE_WIDTH - 4, CAGE_HEIGHT - 4, "#11151a", 1, class_="cage", title=title)
    if not module:
        return
    # A pluggable module: its body, the two bores of its connector, and the bail that it is pulled with.
    drawing.rect(x + 3.5, y + 3.5, CAGE_WIDTH - 7, CAGE_HEIGHT - 7, "#9aa3ad", 1, class_="module")
    for offset in (6.5, 16):
        drawing.rect(x + offset, y + 6.5, 7.5, 7, "#2a3037", 1)
    drawing.rect(x + 5, y + CAGE_HEIGHT - 5.5, CAGE_WIDTH - 10, 2.5, "#3d7fd6", 1)


def cages(drawing, x, label, prefix, count, modules):
    """A block of cages; its width."""
    columns = math.ceil(count / 2)
    drawing.text(x, 11, label, "label")
    for port in range(1, count + 1):
        left = x + (port - 1) // 2 * CAGE_STEP
        is_top = port % 2 == 1
        module = modules.get(port, "")
        cage(drawing, left, TOP_ROW if is_top else BOTTOM_ROW, f"{prefix} 0/{port}", module)
        number_y, led_y = (21, 16.5) if is_top else (77, 72.5)
        drawing.text(left + 10, number_y, str(port), "port")
        led(drawing, left + 16, led_y, module, f"LED of {prefix} 0/{port}")
    return columns * CAGE_STEP - (CAGE_STEP - CAGE_WIDTH)


def identity(drawing, x, board):
    information = board.get("base_information", {})
    name = information.get("device_model") or board["name"]
    drawing.text(x, 38, name, "name")
    drawing.text(x, 52, "optical line terminal", "label")
    led(drawing, x, 66, True, "system LED")
    drawing.text(x + 11, 70.5, "SYS", "label")
    led(drawing, x + 40, 66, False, "USB LED")
    drawing.text(x + 51, 70.5, "USB", "label")
    return max(112, 11 * len(name))


def usb_and_button(drawing, x, board):
    drawing.text(x, 35, "USB", "label")
    drawing.rect(x, 40, 27, 12, "#c3c9cf", 1)
    drawing.rect(x + 2, 42, 23, 8, "#11151a", 0.5, class_="usb", title="USB port")
    drawing.rect(x + 4, 46.5, 19, 2.5, "#e8ebee")
    if "button" not in board:
        return 27
    drawing.text(x + 41, 35, "RESET", "label")
    drawing.add("circle", "reset button", cx=x + 54, cy=46, r=4.5, fill="#11151a", stroke="#aeb6bf", class_="button")
    return 70


def sockets(drawing, x, phys):
    for number, phy in enumerate(phys):
        left = x + number * 38
        drawing.text(left, 35, f"{phy['interface'].upper()} {phy['address']}", "label")
        drawing.rect(left, 40, 31, 27, "#c3c9cf", 1)
        shape = f"M{left + 3} 43 h25 v15 h-5 v3 h-3.5 v3 h-8 v-3 h-3.5 v-3 h-5 z"
        drawing.add("path", f"PHY {phy['interface']} {phy['address']}", d=shape, fill="#11151a", class_="socket")
        for pin in range(8):
            drawing.rect(left + 6.5 + pin * 2.4, 43, 1.2, 5, "#c9a227")
    return len(phys) * 38 - 7


def fan_tray(drawing, x, name):
    drawing.rect(x, 8, 132, 76, "#343b44", 3, stroke="#59626d", class_="fans", title=name)
    for number in range(3):
        centre = x + 24 + number * 42
        drawing.add("circle", cx=centre, cy=44, r=18.5, fill="#181d23", stroke="#6d7681")
        for blade in range(5):
            turn = f"rotate({blade * 72 + number * 15} {centre} 44)"
            drawing.add("path", d=f"M{centre} 44 q10 -4 6 -16 q-8 2 -6 16 z", fill="#59626d", transform=turn)
        for radius in (6, 12):
            drawing.add("circle", cx=centre, cy=44, r=radius, fill="none", stroke="#6d7681", stroke_width=0.8)
    drawing.text(x + 66, 77, name.upper(), "label middle")
    return 132


def supply(drawing, x, name):
    drawing.rect(x, 8, 84, 76, "#343b44", 3, stroke="#59626d", class_="supply", title=name)
    # An inlet for mains, a handle, slots for the air.
    drawing.add("path", d=f"M{x + 8} 20 h30 v14 l-6 6 h-18 l-6 -6 z", fill="#11151a", stroke="#6d7681")
    for pin_x, pin_y in ((13, 25), (21, 28), (29, 25)):
        drawing.rect(x + pin_x, pin_y, 3, 7, "#c3c9cf")
    drawing.rect(x + 48, 18, 8, 40, "none", 4, stroke="#c9d0d6", stroke_width=3)
    for slot in range(5):
        drawing.rect(x + 64, 20 + slot * 8, 12, 3.5, "#11151a", 1.5)
    led(drawing, x + 10, 50, True, f"{name} is up")
    drawing.text(x + 42, 77, name.upper(), "label middle")
    return 84


def ear(drawing, x):
    drawing.rect(x, 0, EAR - 4, HEIGHT, "#2a3037", 3, stroke="#59626d")
    for y in (18, 66):
        drawing.rect(x + 8, y, 14, 8, "#f4f5f6", 4)


def units_named(board, word, otherwise):
    """Names of the inventories that begin with the word."""
    names = [device["name"] for device in board.get("i2c_devices", []) if device.get("name", "").startswith(word)]
    return names or otherwise


def modules_of(population, *kinds):
    found = population.get("modules", []) if population else []
    return {module["port"]: Path(module["file"]).stem for module in found if module["kind"] in kinds}


def draw(board, population=None):
    drawing = Drawing()
    pon, ge = (board.get(name, {}).get("count", 0) for name in ("pon_cages", "ge_cages"))
    x = EAR + 14
    x += identity(drawing, x, board) + GAP
    x += usb_and_button(drawing, x, board) + GAP
    if board.get("phys"):
        x += sockets(drawing, x, board["phys"]) + GAP
    x += cages(drawing, x, "PON", "GPON", pon, modules_of(population, "gpon", "xgpon")) + GAP if pon else 0
    x += cages(drawing, x, "GE", "GE", ge, modules_of(population, "ge")) + GAP if ge else 0
    # Every board has a bit for the state of each of two supplies, and fans to switch.
    trays = units_named(board, "fan", ["fans"])
    supplies = units_named(board, "supply", ["supply 1", "supply 2"])
    right = len(trays) * 138 + len(supplies) * 90 + EAR
    width = max(LEAST_WIDTH, x + right)
    x = width - right
    for name in trays:
        x += fan_tray(drawing, x, name) + 6
    for name in supplies:
        x += supply(drawing, x, name) + 6

    panel = Drawing()
    panel.rect(EAR - 6, 0.5, width - 2 * EAR + 12, HEIGHT - 1, "#262c33", 2, stroke="#59626d")
    ear(panel, 1)
    ear(panel, width - EAR + 3)
    title = f"Front of {board['name']}"
    head = (
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {HEIGHT}" width="{width}" height="{HEIGHT}" '
        f'role="img">\n<title>{escape(title)}</title>\n<style>{STYLE}</style>'
    )
    return "\n".join([head, *panel.parts, *drawing.parts, "</svg>\n"])


def main(files):
    if len(files) not in (1, 2):
        sys.exit("usage: draw_front.py BOARD.json [POPULATION.json]")
    try:
        sys.stdout.write(draw(*(json.loads(Path(file).read_text()) for file in files)))
    except (OSError, ValueError, KeyError) as error:
        sys.exit(f"draw_front: {' '.join(files)}: {error!r}")


if __name__ == "__main__":
    main(sys.argv[1:])
