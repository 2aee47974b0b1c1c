// SPDX-License-Identifier: GPL-2.0-or-later
// Copy of the settings.
#include "platform/database/model/cache.hpp"

#include "platform/database/model/value.hpp"
#include "platform/database/model/xml.hpp"
#include "tq_errno.h"

#include <utility>

namespace tq::db {

// NOLINTNEXTLINE(performance-unnecessary-value-param): its values are moved from
void Cache::load(Changes values)
{
    const std::lock_guard lock(mutex_);
    values_.fill(std::nullopt);
    for (auto &[slot, value] : values)
        values_[slot] = std::move(value);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): its values are moved from
void Cache::update(Changes changes)
{
    const std::lock_guard lock(mutex_);
    for (auto &[slot, value] : changes)
        values_[slot] = std::move(value);
}

int Cache::read(Slot slot, void *buffer, int *len) const
{
    const Setting &setting = setting_of(slot);
    const std::lock_guard lock(mutex_);
    const Value &value = values_[slot];
    if (value)
        return to_caller(setting.kind, *value, buffer, len);
    return setting.unset == Unset::reads_empty ? to_caller(setting.kind, {}, buffer, len) : TQ_ERR_NOT_FOUND;
}

bool Cache::is_set(Slot slot) const
{
    const std::lock_guard lock(mutex_);
    return values_[slot].has_value();
}

Changes Cache::values() const
{
    const std::lock_guard lock(mutex_);
    Changes values;
    for (Slot slot = 0; slot < slot_count; ++slot)
        if (values_[slot])
            values[slot] = values_[slot];
    return values;
}

void Cache::drop_unchanged(Changes &changes) const
{
    const std::lock_guard lock(mutex_);
    std::erase_if(changes, [this](const auto &change) { return values_[change.first] == change.second; });
}

std::string Cache::alarms_as_xml() const
{
    const std::lock_guard lock(mutex_);
    return xml_of_alarms(values_);
}

std::string Cache::thresholds_as_xml() const
{
    const std::lock_guard lock(mutex_);
    return xml_of_thresholds(values_);
}

} // namespace tq::db
