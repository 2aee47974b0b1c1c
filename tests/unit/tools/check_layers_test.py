# SPDX-License-Identifier: GPL-2.0-or-later
"""The layer check on small trees of its own: each holds one include that its layer forbids, or allows."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOOL = Path(__file__).resolve().parents[3] / "tools" / "check_layers.py"
HEADERS = {
    "base/fd.hpp": "#include <unistd.h>\n",
    "diagd/units.hpp": "",
    "diagd/core/frr.hpp": "#include <zebra.h>\n#include <vty.h>\n",
    "diagd/core/text.hpp": "#include <string_view>\n",
    "diagd/monitors/fan_private.hpp": "",
    "diagd/board/session.hpp": "",
    "diagd/transceiver/memory/pon_optics.hpp": "",
    "module_files/module_image.hpp": "",
    "optics/model.hpp": "",
    "platform/alarms/alarm.hpp": "",
    "platform/alarms/mapping.hpp": "",
    "platform/database/engine/recovery.hpp": "",
    "platform/include/tq_api.h": "",
    "platform/sinks/sink_state.hpp": "",
    "platform/trace/tq_trace.hpp": "",
    "sim/boardsim/board.hpp": "",
}


class CheckLayers(unittest.TestCase):
    def check(self, file, text):
        """Exit status and words of the check of a tree with this file."""
        with tempfile.TemporaryDirectory() as folder:
            for name, content in {**HEADERS, file: text}.items():
                path = Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(content)
            run = subprocess.run([sys.executable, TOOL, folder], capture_output=True, text=True, check=False)
        return run.returncode, run.stdout

    def assert_refused(self, file, text, words):
        status, output = self.check(file, text)
        self.assertEqual(status, 1, output)
        self.assertIn(file, output)
        self.assertIn(words, output)

    def assert_allowed(self, file, text):
        self.assertEqual(self.check(file, text), (0, "every include stays in its layer\n"))

    def test_a_unit_uses_core_board_the_c_api_and_exports(self):
        self.assert_allowed(
            "diagd/cpld/a.cpp",
            '#include "diagd/core/frr.hpp"\n#include "diagd/board/session.hpp"\n#include "tq_api.h"\n'
            '#include "diagd/transceiver/memory/pon_optics.hpp"\n',
        )

    def test_a_unit_does_not_see_what_another_keeps_to_itself(self):
        self.assert_refused("diagd/cpld/a.cpp", '#include "diagd/monitors/fan_private.hpp"\n', "only through the headers that EXPORTS")

    def test_the_c_api_stands_on_its_own(self):
        self.assert_refused(
            "platform/include/a.h", '#include "platform/trace/tq_trace.hpp"\n', "the C API stands on its own"
        )
        self.assert_allowed("platform/include/a.h", '#include "tq_api.h"\n')

    def test_a_unit_does_not_look_up(self):
        self.assert_refused("diagd/monitors/a.cpp", '#include "diagd/units.hpp"\n', "includes go down only")

    def test_core_knows_neither_the_board_nor_the_units(self):
        self.assert_refused("diagd/core/a.cpp", '#include "diagd/board/session.hpp"\n', "core includes nothing but itself")
        self.assert_refused("diagd/core/a.cpp", '#include "diagd/transceiver/memory/pon_optics.hpp"\n', "core includes nothing")

    def test_the_board_uses_core_and_does_not_know_the_units(self):
        self.assert_allowed("diagd/board/a.cpp", '#include "diagd/core/frr.hpp"\n#include "tq_api.h"\n')
        self.assert_refused(
            "diagd/board/a.cpp", '#include "diagd/transceiver/memory/pon_optics.hpp"\n', "board includes nothing but itself"
        )

    def test_the_daemon_sees_only_the_c_api_of_the_platform(self):
        self.assert_refused("diagd/monitors/a.cpp", '#include "platform/trace/tq_trace.hpp"\n', "only its C API")

    def test_dumps_of_modules_are_for_the_simulator_not_for_the_daemon(self):
        self.assert_allowed("sim/boardctl/a.cpp", '#include "module_files/module_image.hpp"\n')
        self.assert_refused("diagd/monitors/a.cpp", '#include "module_files/module_image.hpp"\n', "only its C API")

    def test_dumps_of_modules_need_nothing_but_base(self):
        self.assert_allowed("module_files/a.cpp", '#include "base/fd.hpp"\n')
        self.assert_refused("module_files/a.cpp", '#include "sim/boardsim/board.hpp"\n', "needs nothing but base")

    def test_optics_is_pure_and_its_program_reads_dumps(self):
        self.assert_allowed("optics/a.cpp", '#include "optics/model.hpp"\n#include <array>\n')
        self.assert_refused("optics/a.cpp", '#include "base/fd.hpp"\n', "standard library only")
        self.assert_refused("optics/a.cpp", '#include "module_files/module_image.hpp"\n', "needs nothing but base")
        self.assert_refused("optics/program/a.cpp", '#include "tq_api.h"\n', "needs nothing but base")
        self.assert_allowed(
            "optics/program/a.cpp", '#include "optics/model.hpp"\n#include "module_files/module_image.hpp"\n#include "base/fd.hpp"\n'
        )

    def test_libfrr_has_one_door(self):
        self.assert_refused("diagd/monitors/a.cpp", "#include <zebra.h>\n", 'only through "diagd/core/frr.hpp"')

    def test_sysrepo_and_libfrr_do_not_meet(self):
        self.assert_refused("diagd/monitors/a.cpp", '#include "diagd/core/frr.hpp"\n#include <sysrepo.h>\n', "different libyangs")
        self.assert_allowed("diagd/monitors/a.cpp", '#include "tq_api.h"\n#include <sysrepo.h>\n')

    def test_pure_files_reach_only_the_standard_library(self):
        self.assert_allowed("diagd/monitors/fan/fan_policy.cpp", '#include "diagd/core/text.hpp"\n#include <array>\n')
        self.assert_refused("diagd/monitors/fan/fan_policy.cpp", '#include "base/fd.hpp"\n', "<unistd.h>")
        self.assert_refused("diagd/transceiver/decode/a.hpp", '#include "diagd/core/frr.hpp"\n', "standard library only")

    def test_the_platform_does_not_know_what_is_built_on_it(self):
        self.assert_refused("platform/system/a.cpp", '#include "diagd/core/text.hpp"\n', "platform never includes diagd")
        self.assert_refused("platform/system/a.cpp", '#include "sim/boardsim/board.hpp"\n', "platform never includes sim")
        self.assert_allowed("platform/system/a.cpp", '#include "platform/trace/tq_trace.hpp"\n')

    def test_rooms_of_the_platform_know_only_what_they_stand_on(self):
        self.assert_allowed("platform/sinks/a.cpp", '#include "platform/alarms/alarm.hpp"\n')
        self.assert_refused(
            "platform/alarms/a.cpp", '#include "platform/sinks/sink_state.hpp"\n', "alarms knows nothing of platform/sinks"
        )
        self.assert_refused(
            "platform/system/a.cpp", '#include "platform/alarms/mapping.hpp"\n', "system knows nothing of platform/alarms"
        )
        self.assert_refused(
            "platform/database/model/a.cpp",
            '#include "platform/database/engine/recovery.hpp"\n',
            "model knows nothing of platform/database/engine",
        )

    def test_sysrepo_comes_into_the_platform_in_one_room(self):
        self.assert_allowed("platform/database/engine/a.cpp", "#include <sysrepo.h>\n")
        self.assert_refused("platform/database/api/a.cpp", "#include <sysrepo.h>\n", "sysrepo comes into the platform only")

    def test_base_is_for_all_and_needs_nobody(self):
        self.assert_refused("base/a.hpp", '#include "tq_api.h"\n', "nothing of its surroundings")
        self.assert_allowed("platform/system/a.cpp", '#include "base/fd.hpp"\n')

    def test_an_include_says_where_it_leads(self):
        self.assert_refused("diagd/monitors/a.cpp", '#include "fan_private.hpp"\n', "is no header of the tree")

    def test_the_shell_shares_the_descriptor_owner_and_no_more(self):
        self.assert_allowed("shell/a.cpp", '#include "base/fd.hpp"\n')
        self.assert_refused("shell/a.cpp", '#include "diagd/core/text.hpp"\n', "shell never includes diagd")


if __name__ == "__main__":
    unittest.main()
