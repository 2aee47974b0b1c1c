// SPDX-License-Identifier: GPL-2.0-or-later
// Check codes: the low byte of the sum of a range of memory.
#pragma once

#include <cstring>

#include "optics/memory.hpp"
#include "optics/model.hpp"

namespace optics {

// A range that is summed up, and where its code stands.
struct CheckedRange {
    std::string_view name;
    std::size_t first, last; // inclusive
    std::size_t code;
};

struct Sum {
    std::uint8_t low_byte;
    bool all_zero;
};

// Eight bytes at a time: their odd and even ones are added up in four 16-bit fields, which hold the sums of
// 2048 bytes.
inline Sum sum_of(Bytes bytes)
{
    constexpr std::uint64_t low_bytes = 0x00ff00ff00ff00ff;
    std::uint64_t sums = 0;
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t eight;
        std::memcpy(&eight, bytes.data() + i, sizeof eight);
        seen |= eight;
        sums += (eight & low_bytes) + (eight >> 8 & low_bytes);
    }
    std::uint64_t total = (sums & 0xffff) + (sums >> 16 & 0xffff) + (sums >> 32 & 0xffff) + (sums >> 48);
    for (; i < bytes.size(); ++i) {
        total += bytes[i];
        seen |= bytes[i];
    }
    return {static_cast<std::uint8_t>(total), seen == 0};
}

// All zeros passes every sum and counts as failed: nothing was ever written there.  `result` is a fresh one.
inline void check(const Page &page, const CheckedRange &range, Check &result)
{
    result.name = range.name;
    const std::size_t count = range.last - range.first + 1;
    if (!page.has(range.first, count) || !page.has(range.code))
        return;
    const Sum sum = sum_of(page.range(range.first, count));
    result.computed = sum.low_byte;
    result.stored = page.u8(range.code);
    const bool good = result.computed == result.stored && !(sum.all_zero && result.stored == 0);
    result.result = good ? Check::Result::good : Check::Result::bad;
}

inline void add_check(const Page &page, const CheckedRange &range, Module &module)
{
    Check &added = module.checks[module.check_count++];
    check(page, range, added);
    module.doubts.check_failed |= added.result == Check::Result::bad;
    module.doubts.check_missing |= added.result == Check::Result::not_read;
}

} // namespace optics
