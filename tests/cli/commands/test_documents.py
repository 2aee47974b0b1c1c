# SPDX-License-Identifier: GPL-2.0-or-later
"""The reference has a section for every command of the daemon, its index is current, and all links lead somewhere."""
import re

import pytest
from calls import of
from command_index import PAGES, SECTION, anchor, documented, headings, index, stands_for, written_index
from olt import PROJECT

DOCUMENTS = sorted([*PROJECT.glob("*.md"), *PROJECT.glob("docs/**/*.md"), *PROJECT.glob("bench/*.md")])
LINK = re.compile(r"\]\((?!\w+:)([^)#\s]*)(?:#([^)\s]+))?\)")


@pytest.fixture(scope="module")
def own_commands(make_olt):
    """The syntax of every command that the daemon itself installs, hidden ones included."""
    calls = make_olt().start(trace=True).trace()
    frame = [call.op for call in calls].index("frr_init")
    return {call.values["str"].strip() for call in of(calls[frame + 1 :], "install_element")}


def name_of(document):
    return str(document.relative_to(PROJECT))


def test_every_command_has_a_section(own_commands):
    named = [syntax for syntax, _, _ in documented()]
    missing = sorted(command for command in own_commands
                     if not any(stands_for(syntax, command) for syntax in named))
    assert not missing, "no section of docs/commands is about\n" + "\n".join(missing)


def test_every_section_is_about_a_command_that_exists(own_commands):
    gone = [syntax for syntax, _, _ in documented()
            if not any(stands_for(syntax, command) for command in own_commands)]
    assert not gone


def test_the_index_is_what_the_daemon_lists(olt):
    def commands_of(node):
        text, _ = olt.run("list", node.removeprefix("interface "))
        return [line.strip() for line in text.splitlines() if line.strip()]

    _, present = written_index()
    assert present == index(commands_of), "run tools/command_index.py"


def test_the_manual_page_of_boardctl_has_every_verb(olt):
    page = (PROJECT / "docs" / "man" / "boardctl.1.md").read_text()
    verbs = [re.match(r"[a-z]+(?: [a-z]+(?![|\w]))?", line)[0] for line in olt.boardctl("help").splitlines()]
    assert len(verbs) > 40
    assert [verb for verb in verbs if f"`boardctl {verb}" not in page and verb != "help"] == []


@pytest.mark.parametrize("page", PAGES, ids=name_of)
def test_the_contents_list_every_group(page):
    listed = re.findall(r"^- \[([^]]+)\]\(#([^)]+)\)", page.read_text(), re.MULTILINE)
    groups = [text for level, text in headings(page) if level == SECTION - 1]
    assert listed == ([(text, anchor(text)) for text in groups] if len(groups) > 1 else [])


@pytest.mark.parametrize("document", DOCUMENTS, ids=name_of)
def test_links_of_the_documents_lead_somewhere(document):
    for file, name in LINK.findall(document.read_text()):
        target = document.parent / file if file else document
        assert target.exists(), file
        if name:
            assert name in [anchor(text) for _, text in headings(target)], f"{file}#{name}"
