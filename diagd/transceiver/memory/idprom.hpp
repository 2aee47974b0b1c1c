// SPDX-License-Identifier: GPL-2.0-or-later
// The identification of one module: who made it, what it is, and a piece of its memory as it stands.
#pragma once

#include "diagd/transceiver/decode/optical_values.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace diagd {

enum class IdpromScope {
    all,
    vendor,      // name, OUI, part number, revision, serial number
    manufacture, // serial number, date, vendor's name
};

inline constexpr std::size_t idprom_compliance_bytes = 8;
inline constexpr std::size_t idprom_dump_bytes = 120;

struct GeneralInformation {
    std::uint8_t identifier, connector;
    std::uint16_t wavelength_nm;
    std::array<std::uint8_t, idprom_compliance_bytes> compliance;
    std::int32_t extended_compliance; // -1: an SFF-8636 module whose compliance bytes do not refer to it
    std::vector<std::uint8_t> distance;
    std::uint8_t monitoring, encoding, bit_rate;
};

// Texts are the bytes of the module up to the first zero byte, padding included.
struct Idprom {
    ModuleFamily family; // of the two that are decoded
    GeneralInformation general;
    std::string vendor_name, part_number, revision, serial_number;
    std::array<std::uint8_t, 3> vendor_oui;
    std::string date_code; // year (two digits), month, day, lot
    // From register 128 on: A2h of SFF-8472, page 00h of SFF-8636.
    std::array<std::uint8_t, idprom_dump_bytes> dump;
};

// Reads what `scope` shows, and no more, of the module that is selected on a CPLD handle; a byte that cannot
// be read is 0.  Empty when the module is of no family decoded here.
[[nodiscard]] std::optional<Idprom> read_idprom(std::uint32_t handle, IdpromScope scope);

} // namespace diagd
