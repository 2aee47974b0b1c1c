# SPDX-License-Identifier: GPL-2.0-or-later
"""What proofs judge and write with."""
from types import SimpleNamespace

import pytest
from alarm_store import CAPACITY
from kill_ledger import Ledger
from kill_work import cut_lines, possible_temperatures
from project import PROJECT
from report import Report
from short_form import PROOFS
from trend import Trend

SHORT = SimpleNamespace(short=True, seed=7)


def trend_of(*values):
    trend = Trend()
    for at, value in enumerate(values):
        trend.add(value, at=at)
    return trend


def test_growth_is_that_of_the_last_half_alone():
    growth, noise = trend_of(0, 10, 20, 30, 40, 40, 40, 40, 40).growth()
    assert growth == pytest.approx(0) and noise == pytest.approx(0)


def test_a_steady_rise_is_growth_without_noise():
    growth, noise = trend_of(*range(0, 90, 10)).growth()
    assert growth == pytest.approx(40) and noise == pytest.approx(0)


def test_ups_and_downs_are_noise():
    growth, noise = trend_of(*[0, 10] * 50).growth()
    assert abs(growth) < 1 and noise == pytest.approx(5, rel=0.01)


def test_too_few_samples_are_no_trend():
    with pytest.raises(ValueError):
        trend_of(1, 2, 3).growth()


def test_a_figure_out_of_its_bound_is_a_finding():
    report = Report("lab", SHORT)
    report.figure("good", 1, "at most 2")
    assert report.holds
    report.figure("bad", 3, "at most 2", good=False)
    assert report.findings == ["bad: 3, not at most 2"]


def test_a_section_is_replaced_and_the_others_stay(tmp_path):
    page = tmp_path / "proof.md"
    for name, figure in (("second", "1"), ("first", "2"), ("second", "3")):
        report = Report(name, SHORT)
        report.figure("what", figure)
        report.record(page, f"The {name} one.\n\nMore of it.\n")
    text = page.read_text()
    assert text.index("## first") < text.index("## second")
    assert text.count("## ") == 2
    assert "| what | 3 |" in text and "| what | 1 |" not in text and "| what | 2 |" in text


def test_a_finding_stands_on_the_page(tmp_path):
    report = Report("lab", SHORT)
    report.check(False, "the daemon\nhas ended")
    report.record(tmp_path / "proof.md", "A lab.")
    text = (tmp_path / "proof.md").read_text()
    assert "not everything held" in text and "- the daemon has ended" in text


def test_every_proof_has_its_short_form_among_the_tests():
    names = {path.stem for path in PROOFS.glob("*.py")}
    assert names and names == {path.stem.removeprefix("test_") for path in (PROJECT / "tests/cli/proofs").glob("test_*.py")}

def listing(*records):
    lines = [f"[2026/03/02 09:41:17]  Power supply 1 up or down    {text}\n" for text in records]
    return "".join(lines) + (f"alarm log count: {len(lines)}\n" if lines else "")


def ledger_of(**last):
    ledger = Ledger()
    for name, number in last.items():
        ledger.acknowledge(name, number, ledger.count + number)
    return ledger


def test_all_that_was_acknowledged_and_what_was_filed_besides_is_no_loss():
    assert ledger_of(a=1, b=0).judge(listing("a-0", "b-0", "Open!", "a-1", "a-2")) == []


@pytest.mark.parametrize(("records", "words"), [
    (["b-0", "a-0"], ["2 records are left of 3", "a-1 was acknowledged and is gone"]),
    (["a-0", "a-1"], ["2 records are left of 3", "b-0 was acknowledged and is gone"]),
    (["a-0", "b-0", "a-2"], ["records of a are missing or twice between [(0, 2)]"]),
    (["a-0", "b-0", "a-1", "a-1"], ["records of a are missing or twice between [(1, 1)]"]),
])
def test_a_record_that_is_gone_is_told(records, words):
    found = ledger_of(a=1, b=0).judge(listing(*records))
    assert len(found) == len(words) and all(word in text for word, text in zip(words, found)), found


def test_what_the_store_has_no_room_for_is_no_loss_and_the_rest_is():
    ledger = ledger_of(old=0, new=CAPACITY - 1)
    full = [f"new-{number}" for number in range(CAPACITY)]
    assert ledger.judge(listing(*full)) == []
    assert ledger.judge(listing(*full[1:])) != []
    assert "old-0 was acknowledged and is gone" in ledger_of(old=0, new=CAPACITY - 2).judge(listing(*full[1:-1]))[-1]


def written(done, under_way=None):
    return SimpleNamespace(done=done, under_way=under_way)


@pytest.mark.parametrize(("done", "under_way", "possible"), [
    ([], "fan temperature 31", {30}),
    (["fan temperature 31"], "write file", {30, 31}),
    (["fan temperature 31", "write file"], None, {31}),
    (["fan temperature 31", "write file"], "fan temperature 32", {31}),
    (["fan temperature 31", "write file", "fan temperature 32"], "write file", {31, 32}),
])
def test_a_write_that_was_answered_counts_and_one_under_way_may(done, under_way, possible):
    assert possible_temperatures(written(done, under_way), 30) == possible


def test_a_line_of_the_flash_log_that_is_cut_is_told():
    line = "[2026/03/02 09:41:17] [major] [fan] [Fan] : Open!\n"
    assert cut_lines(line * 3) == ([], 3)
    assert cut_lines(line * 2 + line[:-1]) == ([2], 3)
    assert cut_lines(line + line[:20] + "\n" + line) == ([1], 3)
