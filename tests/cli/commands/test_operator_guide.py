# SPDX-License-Identifier: GPL-2.0-or-later
"""The operators' documents have a section for every command of the daemon, and lead to it."""
import re

import pytest
from calls import of
from guide import DOCUMENTS, anchor, grammars_of, headings, stands_for

SECTION = 3  # level of a command's heading; those above are the groups


@pytest.fixture(scope="module")
def own_commands(make_olt):
    """The grammar of every command that the daemon itself installs, hidden ones included."""
    calls = make_olt().start(trace=True).trace()
    frame = [call.op for call in calls].index("frr_init")
    return {call.values["str"].strip() for call in of(calls[frame + 1 :], "install_element")}


def documented():
    return [grammar for document in DOCUMENTS for level, text in headings(document) if level >= SECTION
            for grammar in grammars_of(text)]


def test_every_command_has_a_section(own_commands):
    named = documented()
    missing = sorted(command for command in own_commands
                     if not any(stands_for(grammar, command) for grammar in named))
    assert not missing, "no section of docs/operator.md or docs/alarms.md is about\n" + "\n".join(missing)


def test_every_section_is_about_a_command_that_exists(own_commands):
    gone = [grammar for grammar in documented()
            if not any(stands_for(grammar, command) for command in own_commands)]
    assert not gone


@pytest.mark.parametrize("document", DOCUMENTS, ids=lambda document: document.name)
def test_the_contents_list_every_group(document):
    listed = re.findall(r"^- \[([^]]+)\]\(#([^)]+)\)", document.read_text(), re.MULTILINE)
    groups = [text for level, text in headings(document) if level == SECTION - 1]
    assert listed == [(text, anchor(text)) for text in groups]


@pytest.mark.parametrize("document", DOCUMENTS, ids=lambda document: document.name)
def test_links_within_the_documents_lead_somewhere(document):
    for file, name in re.findall(r"\]\(([\w.]*)#([^)]+)\)", document.read_text()):
        target = document.parent / file if file else document
        assert name in [anchor(text) for _, text in headings(target)], f"{file}#{name}"
