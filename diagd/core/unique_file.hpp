// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a stdio stream.
#pragma once

#include <cstdio>
#include <memory>

namespace diagd {

struct CloseFile {
    void operator()(std::FILE *file) const noexcept { std::fclose(file); }
};
using UniqueFile = std::unique_ptr<std::FILE, CloseFile>;

} // namespace diagd
