# SPDX-License-Identifier: GPL-2.0-or-later
"""Files and classes that the documents name are there: a file that moves takes its mention along."""
import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
DOCUMENTS = sorted([*PROJECT.glob("*.md"), *PROJECT.glob("docs/**/*.md"), *PROJECT.glob("bench/*.md")])
FOLDERS = sorted(path.name for path in PROJECT.iterdir() if path.is_dir() and re.fullmatch(r"(?!build)\w+", path.name))
PATH = re.compile(rf"(?:{'|'.join(FOLDERS)})/[\w./*-]*")
FILE = re.compile(r"\w[\w/-]*\.(?:[ch]pp|h|def|py|cmake|patch|yang)")
OBJECT = re.compile(r"`(\w+)` \(`([\w/.]+)`\)")


def code_of(document):
    """What a document has in backticks, with its line."""
    for number, line in enumerate(document.read_text().splitlines(), 1):
        if not line.startswith("    "):
            for words in re.findall(r"`([^`]+)`", line):
                yield number, words


class Documents(unittest.TestCase):
    def test_files_that_documents_name_are_there(self):
        below = [path for folder in FOLDERS for path in (PROJECT / folder).rglob("*")]
        files = ["/" + str(path.relative_to(PROJECT)) for path in below]
        gone, seen = [], 0
        for document in DOCUMENTS:
            for number, words in code_of(document):
                if PATH.fullmatch(words):
                    found = any(PROJECT.glob(words.rstrip("/")))
                elif FILE.fullmatch(words):
                    found = any(file.endswith("/" + words) for file in files)
                else:
                    continue
                seen += 1
                if not found:
                    gone.append(f"{document.relative_to(PROJECT)}:{number}: {words}")
        self.assertEqual(gone, [])
        self.assertGreater(seen, 50)

    def test_objects_are_where_their_page_says(self):
        objects = OBJECT.findall((PROJECT / "docs/objects.md").read_text())
        self.assertGreater(len(objects), 20)
        for name, file in objects:
            with self.subTest(name):
                kind = r"(?:class|struct|using) " if name[0].isupper() else ""
                self.assertRegex((PROJECT / file).read_text(), rf"\b{kind}{name}\b")


if __name__ == "__main__":
    unittest.main()
