// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the modules of all interfaces (see module_listing.hpp).
//
// Failure policy: a cage that is empty or cannot be reached is listed without a module; bytes that cannot
// be read are 0.  Nothing is retried.
#include "diagd/transceiver/memory/module_listing.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/memory_map.hpp"

#include <algorithm>

namespace diagd {

namespace {

std::string read_text(std::uint32_t handle, MemoryField field)
{
    std::vector<std::uint8_t> bytes(field.length);
    transceiver_read_block(handle, first_path.id, field.first, bytes.data(), field.length);
    return {bytes.begin(), std::ranges::find(bytes, std::uint8_t{0})};
}

ModuleIdentity read_sfp_identity(std::uint32_t handle)
{
    ModuleIdentity identity;
    identity.vendor_name = read_text(handle, sff8472::idprom.vendor_name);
    identity.vendor_revision = read_text(handle, sff8472::idprom.revision);
    identity.vendor_serial_number = read_text(handle, sff8472::idprom.serial_number);
    return identity;
}

// In upper page 00h.
ModuleIdentity read_qsfp_identity(std::uint32_t handle)
{
    ModuleIdentity identity;
    sff_8636_page_select(handle, 0);
    identity.vendor_serial_number = read_text(handle, sff8636::idprom.serial_number);
    identity.vendor_revision = read_text(handle, sff8636::idprom.revision);
    identity.vendor_name = read_text(handle, sff8636::idprom.vendor_name);
    sff_8636_page_select(handle, 0);
    return identity;
}

SfpReading read_sfp(std::uint32_t handle, ReadScope scope)
{
    SfpReading reading{};
    if (scope == ReadScope::family)
        return reading;
    if (scope == ReadScope::values_and_identity)
        reading.identity = read_sfp_identity(handle);

    reading.first = read_path(handle, first_path, listing_policy);
    // A module with one path does not answer at the second address.
    if (const std::uint16_t wavelength_nm = read_wavelength_nm(handle, second_path.id); wavelength_nm != 0)
        reading.second = {wavelength_nm,
                          read_path_values(handle, second_path, wavelength_nm, listing_policy)};
    return reading;
}

QsfpReading read_qsfp(std::uint32_t handle, ReadScope scope)
{
    QsfpReading reading{};
    if (scope == ReadScope::family)
        return reading;
    if (scope == ReadScope::values_and_identity)
        reading.identity = read_qsfp_identity(handle);

    reading.temperature_c = read_sff8636_temperature_c(handle);
    reading.voltage_v = read_sff8636_voltage_v(handle);
    read_sff8636_bias_ma(handle, reading.bias_ma);
    read_sff8636_tx_power_dbm(handle, reading.tx_power_dbm);
    read_sff8636_rx_power_dbm(handle, reading.rx_power_dbm);
    if (scope == ReadScope::values_and_identity)
        reading.wavelength_word = transceiver_read_word(handle, first_path.id, sff8636::idprom.wavelength);
    return reading;
}

InterfaceReading read_interface(const BoardSession &board, const Interface &interface, ReadScope scope)
{
    InterfaceReading reading{interface, {}};
    const ModuleSession module{board, interface.kind, interface.port};
    if (!module)
        return reading;
    switch (module_family(transceiver_read_byte(module.handle(), first_path.id, identifier_byte))) {
    case ModuleFamily::sff8472:
        reading.module = read_sfp(module.handle(), scope);
        break;
    case ModuleFamily::sff8636:
        reading.module = read_qsfp(module.handle(), scope);
        break;
    case ModuleFamily::unsupported:
        break;
    }
    return reading;
}

} // namespace

std::optional<std::vector<InterfaceReading>> read_module_listing(const char *reason, ReadScope scope)
{
    const BoardSession board{reason, SessionPolicy::lower_then_release};
    if (!board)
        return std::nullopt;
    std::vector<InterfaceReading> listing;
    for (const Interface &interface : list_interfaces())
        listing.push_back(read_interface(board, interface, scope));
    return listing;
}

} // namespace diagd
