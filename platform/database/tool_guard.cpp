// SPDX-License-Identifier: GPL-2.0-or-later
// Preloaded into sysrepo's tools: guards the files that they make.
#include "platform/database/engine/file_access.hpp"

#include <cstdio>

namespace {

__attribute__((constructor)) void guard()
{
    if (!tq::db::guard_files())
        std::fputs("the files of the database are made for everybody: sysrepo's calls were not found\n",
                   stderr);
}

} // namespace
