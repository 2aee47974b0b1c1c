// SPDX-License-Identifier: GPL-2.0-or-later
// Conversion of values.
#include "platform/database/model/value.hpp"

#include "tq_errno.h"

#include <charconv>
#include <cstring>

namespace tq::db {

namespace {
template <class T>
T load(const void *value)
{
    T number;
    std::memcpy(&number, value, sizeof number);
    return number;
}

template <class T>
int store_number(const std::string &text, void *buffer, int *len)
{
    T number{};
    if (!len || *len < static_cast<int>(sizeof number))
        return TQ_ERR_INVALID;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{})
        return TQ_ERR_INVALID;
    std::memcpy(buffer, &number, sizeof number);
    *len = sizeof number;
    return TQ_OK;
}

int store_text(const std::string &text, void *buffer, int *len)
{
    if (!len || *len <= 0 || text.size() >= static_cast<std::size_t>(*len))
        return TQ_ERR_INVALID;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    *len = static_cast<int>(text.size());
    return TQ_OK;
}

int store_flag(const std::string &text, void *buffer, int *len)
{
    const std::uint8_t flag = text == "true";
    std::memcpy(buffer, &flag, sizeof flag);
    if (len)
        *len = sizeof flag;
    return TQ_OK;
}
} // namespace

std::optional<std::string> to_text(Kind kind, const void *value, int width)
{
    if (!value)
        return std::nullopt;
    switch (kind) {
    case Kind::flag:
        return load<std::uint8_t>(value) ? "true" : "false";
    case Kind::u16:
        return std::to_string(load<std::uint16_t>(value));
    case Kind::i32:
        return std::to_string(load<std::int32_t>(value));
    case Kind::text:
        break;
    }
    if (width < 0)
        return std::nullopt;
    const char *text = static_cast<const char *>(value);
    return std::string(text, strnlen(text, static_cast<std::size_t>(width)));
}

int to_caller(Kind kind, const std::string &text, void *buffer, int *len)
{
    if (!buffer)
        return TQ_ERR_INVALID;
    switch (kind) {
    case Kind::flag:
        return store_flag(text, buffer, len);
    case Kind::u16:
        return store_number<std::uint16_t>(text, buffer, len);
    case Kind::i32:
        return store_number<std::int32_t>(text, buffer, len);
    case Kind::text:
        break;
    }
    return store_text(text, buffer, len);
}

} // namespace tq::db
