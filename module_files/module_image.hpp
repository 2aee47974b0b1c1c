// SPDX-License-Identifier: GPL-2.0-or-later
// Memory of one pluggable module, as its two-wire interface shows it, and its text form (what boardctl
// hands to boardsim and what the state folder keeps).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace module_files {

// One line that says what is wrong with an image, a dump or a description.
struct ModuleError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Half = std::array<std::uint8_t, 128>;

// The 256 bytes behind one 7-bit address: lower memory, and the page that byte 127 selects above it.  Flat
// devices (A0h of SFF-8472) have page 0 only and an ordinary byte 127.
struct ModuleDevice {
    bool paged = false;
    Half lower{};
    std::map<std::uint8_t, Half> pages{{0, Half{}}};

    // Byte `reg`; the page of a byte above 127 is the selected one, page 0 where that is missing.
    [[nodiscard]] std::uint8_t read(std::uint8_t reg) const;
    // Selecting a page that is not there selects page 0, as SFF-8636 asks for.
    void write(std::uint8_t reg, std::uint8_t value);
};

// Addresses of SFF-8472: identification and diagnostics, and the same of a combo module's second path.
// SFF-8636 modules answer at `address_a0` only.
inline constexpr std::uint8_t address_a0 = 0x50;
inline constexpr std::uint8_t address_a2 = 0x51;
inline constexpr std::uint8_t address_b0 = 0x58;
inline constexpr std::uint8_t address_b2 = 0x59;

struct ModuleImage {
    std::string name;
    std::map<std::uint8_t, ModuleDevice> devices;
};

// Identifiers of SFF-8636 memories (SFF-8024 codes of the QSFP family).
bool is_qsfp_identifier(std::uint8_t identifier);

std::string to_text(const ModuleImage &image);
// Throws ModuleError.
ModuleImage image_from_text(std::string_view text);

// Value of two hexadecimal digits, or -1.
int hex_byte(std::string_view two_digits);
// Bytes of two digits each, as an operator types them.  Throws std::invalid_argument.
std::vector<std::uint8_t> parse_bytes(const std::string &digits);

} // namespace module_files
