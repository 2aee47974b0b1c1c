// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a text that the platform allocated with malloc.
#pragma once

#include <cstdlib>
#include <memory>

namespace diagd {

struct FreeText {
    void operator()(char *text) const noexcept { std::free(text); }
};
using MallocText = std::unique_ptr<char, FreeText>;

} // namespace diagd
