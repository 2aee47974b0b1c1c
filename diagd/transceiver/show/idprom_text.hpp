// SPDX-License-Identifier: GPL-2.0-or-later
// Text displays of a module's identification.
#pragma once

#include "diagd/transceiver/memory/idprom.hpp"

#include <cstdint>
#include <span>
#include <string>

namespace diagd {

[[nodiscard]] std::string idprom_text(const Idprom &idprom, IdpromScope scope);

// Bytes in hexadecimal, ten to a line; a line is labelled with its number, not with an offset.
[[nodiscard]] std::string dump_text(std::span<const std::uint8_t> bytes);

} // namespace diagd
