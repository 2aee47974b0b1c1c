// SPDX-License-Identifier: GPL-2.0-or-later
// QSFP, QSFP+ and QSFP28: lower memory with live values, page 00h with the identification, page 03h with
// thresholds.
#pragma once

#include "optics/memory.hpp"
#include "optics/model.hpp"

namespace optics::sff8636 {

[[nodiscard]] Module decode(const Memory &memory);

} // namespace optics::sff8636
