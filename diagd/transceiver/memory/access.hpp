// SPDX-License-Identifier: GPL-2.0-or-later
// Access to the memory of pluggable optical modules, and what its code bytes mean.
//
// Every function that takes a handle works on the module whose channel is selected on that CPLD handle.  None
// of them locks, opens or selects anything: the caller holds the board's semaphore from before it opened the
// CPLD until after it closed it, because other processes share the bus.
//
// Addresses are 7-bit device addresses, registers the byte numbers of SFF-8472 (A0h/A2h pages) and SFF-8636.
#pragma once

#include "diagd/transceiver/decode/optical_values.hpp"

#include <array>
#include <cstddef>
#include <cstdint>

// Non-zero: failed module accesses are reported on standard output.
extern "C" std::uint8_t transceiver_debug;

extern "C" {

// One, two or four bytes in one transaction, without a retry.  The byte at the lowest register comes first,
// in the least significant 8 bits; module numbers are big-endian, so callers swap.  0 when the read failed.
std::uint8_t transceiver_read_byte(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept;
std::uint16_t transceiver_read_word(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept;
std::uint32_t transceiver_read_dword(std::uint32_t handle, std::uint8_t address, std::uint8_t reg) noexcept;

// `length` bytes from `first` on, each in a transaction of its own: a byte that fails is 0 and costs no
// other. Always 0.
int transceiver_read_block(std::uint32_t handle, std::uint8_t address, std::uint8_t first, std::uint8_t *data,
                           std::int32_t length) noexcept;

// The platform's result, negative on failure.
int transceiver_write_byte(std::uint32_t handle, std::uint8_t address, std::uint8_t reg,
                           std::uint8_t value) noexcept;

// Two bytes or more, one transaction each, registers counted modulo 256; a failed byte does not stop the
// rest. Low 8 bits of the last write's result.  Of a length of 0 or 1 nothing is written and 0 returned:
// single bytes go through transceiver_write_byte.
int transceiver_write_data(std::uint32_t handle, std::uint8_t address, std::uint8_t first,
                           const std::uint8_t *data, std::uint8_t length) noexcept;

// Maps upper page `page` of an SFF-8636 module into bytes 128-255.  Always 0.
int sff_8636_page_select(std::uint32_t handle, std::uint8_t page) noexcept;

// Ethernet compliance text of the selected module, cut to `size`.  0, or -1 with `text` untouched when the
// identifier is of no family decoded here.
int transceiver_type_get(std::uint32_t handle, char *text, std::size_t size) noexcept;

// Chooses whose received signal strength the module reports: A2h byte 118 bit 7, set for the GPON receiver's,
// else the XG-PON one's.  Always 0.
int transceiver_rssi_select_set(std::uint32_t handle, std::uint8_t select) noexcept;

std::uint8_t transceiver_debug_get(void) noexcept;
int transceiver_debug_set(std::uint8_t on) noexcept; // always 0

// Texts of code bytes.  A code without a text gives "N/A (code)" in a buffer that belongs to that function
// alone and holds until its next miss; main thread only.
const char *transceiver_identifier_str(std::int32_t code) noexcept;
const char *connector_str(std::int32_t code) noexcept;
const char *sff_8472_encoding_str(std::uint32_t code) noexcept;
const char *sff_8636_encoding_str(std::uint32_t code) noexcept;
// `codes`: the 8 bytes A0h 3-10; `extended`: A0h 36.
const char *sff_8472_ethernet_compliance_str(const std::uint8_t *codes, std::uint8_t extended) noexcept;
// `code`: SFF-8636 byte 131; `extended`: byte 192, or -1 when byte 131 does not refer to it.
const char *ethernet_compliance_str(std::uint32_t code, std::int32_t extended) noexcept;

} // extern "C"

namespace diagd {

// One byte, for callers that report failures: the platform's result, negative on failure, with `value` 0
// then.
int read_checked(std::uint32_t handle, std::uint8_t address, std::uint8_t reg, std::uint8_t &value) noexcept;

// transceiver_read_block into an array.
template <std::size_t N>
[[nodiscard]] std::array<std::uint8_t, N> read_block(std::uint32_t handle, std::uint8_t address,
                                                     std::uint8_t first) noexcept
{
    std::array<std::uint8_t, N> bytes{};
    transceiver_read_block(handle, address, first, bytes.data(), N);
    return bytes;
}

} // namespace diagd
