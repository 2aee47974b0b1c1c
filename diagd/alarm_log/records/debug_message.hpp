// SPDX-License-Identifier: GPL-2.0-or-later
// Message text of a test record: the command line has no quoting, so a blank is typed as an underscore and an
// underscore as backslash underscore.
#pragma once

#include <string>
#include <string_view>

namespace diagd {

// At most 319 characters of the decoded text.
[[nodiscard]] std::string decode_debug_message(std::string_view typed);

} // namespace diagd
