// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/system_cli/usage_parser.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>

namespace diagd {

std::optional<CpuTimes> parse_cpu_times(const char *line) noexcept
{
    constexpr std::size_t required = 4; // up to idle
    std::array<std::uint64_t, 8> ticks{};
    std::string_view rest = line;
    if (!rest.starts_with("cp"))
        return std::nullopt;
    rest.remove_prefix(std::min(rest.find(' '), rest.size()));
    std::size_t count = 0;
    while (count < ticks.size()) {
        rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
        const auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), ticks[count]);
        if (failure != std::errc{})
            break;
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        ++count;
    }
    if (count < required)
        return std::nullopt;
    return CpuTimes{std::accumulate(ticks.begin(), ticks.end(), std::uint64_t{0}), ticks[3]};
}

// The 32-bit difference also covers a counter that wrapped or went back: the processors then count as idle.
float cpu_usage_percent(const CpuTimes &first, const CpuTimes &second) noexcept
{
    const std::uint32_t total = std::max(static_cast<std::uint32_t>(second.total - first.total), 1U);
    const auto idle = static_cast<std::uint32_t>(second.idle - first.idle);
    if (idle >= total)
        return 0.0F;
    const std::uint32_t tenths = idle * 1000U / total;
    const auto digit = [](std::uint32_t value) { return static_cast<char>('0' + value % 10); };
    // The share as it would be shown; its decimal value is what counts, not the binary fraction.
    const char shown[] = {tenths >= 100 ? digit(tenths / 100) : ' ', digit(tenths / 10), '.', digit(tenths),
                          '\0'};
    return static_cast<float>(100.0 - std::strtod(shown, nullptr));
}

std::int64_t parse_meminfo_kb(std::string_view line) noexcept
{
    constexpr std::size_t longest = 10;
    const auto skip = [&line](bool blanks) {
        const std::size_t end = blanks ? line.find_first_not_of(' ') : line.find(' ');
        line.remove_prefix(std::min(end, line.size()));
    };
    skip(true);
    skip(false);
    skip(true);
    const std::string_view word = line.substr(0, std::min(line.find(' '), longest));
    std::int64_t kb = 0;
    std::from_chars(word.data(), word.data() + word.size(), kb);
    return kb;
}

float memory_usage_percent(std::int64_t total_kb, std::int64_t free_kb) noexcept
{
    return static_cast<float>(total_kb - free_kb) / static_cast<float>(total_kb) * 100.0F;
}

int whole_percent(float percent) noexcept
{
    constexpr auto limit = static_cast<float>(std::numeric_limits<int>::max());
    return std::abs(percent) < limit ? static_cast<int>(percent)
                                     : 0; // no comparison holds for what is no number
}

} // namespace diagd
