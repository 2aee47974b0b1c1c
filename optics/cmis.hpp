// SPDX-License-Identifier: GPL-2.0-or-later
// QSFP-DD, OSFP and others with CMIS: who made it and what it measures.  Applications, data paths and
// firmware are not decoded.
#pragma once

#include "optics/memory.hpp"
#include "optics/model.hpp"

namespace optics::cmis {

[[nodiscard]] Module decode(const Memory &memory);

} // namespace optics::cmis
