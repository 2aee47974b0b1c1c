// SPDX-License-Identifier: GPL-2.0-or-later
// Places of the settings in the data tree.
#include "platform/database/model/settings.hpp"

#include <cstdio>
#include <string_view>

namespace tq::db {

namespace {
constexpr bool table_is_in_order()
{
    for (std::size_t i = 0; i < settings.size(); ++i)
        if (static_cast<std::size_t>(settings[i].field) != i)
            return false;
    return true;
}
static_assert(table_is_in_order(), "one row for every field, in its order");

std::string_view parent_of(Slot plain)
{
    const std::string_view path = settings[plain].schema_path;
    return path.substr(0, path.rfind('/'));
}
} // namespace

SlotRange object_of(Slot slot)
{
    if (is_of_alarm(slot)) {
        const Slot first = slot_of(Field::alarm_name, alarm_of(slot));
        return {first, first + per_alarm_count};
    }
    SlotRange range{slot, slot + 1};
    while (range.first > 0 && parent_of(range.first - 1) == parent_of(slot))
        --range.first;
    while (range.last < plain_count && parent_of(range.last) == parent_of(slot))
        ++range.last;
    return range;
}

Path path_of(Slot slot)
{
    const char *schema_path = setting_of(slot).schema_path;
    Path path{};
    if (is_of_alarm(slot))
        std::snprintf(path.data(), path.size(), "%s[id='%u']%s", alarm_list, alarm_of(slot),
                      schema_path + std::string_view(alarm_list).size());
    else
        std::snprintf(path.data(), path.size(), "%s", schema_path);
    return path;
}

} // namespace tq::db
