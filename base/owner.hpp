// SPDX-License-Identifier: GPL-2.0-or-later
// Owners of what C libraries hand out as a pointer: one deleter, an alias for each kind.
#pragma once

#include <dirent.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace base {

template <auto release>
struct Release {
    template <class T>
    void operator()(T *owned) const noexcept
    {
        release(owned);
    }
};

// Owns a T until release(pointer) gives it back.
template <class T, auto release>
using Owner = std::unique_ptr<T, Release<release>>;

using File = Owner<std::FILE, std::fclose>;
using Folder = Owner<DIR, ::closedir>;
// Text that a C interface allocated with malloc.
using MallocText = Owner<char, std::free>;

} // namespace base
