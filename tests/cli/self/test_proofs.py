# SPDX-License-Identifier: GPL-2.0-or-later
"""What proofs judge and write with."""
from types import SimpleNamespace

import pytest
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
