// SPDX-License-Identifier: GPL-2.0-or-later
// From the kernel's text about processors and memory to percentages.  Pure: no file, no clock.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace diagd {

// Clock ticks of all processors since boot.
struct CpuTimes {
    std::uint64_t total;
    std::uint64_t idle;
};

// From the first line of /proc/stat: "cpu", then user, nice, system, idle, iowait, irq, softirq and steal, of
// which the last four may be missing.  Nothing when it is no such line.
[[nodiscard]] std::optional<CpuTimes> parse_cpu_times(const char *line) noexcept;

// Busy share between two samples in per cent.  The idle share is cut, not rounded, to one decimal.
[[nodiscard]] float cpu_usage_percent(const CpuTimes &first, const CpuTimes &second) noexcept;

// The number of a line of /proc/meminfo, kB: the first ten characters of its second word.  0 when there is
// none.
[[nodiscard]] std::int64_t parse_meminfo_kb(std::string_view line) noexcept;

// Not guarded against a total of 0, which gives no number.
[[nodiscard]] float memory_usage_percent(std::int64_t total_kb, std::int64_t free_kb) noexcept;

// A percentage cut to a whole one; 0 for what is no number or out of range.
[[nodiscard]] int whole_percent(float percent) noexcept;

} // namespace diagd
