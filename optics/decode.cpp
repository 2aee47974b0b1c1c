// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/decode.hpp"

#include <algorithm>

#include "optics/check_codes.hpp"
#include "optics/cmis.hpp"
#include "optics/sff8024.hpp"
#include "optics/sff8472.hpp"
#include "optics/sff8472_fields.hpp"
#include "optics/sff8636.hpp"

namespace optics {

namespace {

constexpr std::size_t half = 128;

Memory as_pages(const Memory &memory)
{
    Memory pages = memory;
    pages.lower = memory.a0.first(std::min(half, memory.a0.size()));
    pages.page00 = memory.a0.size() > half ? memory.a0.subspan(half) : Bytes{};
    pages.a0 = pages.a2 = {};
    return pages;
}

bool is_paged(Layout layout)
{
    return layout == Layout::sff8636 || layout == Layout::cmis;
}

bool is_sound_a0(Bytes a0)
{
    Check base;
    check(Page(a0), sff8472::cc_base, base);
    return base.result == Check::Result::good;
}

// The 256 bytes at 0x50 are lower memory and page 00h when the identifier says so, or when it is 0 and page
// 00h names such a module, unless they make a sound A0h.
bool holds_pages(Bytes a0)
{
    if (a0.empty())
        return false;
    if (a0[0] != 0)
        return is_paged(layout_of(a0[0]));
    return a0.size() > half && is_paged(layout_of(a0[half])) && !is_sound_a0(a0);
}

Module undecoded(std::uint8_t identifier)
{
    Module module;
    module.identity.identifier = identifier;
    return module;
}

Module decode_pages(const Memory &memory)
{
    std::uint8_t identifier = memory.lower.empty() ? 0 : memory.lower[0];
    if (identifier == 0 && !memory.page00.empty())
        identifier = memory.page00[0];
    switch (layout_of(identifier)) {
    case Layout::cmis:
        return cmis::decode(memory);
    case Layout::other:
        return undecoded(identifier);
    default:
        return sff8636::decode(memory);
    }
}

Module decode_any(const Memory &memory)
{
    if (!memory.lower.empty() || !memory.page00.empty())
        return decode_pages(memory);
    if (holds_pages(memory.a0))
        return decode_pages(as_pages(memory));
    if (!memory.a0.empty() && layout_of(memory.a0[0]) == Layout::other)
        return undecoded(memory.a0[0]);
    return sff8472::decode(memory);
}

} // namespace

Module decode(const Memory &memory)
{
    Module module = decode_any(memory);
    if (module.family != Family::unknown)
        module.doubts.identifier_reserved = layout_of(module.identity.identifier) == Layout::reserved;
    return module;
}

} // namespace optics
