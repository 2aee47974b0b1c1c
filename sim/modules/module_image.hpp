// SPDX-License-Identifier: GPL-2.0-or-later
// The memories that the simulator plugs are those that dumps of real modules are read into.
#pragma once

#include "module_files/module_image.hpp"

namespace sim {

using module_files::address_a0;
using module_files::address_a2;
using module_files::address_b0;
using module_files::address_b2;
using module_files::Half;
using module_files::hex_byte;
using module_files::image_from_text;
using module_files::is_qsfp_identifier;
using module_files::ModuleDevice;
using module_files::ModuleError;
using module_files::ModuleImage;
using module_files::parse_bytes;
using module_files::to_text;

} // namespace sim
