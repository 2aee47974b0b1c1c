// SPDX-License-Identifier: GPL-2.0-or-later
// Ids of the catalogue from names and numbers.
#include "diagd/alarm_log/catalogue.hpp"

#include <cstdio>
#include <cstdlib>

namespace diagd {

template <typename Narrow, typename Wide>
static std::optional<std::uint16_t> id_in(Wide number)
{
    const auto id = static_cast<Narrow>(number);
    return id < TQ_ALARM_COUNT ? std::optional<std::uint16_t>{id} : std::nullopt;
}

std::optional<std::uint16_t> alarm_id_in(int looked_up)
{
    return id_in<std::uint16_t>(looked_up);
}

std::optional<std::uint16_t> short_alarm_id_in(int looked_up)
{
    return id_in<std::uint8_t>(looked_up);
}

std::optional<std::uint16_t> typed_alarm_id(const char *number)
{
    return id_in<std::uint16_t>(std::strtoul(number, nullptr, 10));
}

std::optional<std::uint16_t> find_alarm(const char *name)
{
    const std::optional<std::uint16_t> id = alarm_id_in(get_alarm_id_by_name(name));
    if (!id)
        std::fprintf(stderr, "wrong alarm id form %s\n", name);
    return id;
}

} // namespace diagd
