// SPDX-License-Identifier: GPL-2.0-or-later
// /proc/stat and /proc/meminfo.  Input: two lines of the one, two of the other, each ended by a zero byte.
#include "diagd/system_cli/usage_parser.hpp"
#include "tests/fuzz/fuzz.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const auto first = diagd::parse_cpu_times(std::string(input.word()).c_str());
    const auto second = diagd::parse_cpu_times(std::string(input.word()).c_str());
    if (first && second) {
        const float percent = diagd::cpu_usage_percent(*first, *second);
        fuzz::expect(percent >= 0 && percent <= 100, "a usage is from 0 to 100 per cent");
        static_cast<void>(diagd::whole_percent(percent));
    }
    const std::int64_t total = diagd::parse_meminfo_kb(input.word());
    const std::int64_t free = diagd::parse_meminfo_kb(input.word());
    static_cast<void>(diagd::whole_percent(diagd::memory_usage_percent(total, free)));
    return 0;
}
