# SPDX-License-Identifier: GPL-2.0-or-later
"""The checks of the sources, on small trees of their own that hold one fault each."""
import json
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
CLEAN = "int main()\n{\n    return 0;\n}\n"
USER = """#include "base/faulty.hpp"
int main()
{
    return half_of(1) > 0 ? 0 : 1;
}
"""
FAULTY_HEADER = """#pragma once

inline double half_of(int number)
{
    return number / 2;
}
"""
FAULT = "bugprone-integer-division"



class Lint(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        (self.tree / "tools").mkdir()
        for name in ("tools/lint.py", "tools/check_layers.py", ".clang-format", ".clang-tidy"):
            shutil.copy(PROJECT / name, self.tree / name)
        self.write("base/clean.cpp", CLEAN)
        self.write("clean", "#!/bin/bash\necho clean\n")

    def write(self, name, text):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def lint(self, *words):
        """What was found, as {name of the check: text, None for nothing, "skipped"}."""
        report = self.tree / "report.xml"
        tool = ["/usr/bin/python3", "-B", self.tree / "tools/lint.py", "--jobs", "2", "--junit", report]
        run = subprocess.run([*tool, *words], capture_output=True, text=True, check=False)
        found = {}
        for case in ElementTree.parse(report).iter("testcase"):
            failure = case.find("failure")
            found[case.get("name")] = failure.text if failure is not None else None
            if case.find("skipped") is not None:
                found[case.get("name")] = "skipped"
        has_failure = any(text not in (None, "skipped") for text in found.values())
        self.assertEqual(run.returncode, 1 if has_failure else 0, run.stdout + run.stderr)
        return found

    def git(self, *words):
        author = ["-c", "user.name=a", "-c", "user.email=a@b", "-c", "commit.gpgsign=false"]
        subprocess.run(["git", "-C", self.tree, *author, *words], check=True, capture_output=True)

    def commit(self):
        self.git("init", "-q")
        self.git("add", "base", "clean")
        self.git("commit", "-qm", "all")

    def compile(self, *sources):
        (self.tree / "build").mkdir(exist_ok=True)
        commands = [
            {"directory": str(self.tree), "file": name, "command": f"c++ -std=gnu++20 -I{self.tree} -c {name}"}
            for name in sources
        ]
        self.write("build/compile_commands.json", json.dumps(commands))

    def test_clean_tree_has_no_findings(self):
        self.assertEqual(self.lint("quick"), {"format": None, "layers": None, "shell": None})

    def test_wrongly_formatted_source_is_named(self):
        self.write("sim/crooked.hpp", "int  f( );\n")
        found = self.lint("quick")
        self.assertIn("sim/crooked.hpp", found["format"])
        self.assertNotIn("clean.cpp", found["format"])

    def test_include_against_the_layers_is_named(self):
        self.write("diagd/core/text.hpp", "")
        self.write("shell/front.cpp", '#include "diagd/core/text.hpp"\n')
        self.assertIn("shell/front.cpp", self.lint("quick")["layers"])

    def test_faulty_script_is_found_by_its_first_line(self):
        self.write("sim/start", '#!/bin/sh\ncd "$1"\nrm -rf $2/*\n')
        self.assertIn("sim/start:3", self.lint("quick")["shell"])

    def test_what_is_built_is_not_looked_at(self):
        self.write("build/generated.cpp", "int  f( );\n")
        self.assertIsNone(self.lint("quick")["format"])

    def test_missing_program_is_no_success(self):
        tool = ["/usr/bin/python3", "-B", self.tree / "tools/lint.py", "quick"]
        run = subprocess.run(tool, capture_output=True, text=True, check=False, env={"PATH": "/nonexistent"})
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("clang-format-14 is missing", run.stderr)

    def test_changed_header_is_looked_at_through_a_source(self):
        self.write("base/faulty.hpp", "#pragma once\n")
        self.write("base/user.cpp", USER)
        self.commit()
        self.write("base/faulty.hpp", FAULTY_HEADER)
        self.git("commit", "-qam", "header")
        self.compile("base/clean.cpp", "base/user.cpp")
        found = self.lint("tidy", str(self.tree / "build"), "changed")
        self.assertEqual(list(found), ["base/user.cpp"])
        self.assertIn(FAULT, found["base/user.cpp"])

    def test_source_is_clean_again_once_its_header_is(self):
        self.write("base/faulty.hpp", FAULTY_HEADER)
        self.write("base/user.cpp", USER)
        self.compile("base/user.cpp")
        self.assertIsNotNone(self.lint("tidy", str(self.tree / "build"))["base/user.cpp"])
        self.write("base/faulty.hpp", FAULTY_HEADER.replace("/ 2", "/ 2.0"))
        self.assertIsNone(self.lint("tidy", str(self.tree / "build"))["base/user.cpp"])
        self.write("base/faulty.hpp", FAULTY_HEADER)
        self.assertIsNotNone(self.lint("tidy", str(self.tree / "build"))["base/user.cpp"])

    def test_source_that_does_not_compile_is_no_success(self):
        self.write("base/broken.cpp", "int main( {\n")
        self.compile("base/broken.cpp")
        self.assertIn("error", self.lint("tidy", str(self.tree / "build"))["base/broken.cpp"])

    def test_what_the_time_does_not_suffice_for_is_skipped(self):
        self.compile("base/clean.cpp")
        found = self.lint("--seconds", "0", "tidy", str(self.tree / "build"))
        self.assertEqual(found, {"base/clean.cpp": "skipped"})

    def test_first_commit_has_nothing_to_compare_with(self):
        self.commit()
        self.compile("base/clean.cpp")
        found = self.lint("tidy", str(self.tree / "build"), "changed")
        self.assertEqual(list(found.values()), ["skipped"])


if __name__ == "__main__":
    unittest.main()
