# SPDX-License-Identifier: GPL-2.0-or-later
"""The picture of a board's front: it shows what the description says, and the one of the documents is current."""
import copy
import json
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
TOOL = PROJECT / "tools/draw_front.py"
BOARD = PROJECT / "sim/boards/olt8.json"
POPULATION = PROJECT / "sim/boards/olt8-modules.json"
SVG = "{http://www.w3.org/2000/svg}"


def run(*files):
    return subprocess.run(["/usr/bin/python3", "-B", TOOL, *files], capture_output=True, text=True, check=False)


class Front:
    """A drawn front, as its elements."""

    def __init__(self, description, population=None):
        with tempfile.TemporaryDirectory() as folder:
            files = []
            for name, content in (("board.json", description), ("modules.json", population)):
                if content is not None:
                    files.append(Path(folder, name))
                    files[-1].write_text(json.dumps(content))
            done = run(*files)
        assert done.returncode == 0, done.stderr
        self.root = ElementTree.fromstring(done.stdout)

    def titles(self, kind):
        return [element.findtext(f"{SVG}title") for element in self.root if element.get("class") == kind]

    def boxes(self, *kinds):
        chosen = [element for element in self.root.iter(f"{SVG}rect") if element.get("class") in kinds]
        return [[float(element.get(name)) for name in ("x", "y", "width", "height")] for element in chosen]


class DrawFront(unittest.TestCase):
    def setUp(self):
        self.board = json.loads(BOARD.read_text())

    def test_picture_of_the_documents_is_current(self):
        command = "tools/draw_front.py sim/boards/olt8.json sim/boards/olt8-modules.json >docs/images/olt8.svg"
        self.assertEqual((PROJECT / "docs/images/olt8.svg").read_text(), run(BOARD, POPULATION).stdout, command)

    def test_front_has_what_the_description_says(self):
        front = Front(self.board)
        names = [f"GPON 0/{port}" for port in range(1, 9)] + [f"GE 0/{port}" for port in range(1, 5)]
        self.assertEqual(front.titles("cage"), [f"{name}: empty" for name in names])
        lights = ["system LED", "USB LED", *(f"LED of {name}" for name in names), "supply 1 is up", "supply 2 is up"]
        self.assertEqual(front.titles("led"), lights)
        self.assertEqual(front.titles("supply"), ["supply 1", "supply 2"])
        self.assertEqual(front.titles("fans"), ["fan tray"])
        self.assertEqual(front.titles("button"), ["reset button"])
        self.assertEqual(front.titles("usb"), ["USB port"])
        self.assertEqual(front.titles("socket"), ["PHY aux 1", "PHY aux 2"])

    def test_cages_stand_in_two_rows(self):
        boxes = Front(self.board).boxes("cage")[:8]
        top, bottom = boxes[0::2], boxes[1::2]
        self.assertEqual(len({y for _, y, _, _ in top}), 1)
        self.assertEqual(len({y for _, y, _, _ in bottom}), 1)
        self.assertLess(top[0][1], bottom[0][1])
        self.assertEqual([x for x, _, _, _ in top], [x for x, _, _, _ in bottom])

    def test_modules_are_in_their_cages(self):
        population = {"modules": [{"kind": "xgpon", "port": 3, "file": "a/b-1577.json"}]}
        front = Front(self.board, population)
        self.assertEqual(front.titles("cage")[2], "GPON 0/3: b-1577")
        self.assertEqual(len(front.boxes("module")), 1)

    def test_nothing_overlaps_on_boards_of_other_sizes(self):
        for pon, ge in ((1, 0), (4, 2), (16, 6), (16, 64)):
            board = copy.deepcopy(self.board)
            board["pon_cages"]["count"], board["ge_cages"]["count"] = pon, ge
            front = Front(board)
            width = float(front.root.get("width"))
            boxes = sorted(front.boxes("cage", "fans", "supply", "usb"))
            self.assertEqual(len(front.boxes("cage")), pon + ge)
            for number, (x, y, w, h) in enumerate(boxes):
                self.assertTrue(0 < x and x + w < width and 0 < y and y + h < float(front.root.get("height")))
                for other_x, other_y, other_w, other_h in boxes[number + 1 :]:
                    apart = x + w <= other_x or other_x + other_w <= x or y + h <= other_y or other_y + other_h <= y
                    self.assertTrue(apart, (pon, ge, x, other_x))

    def test_board_without_a_button_shows_none(self):
        del self.board["button"]
        self.assertEqual(Front(self.board).titles("button"), [])

    def test_names_are_shown_as_written(self):
        self.board["base_information"]["device_model"] = "A<B>&\"C\""
        self.assertIn('A<B>&"C"', [element.text for element in Front(self.board).root.iter(f"{SVG}text")])

    def test_description_that_cannot_be_read_is_refused(self):
        done = run("/nonexistent/board.json")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("/nonexistent/board.json", done.stderr)


if __name__ == "__main__":
    unittest.main()
