// SPDX-License-Identifier: GPL-2.0-or-later
// Values between callers' memory and the database.  Input: kind, size of the caller's buffer, the database's
// text.
#include "platform/database/model/value.hpp"
#include "tests/fuzz/fuzz.hpp"
#include "tq_errno.h"

#include <vector>

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const auto kind = static_cast<tq::db::Kind>(input.u8() % 4);
    // A switch is one byte whatever its caller says of the size.
    std::vector<char> buffer(std::max(1u, unsigned{input.u8()}), 'x');
    const std::string text(input.rest());
    int length = static_cast<int>(buffer.size());
    if (tq::db::to_caller(kind, text, buffer.data(), &length) != TQ_OK)
        return 0;
    fuzz::expect(length >= 0 && static_cast<std::size_t>(length) <= buffer.size(), "a value fits its buffer");
    const auto back = tq::db::to_text(kind, buffer.data(), length);
    fuzz::expect(back.has_value(), "what was stored is a value");
    if (kind == tq::db::Kind::text)
        fuzz::expect(*back == text.substr(0, text.find('\0')), "a text comes back as it was");
    return 0;
}
