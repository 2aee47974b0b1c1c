// SPDX-License-Identifier: GPL-2.0-or-later
// Vendor texts (see vendor_text.hpp).
#include "diagd/transceiver/decode/vendor_text.hpp"

#include "base/utf8.hpp"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace diagd {

std::string vendor_text(std::span<const std::uint8_t> field)
{
    const std::string bytes(field.begin(), std::ranges::find(field, std::uint8_t{0}));
    std::string text;
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t length = base::utf8_length(rest);
        text += length == 0 ? "\xEF\xBF\xBD" : rest.substr(0, length); // U+FFFD for what is none
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

} // namespace diagd
