// SPDX-License-Identifier: GPL-2.0-or-later
// Values between a caller's memory and the text that the data tree holds.
#pragma once

#include "platform/database/model/settings.hpp"

#include <optional>
#include <string>

namespace tq::db {

// Text of a caller's value: a text of at most `width` characters, a switch of one byte, a number of the width
// of its kind in the machine's byte order (for which `width` says nothing).  Nothing: bad argument.
std::optional<std::string> to_text(Kind kind, const void *value, int width);

// Puts the value into a caller's buffer.  `len` is the size of the buffer going in and the length of the
// value coming out; a text is NUL-terminated and its length does not count the NUL.  A switch is one byte
// whatever `len` says, NULL included.  TQ_ERR_INVALID: no buffer, or one that is too small.
int to_caller(Kind kind, const std::string &text, void *buffer, int *len);

} // namespace tq::db
