// SPDX-License-Identifier: GPL-2.0-or-later
// What the fuzz targets share: the bytes that they are given, and the end of a run whose result is wrong.
#pragma once

#include "base/printable.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

// Called by libFuzzer with one input after the other; 0 always.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace fuzz {

// The sanitizers tell what is undefined; this tells what is wrong.
inline void expect(bool holds, const char *what) noexcept
{
    if (holds)
        return;
    std::fprintf(stderr, "fuzz: not so: %s\n", what);
    std::abort();
}

inline std::string_view as_text(const std::uint8_t *data, std::size_t size) noexcept
{
    return {reinterpret_cast<const char *>(data), size};
}

// Takes the input apart from its front; an end that comes too early reads as 0 and as nothing.
class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) noexcept : rest_(data, size) {}

    [[nodiscard]] bool empty() const noexcept { return rest_.empty(); }
    std::span<const std::uint8_t> take(std::size_t size) noexcept
    {
        const auto taken = rest_.first(std::min(size, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    std::uint8_t u8() noexcept
    {
        const auto byte = take(1);
        return byte.empty() ? std::uint8_t{0} : byte[0];
    }
    std::uint16_t u16() noexcept
    {
        const unsigned high = u8();
        return static_cast<std::uint16_t>(high << 8 | u8());
    }
    std::uint32_t u32() noexcept
    {
        const std::uint32_t high = u16();
        return high << 16 | u16();
    }
    // Up to the next zero byte, which is passed over.
    std::string_view word() noexcept
    {
        const std::string_view all = as_text(rest_.data(), rest_.size());
        const std::string_view found = all.substr(0, all.find('\0'));
        take(found.size() + 1);
        return found;
    }
    std::string_view rest() noexcept
    {
        const auto all = take(rest_.size());
        return as_text(all.data(), all.size());
    }

private:
    std::span<const std::uint8_t> rest_;
};

// A terminal obeys nothing of it but the ends of its lines.
inline void expect_harmless(std::string_view shown) noexcept
{
    while (!shown.empty()) {
        const base::Character next = base::first_character(shown);
        const bool is_line_end = shown[0] == '\n' || shown[0] == '\r';
        expect(!next.is_obeyed || is_line_end, "what is shown holds nothing that a terminal obeys");
        shown.remove_prefix(next.size);
    }
}

} // namespace fuzz
