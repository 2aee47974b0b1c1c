// SPDX-License-Identifier: GPL-2.0-or-later
// SFP and its kin: identification at A0h, diagnostics at A2h.
#pragma once

#include "optics/memory.hpp"
#include "optics/model.hpp"

namespace optics::sff8472 {

[[nodiscard]] Module decode(const Memory &memory);

} // namespace optics::sff8472
