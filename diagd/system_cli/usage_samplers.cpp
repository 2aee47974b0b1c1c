// SPDX-License-Identifier: GPL-2.0-or-later
// Samplers over the kernel's proc files.
// Failure policy: processor counters that cannot be read are reported to the caller; memory figures that
// cannot be read are said on the daemon's streams and count as 0.
#include "diagd/system_cli/usage_samplers.hpp"

#include "base/owner.hpp"
#include "diagd/system_cli/usage_parser.hpp"

#include <array>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

constexpr std::chrono::milliseconds sample_time{50};

std::optional<diagd::CpuTimes> read_cpu_times() noexcept
{
    const base::File file{std::fopen("/proc/stat", "re")};
    std::array<char, 448> line;
    if (!file || std::fgets(line.data(), line.size(), file.get()) == nullptr)
        return std::nullopt;
    return diagd::parse_cpu_times(line.data());
}

// `row` counts from 1.
std::int64_t read_meminfo_kb(int row) noexcept
{
    const base::File file{std::fopen("/proc/meminfo", "re")};
    if (!file) {
        std::perror("open fail\n");
        return 0;
    }
    std::array<char, 1024> line;
    for (int at = 0; at < row; ++at) {
        if (std::fgets(line.data(), line.size(), file.get()) == nullptr) {
            std::puts("Row is out of the file range");
            return 0;
        }
    }
    std::string_view text{line.data()};
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    return diagd::parse_meminfo_kb(text);
}

} // namespace

int get_cpu_usage(struct vty *, float *percent) noexcept
{
    const std::optional<diagd::CpuTimes> first = read_cpu_times();
    if (!first)
        return -1;
    std::this_thread::sleep_for(sample_time);
    const std::optional<diagd::CpuTimes> second = read_cpu_times();
    if (!second)
        return -1;
    *percent = diagd::cpu_usage_percent(*first, *second);
    return 0;
}

int system_memory_usage_get(float *percent) noexcept
{
    constexpr int total_row = 1;
    constexpr int free_row = 2; // MemFree, not MemAvailable: page cache is used memory
    const std::int64_t total_kb = read_meminfo_kb(total_row);
    const std::int64_t free_kb = read_meminfo_kb(free_row);
    *percent = diagd::memory_usage_percent(total_kb, free_kb);
    return 0;
}
