// SPDX-License-Identifier: GPL-2.0-or-later
// What the modules of all interfaces report: read once, shown as text or as JSON.
#pragma once

#include "diagd/board/interface.hpp"
#include "diagd/transceiver/memory/diagnostics.hpp"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace diagd {

// Bytes of the module up to the first zero byte, padding included.
struct ModuleIdentity {
    std::string vendor_name, vendor_revision, vendor_serial_number;
};

struct SfpReading {
    ModuleIdentity identity;
    PathReading first;
    std::optional<PathReading> second; // combo modules only
};

struct QsfpReading {
    ModuleIdentity identity;
    float temperature_c;
    float voltage_v;
    Lanes bias_ma, tx_power_dbm, rx_power_dbm;
    std::uint16_t wavelength_word; // bytes 186-187, byte 186 in the low half
};

struct InterfaceReading {
    Interface interface;
    // No alternative: no module, one that cannot be reached, or one of a family not decoded here.
    std::variant<std::monostate, SfpReading, QsfpReading> module;
};

enum class ReadScope {
    family,              // only which alternative it is
    values,              // all but identity and wavelength_word
    values_and_identity, // everything
};

// Reads every interface of the board, PON before gigabit Ethernet, in one session with the board: the
// semaphore is held for as long as that takes.  Empty when the CPLD cannot be opened.  `reason` is the
// literal that names the operation for the privilege raise.
[[nodiscard]] std::optional<std::vector<InterfaceReading>> read_module_listing(const char *reason,
                                                                               ReadScope scope);

} // namespace diagd
