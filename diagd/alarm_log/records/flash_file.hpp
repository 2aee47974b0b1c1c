// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm log's file in the board's flash.
#pragma once

#include "base/owner.hpp"

namespace diagd {

class RecordChain;

inline constexpr const char *flash_file_path = "/media/config/var/alarm_log.log";

// Opens the file and empties it; null when it cannot be opened.  `mode` is that of fopen(3).
[[nodiscard]] base::File open_flash_file(const char *mode) noexcept;

// Writes a line for each valid record of the level and above, oldest first.  A line that does not fit into
// the flash ends it, and nothing of that line stays in the file.  0, or the errno of what failed.
[[nodiscard]] int write_records(std::FILE *stream, const RecordChain &chain, int level) noexcept;

// Makes the file everybody's and brings it to the flash.  0, or the errno of what failed.
[[nodiscard]] int sync_flash_file(std::FILE *stream) noexcept;

} // namespace diagd
