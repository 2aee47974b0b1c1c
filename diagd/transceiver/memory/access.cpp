// SPDX-License-Identifier: GPL-2.0-or-later
// Access to module memory over the board's I2C bus (see access.hpp).
//
// Failure policy: a read that fails is 0, a write that fails is passed over; with transceiver_debug on, each
// failure is one line on standard output.  There is no retry: whoever polls comes again.
#include "diagd/transceiver/memory/access.hpp"

#include "diagd/transceiver/memory/memory_map.hpp"
#include "diagd/transceiver/memory/rssi_txdis.hpp"

#include "util_i2c.h"

#include <array>
#include <cstdio>

using namespace diagd;

std::uint8_t transceiver_debug = 0;

namespace {

void report_failure(std::uint8_t address, std::uint8_t reg, int result) noexcept
{
    if (result < 0 && transceiver_debug != 0)
        std::printf("i2c access slave addr 0x%x register 0x%x failed, ret %d\r\n", address, reg, result);
}

template <std::size_t N>
int read(std::uint32_t handle, std::uint8_t address, std::uint8_t reg,
         std::array<std::uint8_t, N> &bytes) noexcept
{
    bytes = {};
    const int result = misc_i2c_read(static_cast<int>(handle), address, reg, bytes.data(), N, 0);
    report_failure(address, reg, result);
    return result;
}

template <std::size_t N>
std::array<std::uint8_t, N> read(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept
{
    std::array<std::uint8_t, N> bytes;
    read(handle, address, reg, bytes);
    return bytes;
}

int write(std::uint32_t handle, std::uint8_t address, std::uint8_t reg, std::uint8_t value) noexcept
{
    return misc_i2c_write(static_cast<int>(handle), address, reg, &value, 1, 0);
}

} // namespace

std::uint8_t transceiver_read_byte(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept
{
    return read<1>(handle, address, reg)[0];
}

int diagd::read_checked(std::uint32_t handle, std::uint8_t address, std::uint8_t reg,
                        std::uint8_t &value) noexcept
{
    std::array<std::uint8_t, 1> byte;
    const int result = read(handle, address, reg, byte);
    value = byte[0];
    return result;
}

std::uint16_t transceiver_read_word(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept
{
    const auto bytes = read<2>(handle, address, reg);
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

std::uint32_t transceiver_read_dword(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept
{
    const auto bytes = read<4>(handle, address, reg);
    return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 | static_cast<std::uint32_t>(bytes[2]) << 16 |
           static_cast<std::uint32_t>(bytes[3]) << 24;
}

int transceiver_read_block(std::uint32_t handle, std::uint8_t address, std::uint8_t first, std::uint8_t *data,
                           std::int32_t length) noexcept
{
    // In 32 bits, so that a length which wraps reads nothing.
    const auto end = static_cast<std::int32_t>(first + static_cast<std::uint32_t>(length));
    for (std::int32_t reg = first; reg < end; ++reg)
        data[reg - first] = transceiver_read_byte(handle, address, static_cast<std::uint8_t>(reg));
    return 0;
}

int transceiver_write_byte(std::uint32_t handle, std::uint8_t address, std::uint8_t reg,
                           std::uint8_t value) noexcept
{
    const int result = write(handle, address, reg, value);
    report_failure(address, reg, result);
    return result;
}

int transceiver_write_data(std::uint32_t handle, std::uint8_t address, std::uint8_t first,
                           const std::uint8_t *data, std::uint8_t length) noexcept
{
    if (length <= 1)
        return 0;
    int result = 0;
    for (unsigned i = 0; i < length; ++i) {
        result = write(handle, address, static_cast<std::uint8_t>(first + i), data[i]);
        report_failure(address, first, result); // the block is known by its first register
    }
    return result & 0xFF;
}

int sff_8636_page_select(std::uint32_t handle, std::uint8_t page) noexcept
{
    transceiver_write_byte(handle, first_path.id, sff8636::page_select, page);
    return 0;
}

int transceiver_type_get(std::uint32_t handle, char *text, std::size_t size) noexcept
{
    const char *type = nullptr;
    switch (module_family(transceiver_read_byte(handle, first_path.id, identifier_byte))) {
    case ModuleFamily::sff8472: {
        const auto codes = read_block<sff8472::idprom.compliance.length>(handle, first_path.id,
                                                                         sff8472::idprom.compliance.first);
        type = sff_8472_ethernet_compliance_str(
            codes.data(), transceiver_read_byte(handle, first_path.id, sff8472::idprom.extended_compliance));
        break;
    }
    case ModuleFamily::sff8636: {
        // Page 00h is mapped after a module's reset; whichever is mapped now is taken.
        const std::uint32_t code =
            transceiver_read_byte(handle, first_path.id, sff8636::idprom.compliance.first);
        const std::int32_t extended =
            code == sff8636::see_extended_compliance
                ? transceiver_read_byte(handle, first_path.id, sff8636::idprom.extended_compliance)
                : -1;
        type = ethernet_compliance_str(code, extended);
        break;
    }
    case ModuleFamily::unsupported:
        return -1;
    }
    std::snprintf(text, size, "%s", type);
    return 0;
}

int transceiver_rssi_select_set(std::uint32_t handle, std::uint8_t select) noexcept
{
    write_extended_control_bit(handle, sff8472::gpon_rssi_bit, select != 0);
    return 0;
}

std::uint8_t transceiver_debug_get(void) noexcept
{
    return transceiver_debug;
}

int transceiver_debug_set(std::uint8_t on) noexcept
{
    transceiver_debug = on;
    return 0;
}
