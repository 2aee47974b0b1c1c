// SPDX-License-Identifier: GPL-2.0-or-later
// A decoded module for people and for programs.  Numbers are rounded here and nowhere before.
#pragma once

#include <string>

#include "optics/model.hpp"

namespace base {
class JsonWriter;
}

namespace optics {

// Lines for a terminal; nothing that a module holds reaches it unescaped.
std::string render_text(const Module &module);

// Adds an object to `json`, or only the members of one that is open.
void render_json(const Module &module, base::JsonWriter &json);
void render_json_members(const Module &module, base::JsonWriter &json);

} // namespace optics
