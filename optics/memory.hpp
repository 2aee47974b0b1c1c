// SPDX-License-Identifier: GPL-2.0-or-later
// What has been read of a module's memory, and access to it by the byte numbers of the standards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace optics {

using Bytes = std::span<const std::uint8_t>;

// Parts that were read; what was not, or did not answer, is empty.  A part may end early: what is beyond its
// end counts as not read, never as zero.
struct Memory {
    // SFF-8472: the 256 bytes at 0x50 and at 0x51.
    Bytes a0, a2;
    // SFF-8636 and CMIS: lower memory and upper pages, 128 bytes each; CMIS pages are those of bank 0.
    Bytes lower, page00, page01, page02, page03, page11;
};

// One part, its bytes numbered as in the standard: lower memory and A0h/A2h from 0, upper pages from 128.
class Page {
public:
    explicit Page(Bytes bytes, std::size_t first = 0) : bytes_(bytes), first_(first) {}

    [[nodiscard]] bool empty() const { return bytes_.empty(); }
    [[nodiscard]] bool has(std::size_t byte, std::size_t count = 1) const
    {
        return byte - first_ + count <= bytes_.size();
    }
    // 0 where nothing was read: callers to whom that makes a difference ask has().
    [[nodiscard]] std::uint8_t u8(std::size_t byte) const { return has(byte) ? bytes_[byte - first_] : 0; }
    [[nodiscard]] bool bit(std::size_t byte, unsigned number) const { return (u8(byte) >> number & 1) != 0; }
    // Words are big-endian.
    [[nodiscard]] std::uint16_t u16(std::size_t byte) const
    {
        if (!has(byte, 2))
            return 0;
        const std::uint8_t *at = &bytes_[byte - first_];
        return static_cast<std::uint16_t>(at[0] << 8 | at[1]);
    }
    [[nodiscard]] std::int16_t s16(std::size_t byte) const { return static_cast<std::int16_t>(u16(byte)); }
    // As much of the range as was read.
    [[nodiscard]] Bytes range(std::size_t byte, std::size_t count) const
    {
        const std::size_t at = byte - first_;
        return at >= bytes_.size()
                   ? Bytes{}
                   : bytes_.subspan(at, at + count <= bytes_.size() ? count : bytes_.size() - at);
    }

private:
    Bytes bytes_;
    std::size_t first_;
};

inline constexpr std::size_t upper = 128; // number of the first byte of an upper page

} // namespace optics
