// SPDX-License-Identifier: GPL-2.0-or-later
// The inventory memory of a replaceable unit: header and board area of the "IPMI Platform Management FRU
// Information Storage Definition" v1.0.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "platform/description/board_description.hpp"

namespace sim {

using Memory = std::array<std::uint8_t, 256>;

// The rest of the memory is 0xff, as it is when nothing was written.
Memory encode_fru(const board::Fru &fru);
// Empty when the memory holds none, or a check sum is wrong.
std::optional<board::Fru> decode_fru(const Memory &memory);

} // namespace sim
