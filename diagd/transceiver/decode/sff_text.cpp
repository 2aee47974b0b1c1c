// SPDX-License-Identifier: GPL-2.0-or-later
// Texts of module code bytes (see memory/access.hpp).
#include "diagd/transceiver/decode/sff_tables.hpp"
#include "diagd/transceiver/memory/access.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

using namespace diagd;

namespace {

// Holds the text of a code that no table knows, until the next one.
class FallbackText {
public:
    const char *refill(std::int32_t code) noexcept
    {
        text_.fill('\0');
        std::snprintf(text_.data(), text_.size(), "N/A (%d)", code); // longer numbers are cut
        return text_.data();
    }

private:
    std::array<char, 14> text_{};
};

const char *find(std::span<const SffText> table, std::int32_t code) noexcept
{
    const auto row = std::ranges::find(table, code, &SffText::code);
    return row == table.end() ? nullptr : row->text;
}

const char *text_or(FallbackText &fallback, std::span<const SffText> table, std::int32_t code) noexcept
{
    const char *text = find(table, code);
    return text != nullptr ? text : fallback.refill(code);
}

} // namespace

const char *transceiver_identifier_str(std::int32_t code) noexcept
{
    static constinit FallbackText fallback;
    return text_or(fallback, identifier_table, code);
}

const char *connector_str(std::int32_t code) noexcept
{
    static constinit FallbackText fallback;
    return text_or(fallback, connector_table, code);
}

const char *sff_8472_encoding_str(std::uint32_t code) noexcept
{
    static constinit FallbackText fallback;
    return text_or(fallback, sff8472_encoding_table, static_cast<std::int32_t>(code));
}

const char *sff_8636_encoding_str(std::uint32_t code) noexcept
{
    static constinit FallbackText fallback;
    return text_or(fallback, sff8636_encoding_table, static_cast<std::int32_t>(code));
}

const char *sff_8472_ethernet_compliance_str(const std::uint8_t *codes, std::uint8_t extended) noexcept
{
    static constinit FallbackText fallback;
    const std::int32_t ten_gigabit = codes[0] & 0xF0; // A0h byte 3; its lower nibble is InfiniBand
    const char *text = nullptr;
    if (extended != 0) {
        // Compared with the nibble of byte 3 and not with byte 36, so that no 25G text is ever given: users
        // of this text know 25G modules by their N/A.
        text = find(sfp_25g_table, ten_gigabit);
    } else if (ten_gigabit == 0) {
        return text_or(fallback, sfp_1g_table, codes[3]); // A0h byte 6
    } else {
        text = find(sfp_10g_table, ten_gigabit);
    }
    return text != nullptr ? text : fallback.refill(codes[0]);
}

const char *ethernet_compliance_str(std::uint32_t code, std::int32_t extended) noexcept
{
    static constinit FallbackText fallback;
    if (extended != -1)
        return text_or(fallback, qsfp_extended_table, extended);
    return text_or(fallback, qsfp_compliance_table, static_cast<std::int32_t>(code));
}
