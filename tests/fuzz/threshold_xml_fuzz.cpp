// SPDX-License-Identifier: GPL-2.0-or-later
// Thresholds: the database's XML, an operator's words, and the texts that are made of what they say.
#include "diagd/alarm_log/thresholds/thresholds.hpp"
#include "tests/fuzz/fuzz.hpp"

namespace {

void expect_shown(float threshold)
{
    const diagd::ThresholdText shown(threshold);
    fuzz::expect(std::string_view(shown.c_str()).size() < diagd::threshold_text_size,
                 "a threshold's text has its width");
    const std::int64_t whole = diagd::whole_threshold(threshold);
    fuzz::expect(threshold != threshold || (threshold < 0 ? whole <= 0 : whole >= 0),
                 "the whole part of a threshold has its sign");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(fuzz::as_text(data, size));
    for (const diagd::Thresholds &one : diagd::parse_board_thresholds(text)) {
        expect_shown(one.alarm);
        expect_shown(one.clear);
        for (const auto direction : {diagd::Direction::high, diagd::Direction::low}) {
            static_cast<void>(diagd::are_in_order(one, direction));
            const auto first = diagd::evaluate(one.alarm, one, direction, diagd::ThresholdState::unknown);
            const auto again = diagd::evaluate(one.alarm, one, direction, first.state);
            fuzz::expect(!diagd::are_in_order(one, direction) || again.report == diagd::Report::nothing,
                         "the same value is reported once");
        }
    }
    const bool is_word = diagd::is_threshold_word(text);
    const float value = diagd::threshold_value(text.c_str());
    expect_shown(value);
    fuzz::expect(!is_word || value == value, "what passes for a threshold is a number");
    return 0;
}
