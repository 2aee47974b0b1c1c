// SPDX-License-Identifier: GPL-2.0-or-later
// Codes that all module standards share (SFF-8024), and their names.
#pragma once

#include <cstdint>
#include <string_view>

#include "optics/model.hpp"

namespace optics {

// How a memory that begins with this identifier is laid out (table 4-1).
enum class Layout : std::uint8_t {
    sff8472,
    sff8636,
    cmis,
    other,    // a standard of its own that is not decoded
    reserved, // no module is known by it
};
Layout layout_of(std::uint8_t identifier);

// Names; "reserved" or "vendor specific" for codes without one.
std::string_view identifier_name(std::uint8_t code);              // table 4-1
std::string_view encoding_name(std::uint8_t code, Family family); // table 4-2: two codes differ by standard
std::string_view connector_name(std::uint8_t code);               // table 4-3
std::string_view ext_compliance_name(std::uint8_t code);          // table 4-4

} // namespace optics
