// SPDX-License-Identifier: GPL-2.0-or-later
// Settings as XML text, in the form that tq_database.h shows: one element a line, two spaces of indentation,
// no element for what is not set.
#pragma once

#include "platform/database/model/settings.hpp"

#include <optional>
#include <span>
#include <string>

namespace tq::db {

using Values = std::span<const std::optional<std::string>, slot_count>;

std::string xml_of_alarms(Values values);
std::string xml_of_thresholds(Values values);

} // namespace tq::db
