// SPDX-License-Identifier: GPL-2.0-or-later
// Thresholds and values from text.
#include "diagd/alarm_log/thresholds/threshold_policy.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

namespace diagd {

namespace {

static_assert(std::numeric_limits<float>::is_iec559); // a number too large for a float is infinite

constexpr auto element_tags = std::to_array<std::string_view>({
#define TQ_BOARD_THRESHOLD(id, ID, name, ...) "<" name ">",
#include "tq_alarms.def"
});
static_assert(element_tags.size() == std::tuple_size_v<BoardThresholds>);

// Takes the first line off the text.
std::string_view next_line(std::string_view &text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

// The number between the first tag of the line and the next.
float value_of_element(std::string_view line)
{
    const std::size_t tag_end = line.find('>');
    if (tag_end == line.npos)
        return 0.0F;
    const std::string_view content = line.substr(tag_end + 1);
    return threshold_value(std::string{content.substr(0, content.find('<'))}.c_str());
}

} // namespace

BoardThresholds parse_board_thresholds(std::string_view xml)
{
    BoardThresholds thresholds{};
    Thresholds *selected = thresholds.data();
    while (!xml.empty()) {
        const std::string_view line = next_line(xml);
        const auto has = [line](std::string_view text) { return line.find(text) != line.npos; };
        if (has("<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>") || has("</threshold>"))
            break;
        if (const auto tag = std::ranges::find_if(element_tags, has); tag != element_tags.end())
            selected = &thresholds[static_cast<std::size_t>(tag - element_tags.begin())];
        if (has("<alarm-threshold>"))
            selected->alarm = value_of_element(line);
        if (has("<clear-threshold>"))
            selected->clear = value_of_element(line);
    }
    return thresholds;
}

bool is_threshold_word(std::string_view word) noexcept
{
    const auto is_known = [](char c) { return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+'; };
    const auto at_most_one = [word](char c) { return std::ranges::count(word, c) <= 1; };
    return std::ranges::all_of(word, is_known) && at_most_one('.') && at_most_one('-') && at_most_one('+');
}

float threshold_value(const char *text) noexcept
{
    return static_cast<float>(std::strtod(text, nullptr));
}

float value_from_tenths(int tenths) noexcept
{
    char text[32];
    std::snprintf(text, sizeof text, "%d.%d", tenths / 10, std::abs(tenths % 10));
    return threshold_value(text);
}

} // namespace diagd
