// SPDX-License-Identifier: GPL-2.0-or-later
// From the bytes of a module to what they mean by the standards: SFF-8472, SFF-8636, CMIS.
//
// Any bytes of any length give a module: what is wrong or missing is said in it, and nothing is guessed.
// Pure: no input or output, no state, no allocation.
#pragma once

#include "optics/memory.hpp"
#include "optics/model.hpp"

namespace optics {

// By the identifier, and by page 00h where lower memory leaves its identifier 0.
[[nodiscard]] Module decode(const Memory &memory);

} // namespace optics
