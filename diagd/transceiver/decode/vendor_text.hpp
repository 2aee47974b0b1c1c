// SPDX-License-Identifier: GPL-2.0-or-later
// Text fields of module memory, made fit for JSON.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace diagd {

// The field up to its first NUL, padding kept.  SFF-8472 and SFF-8636 ask for ASCII, but erased or failing
// memories return any byte, and one that is not UTF-8 would make the whole JSON document unreadable: each
// such byte becomes U+FFFD.  Control characters stay, for the JSON writer escapes them.
std::string vendor_text(std::span<const std::uint8_t> field);

} // namespace diagd
